#include "host/scene_file/scene_description.h"

#include <new>
#include <string>

#include "host/scene/check.h"
#include "host/scene_file/scene_fields.h"

namespace maxhost::import {

namespace {

const char kTooLarge[] = "it does not fit into memory";

}  // namespace

scene::Scene ReadSceneDescriptionFromText(std::string_view text) try {
    scene::Scene scene;
    {
        const JsonTree tree(text);
        Codec<scene::Scene>::Read(tree.Root(), scene);
    }
    scene::Check(scene);
    return scene;
} catch (const std::bad_alloc&) {
    throw SceneError(kTooLarge);
}

scene::Scene ReadSceneDescription(std::istream& in) try {
    std::string text;
    char block[64 * 1024];
    while (in.read(block, sizeof block) || in.gcount() > 0) {
        text.append(block, static_cast<std::size_t>(in.gcount()));
    }
    if (in.bad()) {
        throw SceneError("it cannot be read");
    }
    return ReadSceneDescriptionFromText(text);
} catch (const std::bad_alloc&) {
    throw SceneError(kTooLarge);
}

void WriteSceneDescription(const scene::Scene& scene, std::ostream& out) {
    scene::Check(scene);
    JsonOut json(out);
    Codec<scene::Scene>::Write(json, scene);
    json.Finish();
}

}  // namespace maxhost::import
