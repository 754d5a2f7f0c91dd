// Clips, frame rate and animation range of an Assimp scene.
#pragma once

#include <assimp/scene.h>

#include <vector>

#include "host/import/assimp_import.h"
#include "host/import/assimp_tree.h"
#include "host/import/import_warnings.h"
#include "host/sdk/scene_desc.h"

namespace maxhost::import {

std::vector<AnimationClip> ClipsOf(const aiScene& scene, SourceFormat format,
                                   ImportWarnings& warnings);

// The file's frame rate, or 30, and the range of the first clip, or 100 frames, in the ticks of
// that rate: a second has frame rate times ticks per frame of them.
scene::Time TimeOf(const aiScene& source, SourceFormat format,
                   const std::vector<AnimationClip>& clips, ImportWarnings& warnings);

}  // namespace maxhost::import
