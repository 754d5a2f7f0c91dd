// Image files as a glTF document has them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace kta::gltf {

inline const std::string kPng = "image/png";
inline const std::string kJpeg = "image/jpeg";

// By the file's first bytes; empty for one of another kind.
std::string ImageTypeOf(const std::filesystem::path& path);
// By how a name ends.
std::string ImageTypeByName(const std::string& name);

std::vector<std::uint8_t> BytesOf(const std::filesystem::path& path);

// The path from a directory to a file, or a name, with what a URI cannot hold as %XX (RFC 3986).
std::string UriOf(const std::filesystem::path& path, const std::filesystem::path& directory);
std::string UriOf(const std::string& utf8);

}  // namespace kta::gltf
