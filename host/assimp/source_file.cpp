#include "host/assimp/source_file.h"

#include <assimp/MemoryIOWrapper.h>
#include <utf8.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

#include "host/assimp/imported_scene.h"
#include "host/assimp/text.h"
#include "host/file_name.h"
#include "kta/whole_file.h"

namespace maxhost::import {
namespace {

namespace fs = std::filesystem;

// Of the formats that Assimp reads, those that are text alone, and the material files beside them.
constexpr std::string_view kTextExtensions[] = {
    ".ac",       ".ac3d",    ".acc",       ".ase",     ".ask", ".bvh",     ".csm",
    ".dae",      ".enff",    ".gltf",      ".ifc",     ".irr", ".irrmesh", ".lws",
    ".material", ".md5anim", ".md5camera", ".md5mesh", ".mot", ".mtl",     ".nff",
    ".obj",      ".off",     ".ogex",      ".raw",     ".smd", ".step",    ".stp",
    ".vta",      ".wrl",     ".x3d",       ".x3dv",    ".xgl", ".xml"};

// Those that are text or binary.
constexpr std::string_view kMixedExtensions[] = {".cob", ".dxf", ".fbx", ".ply", ".stl", ".x"};

std::string ExtensionOf(const std::string& path) {
    return InSmallLetters(fs::path(path).extension().string());
}

template <std::size_t count>
bool IsNamed(const std::string& path, const std::string_view (&extensions)[count]) {
    return std::find(std::begin(extensions), std::end(extensions), ExtensionOf(path)) !=
           std::end(extensions);
}

std::uint64_t SizeOf(const fs::path& file) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    return error ? 0 : size;
}

// ---------------------------------------------------------------- text

enum class Utf16 { none, littleEndian, bigEndian };

bool IsAscii(unsigned char byte) {
    return byte > 0 && byte < 0x80;
}

// By the byte order mark, or by two ASCII characters in a row.
Utf16 CodingOf(std::string_view beginning, bool needsMark) {
    std::array<unsigned char, 4> b{};
    std::memcpy(b.data(), beginning.data(), std::min(beginning.size(), b.size()));
    const bool isLittle = !needsMark && IsAscii(b[0]) && b[1] == 0 && IsAscii(b[2]) && b[3] == 0;
    const bool isBig = !needsMark && b[0] == 0 && IsAscii(b[1]) && b[2] == 0 && IsAscii(b[3]);
    return (b[0] == 0xff && b[1] == 0xfe) || isLittle ? Utf16::littleEndian
           : (b[0] == 0xfe && b[1] == 0xff) || isBig  ? Utf16::bigEndian
                                                      : Utf16::none;
}

Utf16 CodingOfFile(const std::string& path) {
    const bool isText = IsNamed(path, kTextExtensions);
    if (!isText && !IsNamed(path, kMixedExtensions)) {
        return Utf16::none;
    }
    std::string beginning(4, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(beginning.data(), static_cast<std::streamsize>(beginning.size()));
    return CodingOf(beginning, !isText);
}

std::string FromUtf16(std::string_view bytes, Utf16 coding) {
    std::u16string units(bytes.size() / 2, u'\0');
    const std::size_t high = coding == Utf16::bigEndian ? 0 : 1;
    for (std::size_t i = 0; i < units.size(); ++i) {
        units[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i + high]) << 8 |
                                         static_cast<unsigned char>(bytes[2 * i + 1 - high]));
    }
    std::u16string_view text = units;
    text.remove_prefix(!text.empty() && text.front() == u'\ufeff' ? 1 : 0);
    std::string result;
    try {
        utf8::utf16to8(text.begin(), text.end(), std::back_inserter(result));
    } catch (const utf8::exception&) {
        throw ImportError("begins as UTF-16 text, but is none");
    }
    return result;
}

std::string ReadUtf16(const std::string& path, Utf16 coding) {
    return FromUtf16(kta::ReadWholeFile(path).value_or(""), coding);
}

// Control characters but for those of layout, the bell, a backspace, DOS's end of file and the
// escapes of ISO 2022.
constexpr std::array<bool, 256> kIsNoText = [] {
    std::array<bool, 256> isNone{};
    for (unsigned byte = 0; byte < 0x20; ++byte) {
        isNone[byte] = !(byte >= 0x07 && byte <= 0x0d) && byte != 0x1a && byte != 0x1b;
    }
    return isNone;
}();

bool IsNoText(char c) {
    return kIsNoText[static_cast<unsigned char>(c)];
}

// Looks at a part of a text that begins at `offset`.
void CheckPart(std::string_view part, std::uint64_t offset, const std::string& extension) {
    const auto found = std::find_if(part.begin(), part.end(), IsNoText);
    if (found != part.end()) {
        std::array<char, 8> code{};
        std::snprintf(code.data(), code.size(), "0x%02x", static_cast<unsigned>(*found));
        throw ImportError("not text, which " + extension + " files are: character " + code.data() +
                          " at offset " + std::to_string(offset + (found - part.begin())));
    }
}

void CheckText(const std::string& path) {
    const std::string extension = ExtensionOf(path);
    if (const Utf16 coding = CodingOfFile(path); coding != Utf16::none) {
        CheckPart(ReadUtf16(path, coding), 0, extension);
        return;
    }
    std::ifstream file(path, std::ios::binary);
    std::array<char, 1 << 16> buffer;
    for (std::uint64_t offset = 0; file;) {
        file.read(buffer.data(), buffer.size());
        const auto count = static_cast<std::size_t>(file.gcount());
        CheckPart({buffer.data(), count}, offset, extension);
        offset += count;
    }
}

// Assimp's reader looks for a header's end forever.
void CheckPlyHeader(const std::string& path) {
    constexpr std::size_t kMostBytes = 1 << 20;
    std::string beginning(kMostBytes, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(beginning.data(), static_cast<std::streamsize>(beginning.size()));
    beginning.resize(static_cast<std::size_t>(file.gcount()));
    if (beginning.starts_with("ply") && beginning.find("end_header") == std::string::npos) {
        throw ImportError("cut off in its header, which has no end_header");
    }
}

// Another stream whose reading is told.
class CountedStream : public Assimp::IOStream {
  public:
    CountedStream(Assimp::IOStream* stream, std::function<void(std::size_t bytes)> report)
        : stream_(stream), report_(std::move(report)) {}

    std::size_t Read(void* buffer, std::size_t size, std::size_t count) override {
        const std::size_t read = stream_->Read(buffer, size, count);
        report_(read * size);
        return read;
    }
    std::size_t Write(const void* buffer, std::size_t size, std::size_t count) override {
        return stream_->Write(buffer, size, count);
    }
    aiReturn Seek(std::size_t offset, aiOrigin origin) override {
        return stream_->Seek(offset, origin);
    }
    std::size_t Tell() const override { return stream_->Tell(); }
    std::size_t FileSize() const override { return stream_->FileSize(); }
    void Flush() override { stream_->Flush(); }

  private:
    const std::unique_ptr<Assimp::IOStream> stream_;
    const std::function<void(std::size_t)> report_;
};

// Opening a pipe waits for somebody who writes to it, and a device may have no end.
bool IsPipeOrDevice(const char* path) {
    std::error_code ignored;
    const fs::file_status status = fs::status(path, ignored);
    return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

}  // namespace

std::string PathWithoutDots(const std::string& path) {
    const fs::path given(path);
    if (std::find(given.begin(), given.end(), "..") == given.end()) {
        return path;
    }
    std::error_code error;
    const fs::path folder = fs::canonical(given.parent_path(), error);
    return error ? path : (folder / given.filename()).string();
}

void CheckSourceFile(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (error || !fs::exists(status)) {
        throw ImportError(error ? error.message() : "no such file");
    }
    if (!fs::is_regular_file(status)) {
        throw ImportError(fs::is_directory(status) ? "a directory, not a scene file"
                                                   : "not a regular file");
    }
    errno = 0;
    if (!std::ifstream(path, std::ios::binary)) {
        throw ImportError(std::generic_category().message(errno ? errno : EIO));
    }
    if (SizeOf(path) == 0) {
        throw ImportError("an empty file, expected a scene");
    }
    if (IsNamed(path, kTextExtensions)) {
        CheckText(path);
    }
    if (ExtensionOf(path) == ".ply") {
        CheckPlyHeader(path);
    }
}

std::uint64_t SourceSize(const std::string& path) {
    std::uint64_t size = SizeOf(path);
    std::error_code error;
    if (fs::path(path).extension() == ".gltf") {
        const auto folder = fs::absolute(path, error).parent_path();
        for (const auto& entry : fs::directory_iterator(folder, error)) {
            size += entry.path().extension() == ".bin" ? SizeOf(entry.path()) : 0;
        }
    }
    return size;
}

void SourceFiles::Note(const char* path) const {
    std::error_code ignored;
    asked_.insert(fs::absolute(path, ignored).lexically_normal().string());
}

bool SourceFiles::Exists(const char* path) const {
    Note(path);
    return !IsPipeOrDevice(path) && DefaultIOSystem::Exists(path);
}

Assimp::IOStream* SourceFiles::Open(const char* path, const char* mode) {
    Note(path);
    if (IsPipeOrDevice(path)) {
        return nullptr;
    }
    const Utf16 coding = CodingOfFile(path);
    if (coding == Utf16::none) {
        Assimp::IOStream* const stream = DefaultIOSystem::Open(path, mode);
        return stream == nullptr ? nullptr : new CountedStream(stream, [this](std::size_t bytes) {
            report_(bytesRead_ += bytes);
        });
    }
    const std::string text = ReadUtf16(path, coding);
    auto bytes = std::make_unique<std::uint8_t[]>(text.size());
    std::memcpy(bytes.get(), text.data(), text.size());
    auto* const stream = new Assimp::MemoryIOStream(bytes.get(), text.size(), true);
    bytes.release();
    return stream;
}

}  // namespace maxhost::import
