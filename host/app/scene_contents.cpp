#include "host/app/scene_contents.h"

#include <array>
#include <cmath>
#include <map>
#include <set>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include "host/app/json_parts.h"
#include "host/app/scene_report.h"
#include "kta/text.h"

namespace maxhost::app {
namespace {

constexpr const char* kSlotNames[] = {
    "ambient", "diffuse", "specular", "glossiness", "specular-level", "self-illumination",
    "opacity", "filter",  "bump",     "reflection", "refraction",     "displacement"};

std::string NameOfSlot(scene::MaterialKind kind, int slot) {
    const auto index = static_cast<std::size_t>(slot);
    return kind == scene::MaterialKind::standard && slot >= 0 && index < std::size(kSlotNames)
               ? kSlotNames[index]
               : std::to_string(slot);
}

// The textures below each of the scene's materials.
class TextureLister {
  public:
    explicit TextureLister(const LoadedScene& loaded) {
        for (const import::TextureFile& file : loaded.textureFiles) {
            files_.emplace(file.name, file.file);
        }
        for (const import::EmbeddedTexture& texture : loaded.textures) {
            inside_.insert(texture.name);
        }
        for (std::size_t i = 0; i < loaded.scene.materials.size(); ++i) {
            material_ = i;
            Visit(*loaded.scene.materials[i]);
        }
    }

    std::vector<ListedTexture> Take() { return std::move(textures_); }

  private:
    // Nesting is limited by the scene's rules.
    void Visit(const scene::Material& material) {
        for (const scene::MapSlot& slot : material.maps) {
            if (slot.map) {
                slot_ = NameOfSlot(material.kind, slot.slot);
                Visit(*slot.map);
            }
        }
        for (const scene::SubMaterial& subMaterial : material.subMaterials) {
            if (const auto* const own =
                    std::get_if<std::shared_ptr<const scene::Material>>(&subMaterial)) {
                Visit(**own);
            }
        }
    }

    void Visit(const scene::Map& map) {
        if (const auto* const bitmap = std::get_if<scene::BitmapMap>(&map.kind)) {
            const auto known = files_.find(bitmap->file);
            const bool isKnown = known != files_.end();
            const TextureStanding standing = inside_.contains(bitmap->file)
                                                 ? TextureStanding::inside
                                             : !isKnown              ? TextureStanding::unknown
                                             : known->second.empty() ? TextureStanding::missing
                                                                     : TextureStanding::found;
            textures_.push_back(
                {material_, slot_, bitmap->file, standing,
                 std::string(standing == TextureStanding::found ? known->second : "")});
        }
        for (const auto& subMap : map.subMaps) {
            if (subMap) {
                Visit(*subMap);
            }
        }
    }

    std::map<std::string_view, std::string_view> files_;
    std::set<std::string_view> inside_;
    std::size_t material_ = 0;
    std::string slot_;
    std::vector<ListedTexture> textures_;
};

ListedSkin SkinOf(const scene::Skin& skin) {
    return {0, skin.bones.size(), skin.weights.size()};
}

ListedSkin SkinOf(const scene::Physique& physique) {
    std::set<int> bones;
    for (const auto& vertex : physique.vertices) {
        if (const auto* const rigid = std::get_if<scene::PhysiqueRigid>(&vertex)) {
            bones.insert(rigid->node);
        } else if (const auto* const blended = std::get_if<scene::PhysiqueBlended>(&vertex)) {
            for (const scene::NodeWeight& weight : blended->nodes) {
                bones.insert(weight.node);
            }
        }
    }
    return {0, bones.size(), physique.vertices.size()};
}

// Calls `visit` with the number of the node and each of its modifiers, top first.
template <class Visitor>
void ForEachModifier(const scene::Scene& scene, Visitor visit) {
    for (std::size_t i = 0; i < scene.nodes.size(); ++i) {
        for (const auto* const stack :
             {&scene.nodes[i].referenceModifiers, &scene.nodes[i].modifiers}) {
            for (const scene::Modifier& modifier : *stack) {
                visit(i, modifier);
            }
        }
    }
}

// "cm", or "0.123 m" where no unit of --unit has that size.
std::string NameOfUnit(double metres) {
    for (const auto& [name, size] : kUnits) {
        if (std::abs(*size - metres) <= 1e-6 * metres) {
            return name;
        }
    }
    return Figure(metres) + " m";
}

std::string Tabbed(const std::vector<std::string>& fields) {
    std::string line;
    for (const std::string& field : fields) {
        line += (line.empty() ? "" : "\t") + kta::Escaped(field);
    }
    return line;
}

void ListObjects(const scene::Scene& scene, std::vector<std::string>& lines) {
    for (std::size_t i = 0; i < scene.nodes.size(); ++i) {
        if (std::string_view(KindOf(scene.nodes[i])) == "camera") {
            lines.push_back(Tabbed({"camera", std::to_string(i), scene.nodes[i].name}));
        }
    }
    for (std::size_t i = 0; i < scene.nodes.size(); ++i) {
        if (const char* const kind = KindOfLight(scene.nodes[i])) {
            lines.push_back(Tabbed({"light", std::to_string(i), kind, scene.nodes[i].name}));
        }
    }
    for (const ListedSkin& skin : SkinsOf(scene)) {
        lines.push_back(Tabbed({"skin", std::to_string(skin.node), std::to_string(skin.bones),
                                std::to_string(skin.vertices), scene.nodes[skin.node].name}));
    }
    for (const ListedMorpher& morpher : MorphersOf(scene)) {
        for (std::size_t i = 0; i < morpher.channels.size(); ++i) {
            lines.push_back(Tabbed(
                {"morph", std::to_string(morpher.node), std::to_string(i), morpher.channels[i]}));
        }
    }
}

}  // namespace

const char* KindOfLight(const scene::Node& node) {
    if (std::string_view(KindOf(node)) != "light") {
        return nullptr;
    }
    switch (node.object->classId.value_or(scene::ClassId{})[0]) {
        case 0x1011:
            return "omni";
        case 0x1012:
        case 0x1014:
            return "spot";
        case 0x1013:
        case 0x1015:
            return "directional";
        default:
            return "other";
    }
}

const char* NameOf(TextureStanding standing) {
    constexpr std::array kNames = {"inside", "found", "missing", "unknown"};
    return kNames.at(static_cast<std::size_t>(standing));
}

std::vector<ListedSkin> SkinsOf(const scene::Scene& scene) {
    std::vector<ListedSkin> skins;
    ForEachModifier(scene, [&](std::size_t node, const scene::Modifier& modifier) {
        std::visit(
            [&](const auto& kind) {
                using Kind = std::decay_t<decltype(kind)>;
                if constexpr (std::is_same_v<Kind, scene::Skin> ||
                              std::is_same_v<Kind, scene::Physique>) {
                    skins.push_back(SkinOf(kind));
                    skins.back().node = node;
                }
            },
            modifier.kind);
    });
    return skins;
}

std::vector<ListedMorpher> MorphersOf(const scene::Scene& scene) {
    std::vector<ListedMorpher> morphers;
    ForEachModifier(scene, [&](std::size_t node, const scene::Modifier& modifier) {
        if (const auto* const morpher = std::get_if<scene::Morpher>(&modifier.kind)) {
            morphers.push_back({node, {}});
            for (const scene::MorphChannel& channel : morpher->channels) {
                morphers.back().channels.push_back(channel.name);
            }
        }
    });
    return morphers;
}

std::vector<ListedTexture> TexturesOf(const LoadedScene& loaded) {
    return TextureLister(loaded).Take();
}

double FramesOf(const Animation& animation, const scene::Scene& scene) {
    return animation.seconds * scene.time.frameRate;
}

std::string Describe(const SceneUnit& unit) {
    return (unit.metres == 0 ? "the file does not say it"
                             : NameOfUnit(unit.metres) + ", " + unit.source) +
           (unit.convertedTo ? ", converted to " + NameOfUnit(*unit.convertedTo) : "");
}

std::vector<std::string> ListContents(const LoadedScene& loaded) {
    std::vector<std::string> lines;
    ListObjects(loaded.scene, lines);
    for (const ListedTexture& texture : TexturesOf(loaded)) {
        lines.push_back(Tabbed({"texture", std::to_string(texture.material), texture.slot,
                                NameOf(texture.standing), texture.name}));
    }
    for (std::size_t i = 0; i < loaded.animations.size(); ++i) {
        const Animation& animation = loaded.animations[i];
        lines.push_back(Tabbed({"clip", std::to_string(i), Figure(animation.seconds),
                                Figure(FramesOf(animation, loaded.scene)), animation.name}));
    }
    if (loaded.unit) {
        lines.push_back(Tabbed({"unit", Figure(loaded.unit->metres), Describe(*loaded.unit)}));
        lines.push_back(Tabbed({"up", loaded.upAxis}));
    }
    return lines;
}

}  // namespace maxhost::app
