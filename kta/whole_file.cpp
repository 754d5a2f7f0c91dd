#include "kta/whole_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace kta {

namespace {

namespace fs = std::filesystem;

constexpr int kAttempts = 1000;
constexpr std::string_view kPrefix = ".hdo-";
constexpr std::string_view kDigits = "0123456789abcdef";
constexpr std::size_t kMachineDigits = 4;
constexpr std::size_t kRandomDigits = 6;
constexpr const char* kOwner = "owner";

// What directories of this machine's programs begin with: a hash of its name (FNV-1a). A name
// carries it, not the owner's file, which a program may be killed before it fills.
std::string MachinePrefix() {
    std::array<char, 256> machine{};
#ifndef _WIN32
    gethostname(machine.data(), machine.size() - 1);
#endif
    std::uint32_t hash = 2166136261u;
    for (const char* c = machine.data(); *c; ++c) {
        hash = (hash ^ static_cast<unsigned char>(*c)) * 16777619u;
    }
    std::string prefix(kPrefix);
    for (std::size_t i = 0; i < kMachineDigits; ++i) {
        prefix += kDigits[hash >> (28 - 4 * i) & 15];
    }
    return prefix;
}

// Short, since Windows bounds whole paths.
std::string RandomName() {
    thread_local std::random_device random;
    std::string name = MachinePrefix();
    for (std::size_t i = 0; i < kRandomDigits; ++i) {
        name += kDigits[random() & 15];
    }
    return name;
}

bool IsPrivateName(std::string_view name) {
    return name.size() == kPrefix.size() + kMachineDigits + kRandomDigits &&
           name.starts_with(kPrefix) &&
           name.find_first_not_of(kDigits, kPrefix.size()) == std::string_view::npos;
}

// The owner's file goes last, so that a directory that is partly cleared has an owner to be told
// by.
void Clear(const fs::path& directory) {
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory, ignored)) {
        if (entry.path().filename() != kOwner) {
            fs::remove_all(entry.path(), ignored);
        }
    }
    fs::remove_all(directory, ignored);
}

#ifdef _WIN32
// Makes the owner's file; -1 when the directory is gone meanwhile.
std::intptr_t Own(const fs::path& directory) {
    const HANDLE file = CreateFileW((directory / kOwner).c_str(), GENERIC_WRITE, 0, nullptr,
                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    const DWORD error = GetLastError();
    if (file == INVALID_HANDLE_VALUE && error != ERROR_PATH_NOT_FOUND) {
        throw fs::filesystem_error(
            "cannot be owned", directory,
            std::error_code(static_cast<int>(error), std::system_category()));
    }
    return file == INVALID_HANDLE_VALUE ? -1 : reinterpret_cast<std::intptr_t>(file);
}

void Release(std::intptr_t owner) {
    CloseHandle(reinterpret_cast<HANDLE>(owner));
}

// A file in use cannot be removed.
void ClearIfOrphaned(const fs::path& directory) {
    if (DeleteFileW((directory / kOwner).c_str())) {
        Clear(directory);
    } else if (GetLastError() == ERROR_FILE_NOT_FOUND) {
        RemoveDirectoryW(directory.c_str());  // an empty one only
    }
}
#else
constexpr std::chrono::hours kForeignersTime(24);

// Makes the owner's file; -1 when the directory is gone meanwhile.
std::intptr_t Own(const fs::path& directory) {
    const int file = open((directory / kOwner).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0) {
        if (errno == ENOENT) {
            return -1;
        }
        throw fs::filesystem_error("cannot be owned", directory,
                                   std::error_code(errno, std::generic_category()));
    }
    // A file system without locks refuses those too who look for orphans.
    static_cast<void>(flock(file, LOCK_EX));
    struct stat status {};
    if (fstat(file, &status) == 0 && status.st_nlink > 0) {
        return file;
    }
    close(file);
    return -1;
}

void Release(std::intptr_t owner) {
    close(static_cast<int>(owner));
}

// Some network file systems lock for one machine only, so that another machine's directory counts
// as an orphan only when no run can be that old.
bool MayBeOrphaned(const fs::path& directory, const struct stat& status) {
    const std::chrono::seconds age(std::time(nullptr) - status.st_mtime);
    return directory.filename().string().starts_with(MachinePrefix()) || age > kForeignersTime;
}

void ClearIfOrphaned(const fs::path& directory) {
    const int file = open((directory / kOwner).c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
    if (file < 0) {
        if (errno == ENOENT) {
            rmdir(directory.c_str());  // an empty one only
        }
        return;
    }
    struct stat status {};
    if (flock(file, LOCK_EX | LOCK_NB) == 0 && fstat(file, &status) == 0 && status.st_nlink > 0 &&
        MayBeOrphaned(directory, status)) {
        Clear(directory);
    }
    close(file);
}
#endif

void ClearOrphans(const fs::path& parent) {
    std::error_code error;
    std::vector<fs::path> found;
    for (fs::directory_iterator i(parent, error), end; !error && i != end; i.increment(error)) {
        if (IsPrivateName(i->path().filename().string())) {
            found.push_back(i->path());
        }
    }
    for (const fs::path& directory : found) {
        ClearIfOrphaned(directory);
    }
}

}  // namespace

std::optional<std::string> ReadWholeFile(const fs::path& file, std::size_t most) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        return std::nullopt;
    }
    // A pipe has no size, and a file may grow meanwhile.
    constexpr std::size_t kLeastPart = 1 << 16;
    std::error_code ignored;
    const std::uintmax_t size = fs::file_size(file, ignored);
    std::string bytes;
    for (std::uintmax_t next = ignored ? kLeastPart : size + 1; in && bytes.size() < most;
         next = kLeastPart) {
        const std::size_t begin = bytes.size();
        const auto part = static_cast<std::size_t>(std::min<std::uintmax_t>(next, most - begin));
        bytes.resize(begin + part);
        in.read(bytes.data() + begin, static_cast<std::streamsize>(part));
        bytes.resize(begin + static_cast<std::size_t>(in.gcount()));
    }
    return in.bad() ? std::nullopt
                    : std::optional(std::move(bytes));  // a directory, a disk's fault
}

PrivateDirectory::PrivateDirectory(const fs::path& parent) : owner_(-1) {
    ClearOrphans(parent);
    for (int i = 0; i < kAttempts && owner_ == -1; ++i) {
        // Making a directory fails where there is one, so it says whose it is, on every system.
        path_ = parent / RandomName();
        if (fs::create_directory(path_)) {
            try {
                owner_ = Own(path_);
            } catch (...) {
                Clear(path_);
                throw;
            }
        }
    }
    if (owner_ == -1) {
        throw fs::filesystem_error("no name is free", parent,
                                   std::make_error_code(std::errc::file_exists));
    }
}

PrivateDirectory::~PrivateDirectory() {
#ifdef _WIN32
    Release(owner_);  // no open file can be removed
    Clear(path_);
#else
    Clear(path_);
    Release(owner_);
#endif
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

void CheckReplaceable(const fs::path& file) {
    const fs::path target = BehindLinks(file);
    std::error_code error;
    const fs::file_status former = fs::status(target, error);
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

namespace {

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

void ReplaceWholeFile(const fs::path& file, const std::function<void(std::ostream& out)>& write) {
    const fs::path target = BehindLinks(file);
    std::error_code error;
    const fs::file_status former = fs::status(target, error);
    CheckReplaceable(target);
    const PrivateDirectory room(target.has_parent_path() ? target.parent_path() : ".");
    const fs::path made = room.Path() / "file";
    Write(made, write);
    if (fs::exists(former)) {
        fs::permissions(made, former.permissions(), error);
    }
    fs::rename(made, target);
}

}  // namespace kta
