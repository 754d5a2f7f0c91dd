// What the exported materials lack of the scene's.
#include <set>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "host/app/ledger.h"
#include "kta/text.h"

namespace maxhost::app {
namespace {

using scene::LossCode;

std::string_view FileNameOf(std::string_view path) {
    const std::size_t separator = path.find_last_of("/\\");
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

template <std::size_t size>
std::string Cut(std::string_view text, const char (&)[size]) {
    return std::string(text.substr(0, size - 1));
}

class MaterialLossFinder {
  public:
    explicit MaterialLossFinder(const ExportedScene& exported) : exported_(exported) {
        const KTAMaterial* material = nullptr;
        for (const kta::Chunk& chunk : exported.actor.chunks) {
            if (const auto* const head = chunk.As<KTAMaterial>()) {
                material = head;
            } else if (const auto* const layer = chunk.As<KTAMaterialLayer>(); layer && material) {
                named_.emplace(kta::TextOf(material->materialName),
                               kta::TextOf(layer->textureFileName));
            }
        }
    }

    std::vector<LedgerEntry> Find() {
        const scene::Scene& scene = exported_.scene;
        for (std::size_t i = 0; i < scene.nodes.size(); ++i) {
            node_ = static_cast<int>(i);
            if (scene.nodes[i].material != scene::kNone &&
                exported_.match.FileNodeOf(node_) != kta::kNoNode) {
                Visit(*scene.materials[static_cast<std::size_t>(scene.nodes[i].material)]);
            }
        }
        return std::move(losses_);
    }

  private:
    // Each material once, at the first node that wears it. Nesting is limited by the scene's rules.
    void Visit(const scene::Material& material) {
        if (!visited_.insert(&material).second) {
            return;
        }
        if (material.kind == scene::MaterialKind::other) {
            Add(LossCode::materialApproximated, material, "");
        }
        for (const scene::MapSlot& slot : material.maps) {
            if (slot.map) {
                Visit(material, *slot.map, slot.enabled);
            }
        }
        for (const scene::SubMaterial& subMaterial : material.subMaterials) {
            if (const int* const position = std::get_if<int>(&subMaterial)) {
                Visit(*exported_.scene.materials[static_cast<std::size_t>(*position)]);
            } else if (const auto* const own =
                           std::get_if<std::shared_ptr<const scene::Material>>(&subMaterial)) {
                Visit(**own);
            }
        }
    }

    void Visit(const scene::Material& material, const scene::Map& map, bool isOn) {
        if (const auto* const bitmap = std::get_if<scene::BitmapMap>(&map.kind)) {
            const std::string name(FileNameOf(bitmap->file));
            const bool isNamed = named_.contains({Cut(material.name, KTAMaterial().materialName),
                                                  Cut(name, KTAMaterialLayer().textureFileName)});
            if (!isOn || !isNamed) {
                Add(isOn ? LossCode::textureLeftOut : LossCode::textureOff, material,
                    ", texture '" + kta::Escaped(name) + "'");
            }
        } else if (isOn) {
            Add(LossCode::mapLeftOut, material, "");
        }
        for (const auto& subMap : map.subMaps) {
            if (subMap) {
                Visit(material, *subMap, isOn);
            }
        }
    }

    void Add(LossCode code, const scene::Material& material, const std::string& more) {
        losses_.push_back({code, PathOf(exported_.scene, node_),
                           "material '" + kta::Escaped(material.name) + "'" + more,
                           scene::KindOf(code).text});
    }

    const ExportedScene& exported_;
    std::set<std::pair<std::string, std::string>> named_;  // material, texture
    std::unordered_set<const scene::Material*> visited_;
    int node_ = scene::kNone;
    std::vector<LedgerEntry> losses_;
};

}  // namespace

std::vector<LedgerEntry> MaterialLosses(const ExportedScene& exported) {
    return MaterialLossFinder(exported).Find();
}

}  // namespace maxhost::app
