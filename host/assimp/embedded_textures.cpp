#include "host/assimp/embedded_textures.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <limits>
#include <new>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "host/assimp/text.h"
#include "host/assimp/texture_search.h"
#include "host/cut_text.h"
#include "host/file_name.h"

namespace maxhost::import {
namespace {

// For the picture library, which frees the result; its own compression takes ten times as long.
unsigned char* CompressForPng(const unsigned char* bytes, int size, int* compressedSize, int) {
    uLongf length = compressBound(static_cast<uLong>(size));
    auto* const compressed = static_cast<unsigned char*>(std::malloc(length));
    if (compressed &&
        compress2(compressed, &length, bytes, static_cast<uLong>(size), Z_BEST_SPEED) != Z_OK) {
        std::free(compressed);
        return nullptr;
    }
    *compressedSize = static_cast<int>(length);
    return compressed;
}

}  // namespace
}  // namespace maxhost::import

#define STBIW_ZLIB_COMPRESS maxhost::import::CompressForPng
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace maxhost::import {
namespace {

// ---------------------------------------------------------------- bytes

// By the bytes that they begin with.
struct Signature {
    std::size_t offset;
    std::string_view bytes;
    std::string_view suffix;
};
constexpr Signature kSignatures[] = {{0, "\x89PNG\r\n\x1a\n", ".png"},
                                     {0, "\xff\xd8\xff", ".jpg"},
                                     {0, "GIF8", ".gif"},
                                     {0, "DDS ", ".dds"},
                                     {8, "WEBP", ".webp"},
                                     {0, "\xabKTX 20\xbb", ".ktx2"},
                                     {0, "\xabKTX 11\xbb", ".ktx"},
                                     {0, "8BPS", ".psd"},
                                     {0, "#?RADIANCE", ".hdr"},
                                     {0, "\x76\x2f\x31\x01", ".exr"},
                                     {0, {"II*\0", 4}, ".tif"},
                                     {0, {"MM\0*", 4}, ".tif"},
                                     {0, "BM", ".bmp"}};

// What a file's own name ends in where it is a picture's.
constexpr std::string_view kPictures[] = {
    ".bmp", ".cin", ".dds", ".exr", ".gif", ".hdr", ".iff", ".jpeg", ".jpg", ".ktx", ".ktx2",
    ".pcx", ".png", ".psd", ".rgb", ".sgi", ".tga", ".tif", ".tiff", ".vda", ".webp"};

bool IsPicture(const std::string& suffix) {
    return std::ranges::find(kPictures, InSmallLetters(suffix)) != std::end(kPictures);
}

// The importer's hint counts where the bytes do not tell: TGA has no signature.
std::string SuffixOf(std::string_view bytes, const aiTexture& texture) {
    for (const Signature& signature : kSignatures) {
        if (bytes.substr(std::min(signature.offset, bytes.size())).starts_with(signature.bytes)) {
            return std::string(signature.suffix);
        }
    }
    const char* const hint = texture.achFormatHint;
    const std::string hinted =
        "." + InSmallLetters(std::string(hint, strnlen(hint, HINTMAXTEXTURELEN)));
    return IsPicture(hinted) ? hinted : ".bin";
}

void Append(void* text, void* data, int size) {
    static_cast<std::string*>(text)->append(static_cast<const char*>(data),
                                            static_cast<std::size_t>(size));
}

// Bare texels as a PNG file; empty where there are too many.
std::string PngOf(const aiTexture& texture) {
    if (!FitsPng(texture.mWidth, texture.mHeight)) {
        return {};
    }
    const std::size_t count = std::size_t{texture.mWidth} * texture.mHeight;
    std::vector<std::array<std::uint8_t, 4>> rgba(count);
    for (std::size_t i = 0; i < count; ++i) {
        const aiTexel& texel = texture.pcData[i];
        rgba[i] = {texel.r, texel.g, texel.b, texel.a};
    }
    std::string png;
    const int width = static_cast<int>(texture.mWidth);
    constexpr int kUp = 2;  // the library would try all five filters on each row
    stbi_write_force_png_filter = kUp;
    stbi_write_png_to_func(Append, &png, width, static_cast<int>(texture.mHeight), 4, rgba.data(),
                           4 * width);
    if (png.empty()) {
        throw std::bad_alloc();
    }
    return png;
}

bool IsBare(const aiTexture& texture) {
    return texture.mHeight > 0;
}

// The file's bytes; empty where there are none.
std::string BytesOf(const aiTexture& texture) {
    if (!texture.pcData || texture.mWidth == 0) {
        return {};
    }
    return IsBare(texture)
               ? PngOf(texture)
               : std::string(reinterpret_cast<const char*>(texture.pcData), texture.mWidth);
}

// ---------------------------------------------------------------- names

std::string_view PartBehindSeparators(std::string_view path) {
    return path.substr(path.find_last_of("/\\") + 1);
}

std::string FileNameOf(std::string_view path) {
    return FittingFileName(std::string(PartBehindSeparators(path)));
}

struct FileName {
    std::string stem;
    std::string suffix;  // with its dot

    // As the number-th of that name. The stem is cut where file systems have no room for it.
    std::string Text(std::size_t number = 1) const {
        constexpr std::size_t kMost = 200;
        const std::string behind = (number > 1 ? "-" + std::to_string(number) : "") + suffix;
        return std::string(CutUtf8(stem, kMost - std::min(behind.size(), kMost))) + behind;
    }
};

FileName SplitName(const std::string& name) {
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? FileName{name, ""}
                                                : FileName{name.substr(0, dot), name.substr(dot)};
}

// The file's name; `number` counts the file's textures from 1.
FileName NameFor(const aiTexture& texture, std::string_view bytes, const std::string& model,
                 unsigned number) {
    const std::string own = FileNameOf(TextOf(texture.mFilename));
    FileName name = SplitName(own);
    if (IsPicture(name.suffix)) {
        name.suffix = IsBare(texture) ? ".png" : name.suffix;
        return name;
    }
    return {model + "-" + (own.empty() ? "texture-" + std::to_string(number) : own),
            SuffixOf(bytes, texture)};
}

}  // namespace

// ---------------------------------------------------------------- the textures

// The library counts the bytes of all rows, each with one before its texels, in an int.
bool FitsPng(unsigned width, unsigned height) {
    constexpr unsigned kMostTexels = 65535;  // in a row or column
    // What cannot be compressed becomes longer by less than a thousandth.
    constexpr std::int64_t kMostBytes = std::numeric_limits<int>::max() / 1001LL * 1000;
    return width <= kMostTexels && height <= kMostTexels &&
           (4 * std::int64_t{width} + 1) * height <= kMostBytes;
}

// Readers of glTF refer to them by number alone, others by the name as well, or by that of a file
// in another directory. Of several with one name, the first counts.
EmbeddedTextures::EmbeddedTextures(const aiScene& scene, SourceFormat format,
                                   const std::string& path) {
    std::map<std::string, const aiTexture*> byFileName;
    for (unsigned i = 0; i < scene.mNumTextures; ++i) {
        if (const aiTexture* const texture = scene.mTextures[i]) {
            references_["*" + std::to_string(i)] = texture;
            if (const std::string name = TextOf(texture->mFilename);
                format != SourceFormat::gltf && !name.empty()) {
                references_.emplace(name, texture);
                byFileName.emplace(PartBehindSeparators(name), texture);
            }
        }
    }
    references_.merge(byFileName);
    MakeFiles(scene, path);
}

const aiTexture* EmbeddedTextures::Find(const aiString& reference) const {
    const std::string text = TextOf(reference);
    auto found = references_.find(text);
    if (found == references_.end()) {
        found = references_.find(std::string(PartBehindSeparators(text)));
    }
    return found == references_.end() ? nullptr : found->second;
}

const std::string* EmbeddedTextures::NameOf(const aiTexture& texture) const {
    const auto found = names_.find(&texture);
    return found == names_.end() ? nullptr : &found->second;
}

// Adds the names of textures beside the model, in small letters.
void EmbeddedTextures::FindBeside(const aiScene& scene, std::set<std::string>& taken) const {
    for (unsigned i = 0; i < scene.mNumMaterials; ++i) {
        const aiMaterial* const material = scene.mMaterials[i];
        for (unsigned j = 0; material && j < material->mNumProperties; ++j) {
            const aiMaterialProperty* const property = material->mProperties[j];
            aiString file;
            if (property && std::strcmp(property->mKey.C_Str(), _AI_MATKEY_TEXTURE_BASE) == 0 &&
                material->Get(_AI_MATKEY_TEXTURE_BASE, property->mSemantic, property->mIndex,
                              file) == AI_SUCCESS &&
                !Find(file)) {
                for (const std::string& name : FileNamesOf(TextOf(file))) {
                    taken.insert(InSmallLetters(FittingFileName(name)));
                }
            }
        }
    }
}

void EmbeddedTextures::MakeFiles(const aiScene& scene, const std::string& path) {
    std::set<std::string> taken = {
        InSmallLetters(FileNameOf(std::filesystem::path(path).filename().string()))};
    FindBeside(scene, taken);
    std::map<std::string, std::size_t> numbers;  // how many files a name has, in small letters
    std::map<std::pair<std::string, std::string_view>, std::string> known;  // by name and bytes
    files_.reserve(scene.mNumTextures);  // their bytes stay where they are
    const std::string model = FileNameOf(ToUtf8(std::filesystem::path(path).stem().string()));
    for (unsigned i = 0; i < scene.mNumTextures; ++i) {
        const aiTexture* const texture = scene.mTextures[i];
        std::string bytes = texture ? BytesOf(*texture) : std::string();
        if (bytes.empty()) {
            continue;
        }
        const FileName wanted = NameFor(*texture, bytes, model, i + 1);
        const std::string key = InSmallLetters(wanted.Text());
        if (const auto same = known.find({key, bytes}); same != known.end()) {
            names_[texture] = same->second;
            continue;
        }
        std::string name;
        do {
            name = wanted.Text(++numbers[key]);
        } while (!taken.insert(InSmallLetters(name)).second);
        names_[texture] = name;
        files_.push_back({name, std::move(bytes)});
        known.emplace(std::pair{key, std::string_view(files_.back().bytes)}, name);
    }
}

}  // namespace maxhost::import
