// An imported scene as bytes, to hand it from one process to another of the same program: nothing
// for files, the layout is that of this build.
#pragma once

#include <string>
#include <string_view>

#include "host/assimp/imported_scene.h"

namespace maxhost::import {

std::string EncodeScene(const ImportedScene& scene);

// Objects that were shared are shared again. Throws ImportError where `bytes` were cut off.
ImportedScene DecodeScene(std::string_view bytes);

}  // namespace maxhost::import
