// An actor and its motion as one file that viewers show: glTF 2.0 in its binary form (GLB).
//
// The figure looks as in 3ds Max: right-handed with y up, which is x, z and -y of the scene, so
// that no face turns over. docs/kta.md says what becomes of materials, textures and motion.
#pragma once

#include <filesystem>
#include <functional>

#include "kta/reader.h"

namespace kta {

// Where a texture's file stands; none where it is not found.
using FindTexture =
    std::function<std::optional<std::filesystem::path>(std::string_view textureFileName)>;

// An image file of another kind than PNG and JPEG as PNG; empty where it cannot be read.
using ConvertToPng = std::function<std::vector<std::uint8_t>(const std::filesystem::path& image)>;

struct GlbOptions {
    bool withCollision = false;
    // The bones of a vertex that are kept: those with the greatest weights, which are made to sum
    // to 1.
    std::size_t mostInfluences = 255;
    // Without it textures are named as the actor file names them, and not looked for.
    FindTexture findTexture{};
    // Puts the textures that are found into the file.
    bool embedTextures = false;
    ConvertToPng convertToPng{};
    // The directory of the file, from which the paths of textures that are found start.
    std::filesystem::path directory{};
    // Meshes and materials tell the actor's numbers of their nodes and of themselves, as "node" and
    // "material" in their extras.
    bool withNumbers = false;
};

// The whole file; the same actor and options give the same bytes. `motion` may be null. What cannot
// be shown goes to `warnings`, a line each. Throws std::length_error above 4 GiB. Linear in the
// files' sizes.
std::vector<std::uint8_t> EncodeGlb(const File& actor, const File* motion,
                                    const GlbOptions& options, std::vector<std::string>& warnings);

// Makes the file, or replaces it as a whole, with textures as the actor file names them. Returns
// the warnings; throws as above, and std::system_error where the file cannot be written.
std::vector<std::string> WriteGlb(const std::filesystem::path& file, const File& actor,
                                  const File* motion);

}  // namespace kta
