#include "host/app/listing.h"

#include <array>
#include <cstdio>
#include <utility>

#include "kta/text.h"

namespace maxhost::app {
namespace {

constexpr scene::ClassId kBoneObject = {0x28bf6e8d, 0x2ecca840};
constexpr scene::ClassId kOldBone = {0x8a63c0, 0};

enum SuperClass : std::uint32_t {
    kGeometry = 0x10,
    kCamera = 0x20,
    kLight = 0x30,
    kShape = 0x40,
    kHelper = 0x50
};

std::string Line(const char* item, std::size_t index, const std::string& fields,
                 const std::string& name) {
    return std::string(item) + '\t' + std::to_string(index) + '\t' + fields + '\t' +
           kta::Escaped(name);
}

void ListNodes(const scene::Scene& scene, std::vector<std::string>& lines) {
    std::vector<std::vector<std::size_t>> children(scene.nodes.size());
    std::vector<std::pair<std::size_t, int>> waiting;  // node, depth; the next one at the back
    for (std::size_t i = scene.nodes.size(); i-- > 0;) {
        const int parent = scene.nodes[i].parent;
        if (parent == scene::kNone) {
            waiting.emplace_back(i, 0);
        } else {
            children[static_cast<std::size_t>(parent)].push_back(i);
        }
    }
    while (!waiting.empty()) {
        const auto [index, depth] = waiting.back();
        waiting.pop_back();
        const scene::Node& node = scene.nodes[index];
        lines.push_back(
            Line("node", index, std::to_string(depth) + '\t' + KindOf(node), node.name));
        for (const std::size_t child : children[index]) {
            waiting.emplace_back(child, depth + 1);
        }
    }
}

const char* KindOf(scene::MaterialKind kind) {
    switch (kind) {
        case scene::MaterialKind::standard:
            return "standard";
        case scene::MaterialKind::multi:
            return "multi";
        default:
            return "other";
    }
}

std::string Seconds(double seconds) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.6g", seconds);
    return text.data();
}

}  // namespace

const char* KindOf(const scene::Node& node) {
    if (!node.object) {
        return "helper";
    }
    const scene::Object& object = *node.object;
    if (object.classId == kBoneObject || object.classId == kOldBone) {
        return "bone";
    }
    switch (object.superClassId.value_or(kGeometry)) {
        case kGeometry:
            return "geometry";
        case kCamera:
            return "camera";
        case kLight:
            return "light";
        case kShape:
            return "shape";
        case kHelper:
            return "helper";
        default:
            return "other";
    }
}

std::vector<std::string> ListScene(const LoadedScene& loaded) {
    std::vector<std::string> lines;
    ListNodes(loaded.scene, lines);
    for (std::size_t i = 0; i < loaded.scene.materials.size(); ++i) {
        const scene::Material& material = *loaded.scene.materials[i];
        lines.push_back(Line("material", i, KindOf(material.kind), material.name));
    }
    for (std::size_t i = 0; i < loaded.animations.size(); ++i) {
        const Animation& animation = loaded.animations[i];
        lines.push_back(Line("animation", i, Seconds(animation.seconds), animation.name));
    }
    return lines;
}

}  // namespace maxhost::app
