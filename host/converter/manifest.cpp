#include "host/converter/manifest.h"

#include <gcrypt.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <system_error>
#include <type_traits>

#include "kta/whole_file.h"

namespace halden {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr int kVersion = 1;

void PrepareLibrary() {
    if (!gcry_control(GCRYCTL_INITIALIZATION_FINISHED_P)) {
        gcry_check_version(nullptr);
        gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
        gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    }
}

class Sha256 {
  public:
    Sha256() {
        PrepareLibrary();
        gcry_md_hd_t handle = nullptr;
        if (gcry_md_open(&handle, GCRY_MD_SHA256, 0) != 0) {
            throw std::bad_alloc();
        }
        handle_.reset(handle);
    }

    void Add(const char* bytes, std::size_t size) { gcry_md_write(handle_.get(), bytes, size); }

    std::string Hexadecimal() {
        constexpr char kDigits[] = "0123456789abcdef";
        const unsigned char* const digest = gcry_md_read(handle_.get(), GCRY_MD_SHA256);
        std::string text;
        for (unsigned i = 0; i < gcry_md_get_algo_dlen(GCRY_MD_SHA256); ++i) {
            text += {kDigits[digest[i] >> 4], kDigits[digest[i] & 15]};
        }
        return text;
    }

  private:
    struct Close {
        void operator()(gcry_md_hd_t handle) const { gcry_md_close(handle); }
    };
    std::unique_ptr<std::remove_pointer_t<gcry_md_hd_t>, Close> handle_;
};

[[noreturn]] void Fail(int error, const std::string& path) {
    throw std::system_error(error != 0 ? error : EIO, std::generic_category(), path);
}

Json Described(const ManifestEntry& entry) {
    errno = 0;
    std::ifstream file(fs::path(entry.path), std::ios::binary);
    Sha256 hash;
    std::uint64_t bytes = 0;
    std::array<char, 1 << 16> buffer;
    while (file) {
        file.read(buffer.data(), buffer.size());
        hash.Add(buffer.data(), static_cast<std::size_t>(file.gcount()));
        bytes += static_cast<std::uint64_t>(file.gcount());
    }
    if (!file.eof()) {
        Fail(errno, entry.path);
    }
    return {{"name", fs::path(entry.path).filename().string()},
            {"kind", entry.kind},
            {"bytes", bytes},
            {"sha256", hash.Hexadecimal()}};
}

}  // namespace

void WriteManifest(const std::string& file, const std::vector<ManifestEntry>& entries) {
    Json manifest = {{"haldenManifest", kVersion},
                     {"about",
                      "Stands in the place of the HDO file, which the converter of the "
                      "Halden application writes."},
                     {"files", Json::array()}};
    for (const ManifestEntry& entry : entries) {
        manifest["files"].push_back(Described(entry));
    }
    // Names of files may be in any coding.
    const std::string text = manifest.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    try {
        kta::ReplaceWholeFile(file, [&](std::ostream& out) { out << text; });
    } catch (const std::system_error& error) {
        throw std::system_error(error.code(), file);
    }
}

}  // namespace halden
