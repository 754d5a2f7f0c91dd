#include "host/assimp/motion/gltf_animation.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace maxhost::import {
namespace {

using nlohmann::json;

std::string_view TextAt(const json& object, const char* name) {
    const json* const text = Member(object, name);
    return text && text->is_string() ? std::string_view(text->get_ref<const std::string&>())
                                     : std::string_view();
}

Vector ValueOf(const double* numbers, const Vector&) {
    return {numbers[0], numbers[1], numbers[2]};
}

Quaternion ValueOf(const double* numbers, const Quaternion&) {
    return {numbers[3], numbers[0], numbers[1], numbers[2]};
}

// None where the interpolation is unknown.
std::optional<Interpolation> InterpolationOf(const json& sampler) {
    const std::string_view name = TextAt(sampler, "interpolation");
    return name.empty() || name == "LINEAR" ? std::optional(Interpolation::linear)
           : name == "STEP"                 ? std::optional(Interpolation::step)
           : name == "CUBICSPLINE"          ? std::optional(Interpolation::cubic)
                                            : std::nullopt;
}

// Fills `curve`; false where the sampler is not as the format wants it. A cubic one has three
// values a key: in-slope, value, out-slope.
template <typename T>
bool ReadCurve(GltfFile& file, const json& sampler, std::size_t components, Curve<T>& curve) {
    const json* const input = Member(sampler, "input");
    const json* const output = Member(sampler, "output");
    const auto interpolation = InterpolationOf(sampler);
    if (!input || !output || !interpolation) {
        return false;
    }
    const auto times = file.Numbers(*input, 1);
    const auto numbers = file.Numbers(*output, components);
    const std::size_t valuesAKey = *interpolation == Interpolation::cubic ? 3 : 1;
    const std::size_t stride = valuesAKey * components;
    if (!times || !numbers || numbers->size() != times->size() * stride) {
        return false;
    }
    curve.interpolation = *interpolation;
    for (std::size_t i = 0; i < times->size(); ++i) {
        const double* const first = numbers->data() + i * stride;
        CurveKey<T> key;
        key.time = (*times)[i];
        key.value = ValueOf(first + (valuesAKey == 3 ? components : 0), T());
        if (valuesAKey == 3) {
            key.inSlope = ValueOf(first, T());
            key.outSlope = ValueOf(first + 2 * components, T());
        }
        curve.keys.push_back(key);
    }
    return true;
}

// Reads a channel into the node's curves; false where it is not as the format wants it.
bool ReadChannel(GltfFile& file, const json& samplers, const json& channel, GltfClip& clip) {
    const json* const target = Member(channel, "target");
    const json* const number = Member(channel, "sampler");
    const json* const sampler = number ? ItemAt(samplers, *number) : nullptr;
    if (!target || !sampler) {
        return false;
    }
    const json* const node = Member(*target, "node");
    const std::string_view path = TextAt(*target, "path");
    if (!node || path == "weights") {
        return true;  // nothing that a node's transform shows
    }
    if (!node->is_number_unsigned()) {
        return false;
    }
    Channel read;
    Channel& curves = clip.channels[node->get<std::size_t>()];
    if (path == "translation" && ReadCurve(file, *sampler, 3, read.position)) {
        curves.position = std::move(read.position);
    } else if (path == "rotation" && ReadCurve(file, *sampler, 4, read.rotation)) {
        curves.rotation = std::move(read.rotation);
    } else if (path == "scale" && ReadCurve(file, *sampler, 3, read.scale)) {
        curves.scale = std::move(read.scale);
    } else {
        return false;
    }
    return true;
}

// The member's numbers, where it has as many; else `absent`.
std::vector<double> NumbersOf(const json& node, const char* name, std::vector<double> absent) {
    const json* const member = Member(node, name);
    if (!member || !member->is_array() || member->size() != absent.size()) {
        return absent;
    }
    for (std::size_t i = 0; i < absent.size(); ++i) {
        if ((*member)[i].is_number()) {
            absent[i] = (*member)[i].get<double>();
        }
    }
    return absent;
}

}  // namespace

GltfClip ReadGltfClip(GltfFile& file, std::size_t animation) {
    GltfClip clip;
    const json* const animations = Member(file.Document(), "animations");
    const json* const read = animations ? ItemAt(*animations, json(animation)) : nullptr;
    const json* const channels = read ? Member(*read, "channels") : nullptr;
    const json* const samplers = read ? Member(*read, "samplers") : nullptr;
    if (!channels || !channels->is_array() || !samplers) {
        return clip;
    }
    for (const json& channel : *channels) {
        clip.unreadable += ReadChannel(file, *samplers, channel, clip) ? 0 : 1;
    }
    return clip;
}

std::map<std::size_t, const aiNode*> MatchGltfNodes(const GltfFile& file, const aiScene& scene) {
    const json none = json::array();
    const auto listOf = [&none](const json* holder, const char* name) {
        const json* const list = holder ? Member(*holder, name) : nullptr;
        return list && list->is_array() ? list : &none;
    };
    const json* const nodes = Member(file.Document(), "nodes");
    const json* const roots = listOf(file.ShownScene(), "nodes");
    std::map<std::size_t, const aiNode*> matches;
    std::vector<std::pair<const json*, const aiNode*>> waiting;  // a node's number, and the node
    const auto match = [&waiting](const json& numbers, const aiNode& parent) {
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            waiting.emplace_back(&numbers[i], parent.mChildren[i]);
        }
    };
    if (!nodes || !scene.mRootNode) {
        return {};
    }
    if (roots->size() == 1) {
        waiting.emplace_back(&roots->front(), scene.mRootNode);
    } else if (roots->size() == scene.mRootNode->mNumChildren) {
        match(*roots, *scene.mRootNode);
    }
    while (!waiting.empty()) {
        const auto [number, imported] = waiting.back();
        waiting.pop_back();
        const json* const node = ItemAt(*nodes, *number);
        const json* const children = listOf(node, "children");
        if (!node || !imported || children->size() != imported->mNumChildren) {
            return {};
        }
        matches.emplace(number->get<std::size_t>(), imported);
        match(*children, *imported);
    }
    return matches;
}

Channel RestOfGltfNode(const GltfFile& file, std::size_t node, const aiNode& imported) {
    Channel rest;
    const json* const nodes = Member(file.Document(), "nodes");
    const json* const stated = nodes ? ItemAt(*nodes, json(node)) : nullptr;
    Vector position, scale(1);
    Quaternion rotation;
    if (stated && !Member(*stated, "matrix")) {
        position = ValueOf(NumbersOf(*stated, "translation", {0, 0, 0}).data(), position);
        rotation = ValueOf(NumbersOf(*stated, "rotation", {0, 0, 0, 1}).data(), rotation);
        scale = ValueOf(NumbersOf(*stated, "scale", {1, 1, 1}).data(), scale);
    } else {
        aiMatrix4x4t<double>(imported.mTransformation).Decompose(scale, rotation, position);
    }
    rest.position.keys = {{0, position, {}, {}}};
    rest.rotation.keys = {{0, rotation, {}, {}}};
    rest.scale.keys = {{0, scale, {}, {}}};
    return rest;
}

}  // namespace maxhost::import
