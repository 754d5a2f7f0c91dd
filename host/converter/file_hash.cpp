#include "host/converter/file_hash.h"

#include <gcrypt.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <fstream>
#include <memory>
#include <new>
#include <system_error>
#include <type_traits>

namespace halden {
namespace {

bool PrepareLibrary() {
    if (!gcry_control(GCRYCTL_INITIALIZATION_FINISHED_P)) {
        gcry_check_version(nullptr);
        gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
        gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    }
    return true;
}

class Sha256 {
  public:
    Sha256() {
        [[maybe_unused]] static const bool isPrepared = PrepareLibrary();
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

}  // namespace

FileHash HashFile(const std::filesystem::path& path) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    Sha256 hash;
    FileHash result;
    std::array<char, 1 << 16> buffer;
    while (file) {
        file.read(buffer.data(), buffer.size());
        hash.Add(buffer.data(), static_cast<std::size_t>(file.gcount()));
        result.bytes += static_cast<std::uint64_t>(file.gcount());
    }
    if (!file.eof()) {
        throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(), path.string());
    }
    result.sha256 = hash.Hexadecimal();
    return result;
}

std::string HashText(const std::string& text) {
    Sha256 hash;
    hash.Add(text.data(), text.size());
    return hash.Hexadecimal();
}

}  // namespace halden
