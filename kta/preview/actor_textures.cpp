#include "kta/preview/actor_textures.h"

#include <cmath>
#include <set>

namespace kta {
namespace {

std::string Shown(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

}  // namespace

std::vector<const KTAMaterialLayer*> DiffuseLayers(const File& actor) {
    std::vector<const KTAMaterialLayer*> layers;
    for (const Chunk& chunk : actor.chunks) {
        const auto* const layer = chunk.As<KTAMaterialLayer>();
        if (chunk.As<KTAMaterial>() != nullptr) {
            layers.push_back(nullptr);
        } else if (layer != nullptr && layer->layerType == kLayerDiffuse && !layers.empty() &&
                   layers.back() == nullptr) {
            layers.back() = layer;
        }
    }
    return layers;
}

ActorTextures LoadTextures(const File& actor, TextureFinder& finder) {
    ActorTextures textures;
    std::set<std::string, std::less<>> seen;
    std::size_t bytes = 0;
    for (const KTAMaterialLayer* const layer : DiffuseLayers(actor)) {
        if (layer == nullptr || !seen.emplace(TextOf(layer->textureFileName)).second) {
            continue;
        }
        const std::string name(TextOf(layer->textureFileName));
        const auto path = finder.Find(name);
        if (!path) {
            textures.notFound.push_back(name);
            continue;
        }
        ImageReading image = ReadImageFile(*path);
        if (image.texture && bytes + image.texture->Bytes() > kMostTextureBytes) {
            image = {std::nullopt, "would be beyond 1 GiB of textures"};
        }
        if (image.texture) {
            bytes += image.texture->Bytes();
            textures.byName.emplace(name, std::move(*image.texture));
        } else {
            textures.faults.push_back(Shown(*path) + ": " + image.error);
        }
    }
    return textures;
}

std::array<double, 2> PlaceInImage(const KTAMaterialLayer& layer, const TextureCoordinates& pair) {
    const double u = (double{pair[0]} - 0.5 - layer.uOffset) * layer.uTiling;
    const double v = (0.5 - double{pair[1]} - layer.vOffset) * layer.vTiling;
    const double sine = std::sin(double{layer.rotationAngle});
    const double cosine = std::cos(double{layer.rotationAngle});
    return {0.5 + u * cosine - v * sine, 0.5 - (u * sine + v * cosine)};
}

}  // namespace kta
