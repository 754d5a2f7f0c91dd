// SHA-256 (FIPS 180-4) of files.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace halden {

struct FileHash {
    std::uint64_t bytes = 0;
    std::string sha256;  // 64 hexadecimal digits
};

// Throws std::system_error with the file's path in what() when it cannot be read. May be called on
// several threads at once.
FileHash HashFile(const std::filesystem::path& file);

// The hash of a text, as FileHash has it.
std::string HashText(const std::string& text);

}  // namespace halden
