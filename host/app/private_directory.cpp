#include "host/app/private_directory.h"

#include <random>
#include <string>

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

constexpr int kAttempts = 1000;

std::string RandomName() {
    constexpr char kDigits[] = "0123456789abcdef";
    static std::random_device random;
    std::string name = ".hdo-export-";
    for (int i = 0; i < 16; ++i) {
        name += kDigits[random() & 15];
    }
    return name;
}

// Making a directory fails where there is one, so it says whose it is, on every system.
fs::path MakeDirectory(const fs::path& parent) {
    for (int i = 0; i < kAttempts; ++i) {
        fs::path path = parent / RandomName();
        if (fs::create_directory(path)) {
            return path;
        }
    }
    throw fs::filesystem_error("no name is free", parent,
                               std::make_error_code(std::errc::file_exists));
}

}  // namespace

PrivateDirectory::PrivateDirectory(const fs::path& parent) : path_(MakeDirectory(parent)) {
}

PrivateDirectory::~PrivateDirectory() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

fs::path BehindLinks(const fs::path& file) {
    std::error_code error;
    fs::path target = fs::canonical(file, error);
    return error ? file : target;
}

}  // namespace maxhost::app
