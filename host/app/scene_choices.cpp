#include "host/app/scene_choices.h"

#include <algorithm>
#include <unordered_map>

#include "host/app/exit_status.h"
#include "host/assimp/import.h"
#include "host/scene/error.h"
#include "host/scene/scale.h"
#include "kta/text.h"

namespace maxhost::app {
namespace {

constexpr int kTicksPerSecond = 4800;

// As in: 0 "walk", 1 "run".
std::string NumberedNames(const std::vector<Animation>& animations) {
    constexpr std::size_t kMost = 20;
    std::string text;
    for (std::size_t i = 0; i < std::min(animations.size(), kMost); ++i) {
        text += (i > 0 ? ", " : "") + std::to_string(i) + " \"" + kta::Escaped(animations[i].name) +
                "\"";
    }
    return animations.size() > kMost ? text + ", ... (--list shows all)" : text;
}

void CheckAnimation(const std::string& wanted, const std::vector<Animation>& animations) {
    std::vector<std::string> names;
    for (const Animation& animation : animations) {
        names.push_back(animation.name);
    }
    if (import::FindAnimation(wanted, names)) {
        return;
    }
    throw Failure(
        kExitRefused, "--animation",
        "\"" + kta::Escaped(wanted) +
            (names.empty()
                 ? "\", expected none, the scene has no animations to choose from"
                 : "\", expected a name or number of the scene's " +
                       kta::Counted(names.size(), "animation") + ": " + NumberedNames(animations)));
}

void Scale(float factor, scene::Scene& scene) {
    try {
        import::ScaleLengths(scene, factor);
    } catch (const import::SceneError& error) {
        throw Failure(kExitRefused, "--scale", std::string("in the scaled scene, ") + error.what());
    }
}

void ApplyTime(const Options& options, scene::Time& time) {
    if (options.frameRate) {
        time.frameRate = *options.frameRate;
        time.ticksPerFrame = std::max(1, kTicksPerSecond / *options.frameRate);
    }
    time.start = options.start.value_or(time.start);
    time.end = options.end.value_or(time.end);
    if ((options.start || options.end) && time.start > time.end) {
        throw Failure(kExitRefused, options.start ? "--start" : "--end",
                      "the range would be " + std::to_string(time.start) + " to " +
                          std::to_string(time.end) +
                          ", expected one that does not end before it "
                          "starts");
    }
}

void Select(const std::vector<std::string>& names, scene::Scene& scene) {
    std::unordered_map<std::string, std::vector<int>> nodesByName;
    for (std::size_t i = 0; i < scene.nodes.size(); ++i) {
        nodesByName[scene.nodes[i].name].push_back(static_cast<int>(i));
        scene.nodes[i].selected = false;
    }
    scene.selection.clear();
    for (const std::string& name : names) {
        const auto found = nodesByName.find(name);
        if (found == nodesByName.end()) {
            throw Failure(kExitRefused, "--select",
                          "\"" + name + "\", expected a node's name (--list shows them)");
        }
        for (const int index : found->second) {
            scene::Node& node = scene.nodes[static_cast<std::size_t>(index)];
            if (!node.selected) {
                node.selected = true;
                scene.selection.push_back(index);
            }
        }
    }
}

}  // namespace

void ApplyChoices(const Options& options, LoadedScene& loaded) {
    if (options.animation) {
        CheckAnimation(*options.animation, loaded.animations);
    }
    if (options.scale != 1) {
        Scale(options.scale, loaded.scene);
    }
    ApplyTime(options, loaded.scene.time);
    if (!options.select.empty()) {
        Select(options.select, loaded.scene);
    }
}

}  // namespace maxhost::app
