#include "kta/whole_file.h"

#include <cerrno>
#include <fstream>
#include <random>
#include <string>
#include <system_error>

namespace kta {

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

bool IsWriteProtected(const fs::path& file) {
    std::error_code error;
    return fs::exists(file, error) && !std::ofstream(file, std::ios::app);
}

namespace {

void CheckReplaceable(const fs::path& target, const fs::file_status& former) {
    if (fs::is_directory(former)) {
        throw std::system_error(std::make_error_code(std::errc::is_a_directory));
    }
    if (fs::exists(former) && !fs::is_regular_file(former)) {
        throw std::system_error(std::make_error_code(std::errc::operation_not_supported));
    }
    if (IsWriteProtected(target)) {
        throw std::system_error(std::make_error_code(std::errc::permission_denied));
    }
}

void Write(const fs::path& file, const std::function<void(std::ostream& out)>& write) {
    std::ofstream out;
    out.exceptions(std::ios::failbit | std::ios::badbit);
    errno = 0;
    try {
        out.open(file, std::ios::binary);
        write(out);
        out.close();
    } catch (const std::ios_base::failure&) {
        throw std::system_error(errno != 0 ? errno : EIO, std::generic_category());
    }
}

}  // namespace

void ReplaceFile(const fs::path& file, const std::function<void(std::ostream& out)>& write) {
    const fs::path target = BehindLinks(file);
    std::error_code error;
    const fs::file_status former = fs::status(target, error);
    CheckReplaceable(target, former);
    const PrivateDirectory room(target.has_parent_path() ? target.parent_path() : ".");
    const fs::path made = room.Path() / "file";
    Write(made, write);
    if (fs::exists(former)) {
        fs::permissions(made, former.permissions(), error);
    }
    fs::rename(made, target);
}

}  // namespace kta
