// An imported scene as bytes, to hand it from one process to another of the same program: nothing
// for files, the layout is that of this build.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "host/assimp/imported_scene.h"
#include "host/assimp/process/reader_process.h"

namespace maxhost::import {

// Large lists are put as they stand, without a copy.
void EncodeScene(const ImportedScene& scene, const PutResult& put);
std::string EncodeScene(const ImportedScene& scene);

// Objects that were shared are shared again. Throws ImportError where the bytes were cut off, where
// they announce more than `most` of them, and where the scene needs more memory than there is.
ImportedScene DecodeScene(const GetResult& get,
                          std::uint64_t most = std::numeric_limits<std::uint64_t>::max());
ImportedScene DecodeScene(std::string_view bytes);

}  // namespace maxhost::import
