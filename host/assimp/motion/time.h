// Clips, frame rate and animation range of an Assimp scene.
#pragma once

#include <assimp/scene.h>

#include <optional>
#include <vector>

#include "host/assimp/assimp_import.h"
#include "host/assimp/import_warnings.h"
#include "host/assimp/tree/tree.h"
#include "host/scene/scene.h"

namespace maxhost::import {

// The unit of a clip's key times.
double KeysPerSecond(const aiAnimation& animation, SourceFormat format);

// A clip that states no length lasts to its last key.
std::vector<AnimationClip> ClipsOf(const aiScene& scene, SourceFormat format,
                                   ImportWarnings& warnings);

// The frame rate chosen, or the file's, or 30, and the range of the clip, or 100 frames where it is
// null, in the ticks of that rate: a second has frame rate times ticks per frame of them.
scene::Time TimeOf(const aiScene& source, SourceFormat format, const AnimationClip* clip,
                   std::optional<int> chosenRate, ImportWarnings& warnings);

}  // namespace maxhost::import
