#include "kta/gltf/images.h"

#include <array>
#include <fstream>
#include <iterator>
#include <string_view>

#include "kta/text.h"

namespace kta::gltf {
namespace {

namespace fs = std::filesystem;

// By the bytes that each file of the kind begins with.
std::string TypeOf(std::string_view bytes) {
    if (bytes.starts_with("\x89PNG\r\n\x1a\n")) {
        return kPng;
    }
    return bytes.starts_with("\xff\xd8\xff") ? kJpeg : "";
}

std::string Utf8(const fs::path& path) {
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

}  // namespace

std::string ImageTypeOf(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    std::array<char, 8> bytes{};
    stream.read(bytes.data(), bytes.size());
    return TypeOf({bytes.data(), static_cast<std::size_t>(stream.gcount())});
}

std::string ImageTypeByName(const std::string& name) {
    if (EndsWithIgnoringCase(name, ".png")) {
        return kPng;
    }
    return EndsWithIgnoringCase(name, ".jpg") || EndsWithIgnoringCase(name, ".jpeg") ? kJpeg : "";
}

std::vector<std::uint8_t> BytesOf(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::string UriOf(const std::string& utf8) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    constexpr std::string_view kPlain = "-._~/";
    std::string uri;
    for (const char c : utf8) {
        const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                             (c >= '0' && c <= '9') || kPlain.find(c) != std::string_view::npos;
        if (isPlain) {
            uri += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            uri += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    return uri;
}

std::string UriOf(const fs::path& path, const fs::path& directory) {
    std::error_code error;
    const fs::path from = fs::absolute(directory.empty() ? "." : directory, error);
    const fs::path to = fs::absolute(path, error).lexically_normal();
    const fs::path relative = to.lexically_relative(from.lexically_normal());
    return UriOf(Utf8(relative.empty() ? to.filename() : relative));
}

}  // namespace kta::gltf
