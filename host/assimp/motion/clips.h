// The clips of an Assimp scene: their lengths, the frame rate and animation range that they ask
// for, and the channels of one.
#pragma once

#include <assimp/scene.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/assimp/imported_scene.h"
#include "host/assimp/motion/curves.h"
#include "host/assimp/tree/tree.h"
#include "host/assimp/warnings.h"

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

// The channels of clip `clip`, with `ticksPerSecond` ticks a second: of a glTF file as the file
// itself has them (Assimp drops their interpolation), else Assimp's, whose keys are joined by
// straight lines and great arcs. `path` is the file's. Left out, with a warning, are keys that are
// not finite or beyond the range of times, channels of no node, and what moves no node.
Channels ReadChannels(const aiScene& scene, std::size_t clip, SourceFormat format,
                      const std::string& path, double ticksPerSecond, ImportWarnings& warnings);

}  // namespace maxhost::import
