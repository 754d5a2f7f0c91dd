#include "host/scene/scramble.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "host/scene/reduce/kinds.h"

namespace maxhost::scene {
namespace {

// ---------------------------------------------------------------- names

// New names by the old ones, numbered in the order of their first appearance.
class Names {
  public:
    explicit Names(std::string prefix) : prefix_(std::move(prefix)) {}

    // An empty name stays empty.
    void Replace(std::string& name, std::string_view suffix = "") {
        if (!name.empty()) {
            const auto [found, isNew] = numbers_.try_emplace(name, numbers_.size() + 1);
            name = prefix_ + std::to_string(found->second) + std::string(suffix);
        }
    }

  private:
    std::string prefix_;
    std::map<std::string, std::size_t> numbers_;
};

void ScrambleNodeNames(Scene& scene) {
    Names names("n");
    for (Node& node : scene.nodes) {
        names.Replace(node.name);
    }
}

void ScrambleMorphNames(Scene& scene) {
    Names names("s");
    for (Node& node : scene.nodes) {
        ForEachModifier(node, [&](Modifier& modifier) {
            if (auto* const morpher = std::get_if<Morpher>(&modifier.kind)) {
                for (MorphChannel& channel : morpher->channels) {
                    names.Replace(channel.name);
                }
            }
        });
    }
}

void DropUserProperties(Scene& scene) {
    for (Node& node : scene.nodes) {
        node.userProperties.clear();
    }
}

// ---------------------------------------------------------------- materials

// Visits a material and its own sub-materials; shared ones are copied where they stand.
template <class Edit>
void EditMaterials(std::shared_ptr<const Material>& shared, const Edit& edit) {
    EditShared(shared, [&](Material& material) {
        edit(material);
        for (SubMaterial& part : material.subMaterials) {
            if (auto* const own = std::get_if<std::shared_ptr<const Material>>(&part)) {
                EditMaterials(*own, edit);
            }
        }
        return true;
    });
}

void ScrambleMaterialNames(Scene& scene) {
    Names names("m");
    for (auto& material : scene.materials) {
        EditMaterials(material, [&](Material& own) { names.Replace(own.name); });
    }
}

std::string ExtensionOf(const std::string& file) {
    constexpr std::size_t kLongest = 5;
    const std::size_t dot = file.find_last_of("./\\");
    const bool isExtension =
        dot != std::string::npos && file[dot] == '.' && file.size() - dot <= kLongest;
    return isExtension ? file.substr(dot) : std::string();
}

void ScrambleFile(std::shared_ptr<const Map>& shared, Names& names) {
    EditShared(shared, [&](Map& map) {
        if (auto* const bitmap = std::get_if<BitmapMap>(&map.kind)) {
            names.Replace(bitmap->file, ExtensionOf(bitmap->file));
        }
        for (auto& part : map.subMaps) {
            ScrambleFile(part, names);
        }
        return true;
    });
}

void ScrambleTextureFiles(Scene& scene) {
    Names names("t");
    for (auto& material : scene.materials) {
        EditMaterials(material, [&](Material& own) {
            for (MapSlot& slot : own.maps) {
                ScrambleFile(slot.map, names);
            }
        });
    }
}

// ---------------------------------------------------------------- controllers

// Visits an axis and the controllers in it.
template <class Edit>
void EditAxis(FloatController& controller, const Edit& edit) {
    edit(controller);
    if (auto* const list = std::get_if<FloatList>(&controller.kind)) {
        for (FloatListItem& item : list->items) {
            EditShared(item.controller, [&](FloatController& inner) {
                EditAxis(inner, edit);
                return true;
            });
        }
    }
}

template <class Edit>
void EditAxes(ThreeAxisController& controller, const Edit& edit) {
    if (auto* const three = std::get_if<ThreeAxes>(&controller.kind)) {
        for (auto& axis : three->axes) {
            if (axis) {
                EditAxis(*axis, edit);
            }
        }
    }
}

template <class Edit>
void ForEachPart(Scene& scene, const Edit& edit) {
    for (Node& node : scene.nodes) {
        auto* const parts =
            node.transform ? std::get_if<PrsTransform>(&node.transform->kind) : nullptr;
        if (parts != nullptr) {
            for (auto* const part : {&parts->position, &parts->rotation, &parts->scale}) {
                if (*part) {
                    edit(**part);
                }
            }
        }
    }
}

void ScrambleControllerNames(Scene& scene) {
    Names names("c");
    for (Node& node : scene.nodes) {
        if (node.transform) {
            names.Replace(node.transform->id);
        }
    }
    ForEachPart(scene, [&](ThreeAxisController& part) {
        names.Replace(part.id);
        EditAxes(part, [&](FloatController& axis) {
            names.Replace(axis.id);
            if (auto* const wired = std::get_if<WireFloat>(&axis.kind)) {
                for (Wire& wire : wired->wires) {
                    names.Replace(wire.parent);
                    names.Replace(wire.coController);
                }
            }
        });
    });
}

void ScrambleExpressions(Scene& scene) {
    Names names("e");
    ForEachPart(scene, [&](ThreeAxisController& part) {
        EditAxes(part, [&](FloatController& axis) {
            if (auto* const wired = std::get_if<WireFloat>(&axis.kind)) {
                for (Wire& wire : wired->wires) {
                    names.Replace(wire.expression);
                }
            }
        });
    });
}

// ---------------------------------------------------------------- geometry

// The finaliser of SplitMix64 (Steele, Lea and Flood, "Fast Splittable Pseudorandom Number
// Generators", 2014).
std::uint64_t Mixed(std::uint64_t bits) {
    bits += 0x9e3779b97f4a7c15;
    bits = (bits ^ (bits >> 30)) * 0xbf58476d1ce4e5b9;
    bits = (bits ^ (bits >> 27)) * 0x94d049bb133111eb;
    return bits ^ (bits >> 31);
}

// From 0 to 1, exact in f32; the next of a row that begins with `state`.
float NextShare(std::uint64_t& state) {
    constexpr int kDigits = 24;  // of a float
    state = Mixed(state);
    return static_cast<float>(state >> (64 - kDigits)) / static_cast<float>(1 << kDigits);
}

template <std::size_t kCount>
std::uint64_t StateOf(const std::array<float, kCount>& numbers) {
    std::uint64_t state = kCount;
    for (const float number : numbers) {
        state = Mixed(state ^ std::bit_cast<std::uint32_t>(number + 0.0f));
    }
    return state;
}

void ScrambleNumber(float& number, std::uint64_t& state) {
    const float scrambled = number * (0.5f + NextShare(state));
    number = std::isfinite(scrambled) ? scrambled : number;
}

template <std::size_t kCount>
void ScramblePoint(std::array<float, kCount>& point) {
    std::uint64_t state = StateOf(point);
    for (float& number : point) {
        ScrambleNumber(number, state);
    }
}

void ScrambleLength(float& length) {
    std::array<float, 1> point{length};
    ScramblePoint(point);
    length = point[0];
}

// Of length 1; a normal of length 0 stays.
void ScrambleNormal(Vec3& normal) {
    ScramblePoint(normal);
    double length = 0;
    for (const float number : normal) {
        length += double{number} * number;
    }
    if (length > 0) {
        for (float& number : normal) {
            number = static_cast<float>(number / std::sqrt(length));
        }
    }
}

void ScrambleMeshes(Scene& scene) {
    std::map<std::shared_ptr<const Mesh>, std::shared_ptr<const Mesh>> done;
    for (Node& node : scene.nodes) {
        if (!node.object || !node.object->mesh) {
            continue;
        }
        const auto [found, isNew] = done.try_emplace(node.object->mesh, node.object->mesh);
        if (isNew) {
            EditShared(found->second, [](Mesh& mesh) {
                std::ranges::for_each(mesh.vertices, ScramblePoint<3>);
                for (auto& [vertex, normal] : mesh.normals) {
                    ScrambleNormal(normal);
                }
                for (auto& [number, channel] : mesh.channels) {
                    std::ranges::for_each(channel.vertices, ScramblePoint<2>);
                }
                return true;
            });
        }
        node.object->mesh = found->second;
    }
    for (Node& node : scene.nodes) {
        ForEachModifier(node, [](Modifier& modifier) {
            if (auto* const morpher = std::get_if<Morpher>(&modifier.kind)) {
                for (MorphChannel& channel : morpher->channels) {
                    std::ranges::for_each(channel.points, ScramblePoint<3>);
                }
            }
        });
    }
}

void ScramblePositions(ThreeAxisController& position) {
    EditAxes(position, [](FloatController& axis) {
        if (auto* const bezier = std::get_if<BezierFloat>(&axis.kind)) {
            ScrambleLength(bezier->value);
            for (Key& key : bezier->keys) {
                ScrambleLength(key.value);
            }
        }
    });
}

void ScrambleTransform(Transform& transform) {
    if (auto* const parts = std::get_if<PrsTransform>(&transform.kind)) {
        if (parts->position) {
            ScramblePositions(*parts->position);
        }
    } else if (auto* const fixed = std::get_if<MatrixTransform>(&transform.kind)) {
        ScramblePoint(fixed->matrix[3]);
    } else if (auto* const sampled = std::get_if<SampledTransform>(&transform.kind)) {
        for (MatrixSample& sample : sampled->samples) {
            ScramblePoint(sample.matrix[3]);
        }
    } else if (auto* const footprint = std::get_if<FootprintTransform>(&transform.kind)) {
        ScramblePoint(footprint->matrix[3]);
    } else if (auto* const chain = std::get_if<IkChainTransform>(&transform.kind)) {
        ScramblePoint(chain->matrix[3]);
    }
}

void ScramblePlaces(Scene& scene) {
    for (Node& node : scene.nodes) {
        ScramblePoint(node.objectOffset[3]);
        if (node.object && node.object->parameter0) {
            ScrambleLength(*node.object->parameter0);
        }
        if (node.transform) {
            ScrambleTransform(*node.transform);
        }
    }
}

constexpr ScrambleKind kScrambles[] = {
    {"names of nodes", ScrambleNodeNames},
    {"names of materials", ScrambleMaterialNames},
    {"texture files", ScrambleTextureFiles},
    {"names of controllers", ScrambleControllerNames},
    {"expressions of wires", ScrambleExpressions},
    {"names of morph channels", ScrambleMorphNames},
    {"user properties", DropUserProperties},
    {"meshes and morph points", ScrambleMeshes},
    {"places of nodes", ScramblePlaces},
};

}  // namespace

std::span<const ScrambleKind> ScrambleKinds() {
    return kScrambles;
}

void Scramble(Scene& scene) {
    for (const ScrambleKind& kind : kScrambles) {
        kind.scramble(scene);
    }
}

}  // namespace maxhost::scene
