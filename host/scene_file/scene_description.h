// The scene description (.maxscene.json): a 3ds Max scene as JSON text, read and written.
#pragma once

#include <functional>
#include <istream>
#include <ostream>
#include <string_view>

#include "host/scene/error.h"
#include "host/scene/scene.h"

namespace maxhost::scene_file {

// Told how much is done, 0 to 1, each time more.
using ReportShare = std::function<void(double share)>;

// Reads a whole description; what it returns has passed scene::Check(). Quaternions are normalised
// unless they are of unit length already. Throws SceneError for the first fault, or when the stream
// cannot be read or memory does not suffice.
scene::Scene ReadSceneDescription(
    std::istream& in, const ReportShare& report = [](double) {});
scene::Scene ReadSceneDescriptionFromText(
    std::string_view text, const ReportShare& report = [](double) {});

// Writes the scene, leaving out what holds its default: the same scene gives the same text, and
// reading it gives the same scene back, to the bit. `out` should be a binary stream; a failure to
// write shows in its state. Throws SceneError, before anything is written, for a scene that does
// not pass scene::Check().
void WriteSceneDescription(const scene::Scene& scene, std::ostream& out);

}  // namespace maxhost::scene_file
