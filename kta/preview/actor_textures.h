// The textures that an actor's surfaces show.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "kta/preview/texture.h"
#include "kta/reader.h"
#include "kta/texture_files.h"

namespace kta {

// Together they take up to this; further ones are not shown.
constexpr std::size_t kMostTextureBytes = std::size_t{1} << 30;

// Of each material, by its number, the first layer of a diffuse map; null without one.
std::vector<const KTAMaterialLayer*> DiffuseLayers(const File& actor);

struct ActorTextures {
    std::map<std::string, Texture, std::less<>> byName;  // by textureFileName
    std::vector<std::string> notFound;                   // likewise
    std::vector<std::string> faults;                     // "PATH: why it cannot be shown"
};

// Those of the diffuse layers, each name once, in the order of the file.
ActorTextures LoadTextures(const File& actor, TextureFinder& finder);

// From a pair of texture coordinates as they stand in the file (u, 1 - v) to the place in the
// layer's image from its left edge and from its top. Offsets move, then tiling scales and the angle
// turns about the image's middle, as 3ds Max does.
std::array<double, 2> PlaceInImage(const KTAMaterialLayer& layer, const TextureCoordinates& pair);

}  // namespace kta
