// An actor's materials and their textures as those of glTF.
#pragma once

#include <map>
#include <set>

#include "kta/glb.h"
#include "kta/gltf/document.h"

namespace kta::gltf {

class Materials {
  public:
    Materials(const File& actor, const GlbOptions& options, Document& document);

    // The document's number of a material, which is added when it is first asked for. A number that
    // the actor does not have stands for its default, a grey. What has no texture coordinates gets
    // the material without textures, which need them.
    std::size_t Get(std::int32_t number, bool hasCoordinates);

    // What of the materials asked for is not shown, a line each.
    std::vector<std::string> Warnings() const;

  private:
    struct Source {
        const KTAMaterial* record = nullptr;
        std::vector<const KTAMaterialLayer*> layers{};
    };

    Json MaterialJson(const Source& source, bool hasCoordinates);
    void AddTextures(const Source& source, Json& material);
    void CountLeftOut(const Source& source, const std::set<const KTAMaterialLayer*>& shown);
    // The reference to a layer's texture; null where it cannot be shown.
    Json TextureJson(const KTAMaterialLayer& layer);
    std::optional<std::size_t> ImageOf(const std::string& name);
    std::optional<std::size_t> ReferredImage(const std::string& name,
                                             const std::filesystem::path& path);
    std::optional<std::size_t> EmbeddedImage(const std::string& name,
                                             const std::filesystem::path& path);

    const GlbOptions& options_;
    Document& document_;
    std::vector<Source> sources_;
    // By the actor's numbers, and whether textures are shown.
    std::map<std::pair<std::int32_t, bool>, std::size_t> numbers_;
    std::set<std::int32_t> shownWithoutTextures_;
    std::map<std::string, std::optional<std::size_t>> textures_;  // by file name
    std::map<int, std::size_t> layersLeftOut_;                    // by their types
    // By the reason.
    std::map<std::string, std::vector<std::string>> texturesLeftOut_;
};

}  // namespace kta::gltf
