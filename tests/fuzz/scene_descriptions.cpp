// Any text as a scene description: it is read or refused, and what was read reads back from what is
// written of it.
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string_view>

#include "host/scene/error.h"
#include "host/scene_file/scene_description.h"

namespace {

std::string Written(const maxhost::scene::Scene& scene) {
    std::ostringstream out;
    maxhost::scene_file::WriteSceneDescription(scene, out);
    return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::string written;
    try {
        written = Written(maxhost::scene_file::ReadSceneDescriptionFromText(text));
    } catch (const maxhost::scene::SceneError&) {
        return 0;
    }
    if (Written(maxhost::scene_file::ReadSceneDescriptionFromText(written)) != written) {
        std::abort();
    }
    return 0;
}
