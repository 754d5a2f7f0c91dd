#include "kta/reader.h"

#include <cerrno>
#include <fstream>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

#include "kta/read_bodies.h"

namespace kta {
namespace {

constexpr std::string_view kMagic = "KTA ";
constexpr std::array<std::uint8_t, 2> kVersion = {1, 1};

// A text for a fault line: bytes that are not printable ASCII stand as \xNN.
std::string Quoted(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text = "\"";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7f && c != '"' && c != '\\') {
            text += c;
        } else {
            text += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    return text + '"';
}

std::string VersionText(const std::array<std::uint8_t, 2>& version) {
    return std::to_string(version[0]) + "." + std::to_string(version[1]);
}

// ---------------------------------------------------------------- framing

// A kind of chunk whose layout this reader knows, in one version.
struct BodyReader {
    KTAChunkId id;
    std::uint32_t version;
    void (*read)(Cursor& cursor, Chunk& chunk);
};

constexpr BodyReader kBodyReaders[] = {{kChunkNode, 3, ReadNodeBody},
                                       {kChunkMesh, 3, ReadMeshBody},
                                       {kChunkMaterial, 2, ReadMaterialBody},
                                       {kChunkMaterialLayer, 3, ReadMaterialLayerBody}};

void ReadBody(Cursor& cursor, Chunk& chunk) {
    bool kindIsRead = false;
    for (const BodyReader& reader : kBodyReaders) {
        if (reader.id == chunk.type->id) {
            kindIsRead = true;
            if (reader.version == chunk.version) {
                reader.read(cursor, chunk);
                return;
            }
        }
    }
    if (kindIsRead) {
        cursor.Stop(chunk.offset + 8, "version is " + std::to_string(chunk.version) +
                                          ", expected " + std::to_string(chunk.type->version));
    } else {
        cursor.Stop(chunk.offset, "chunk id " + std::to_string(int{chunk.type->id}) +
                                      ", this version does not read " + chunk.type->name +
                                      " chunks yet");
    }
}

void ReadChunk(Cursor& cursor, File& file) {
    Chunk chunk;
    chunk.offset = cursor.Offset();
    cursor.SetWhere("chunk header");
    cursor.Require(kChunkHeaderSize);
    const std::uint32_t id = cursor.U32();
    chunk.size = cursor.U32();
    chunk.version = cursor.U32();
    chunk.type = FindChunkType(id);
    if (chunk.type == nullptr) {
        cursor.Stop(chunk.offset,
                    "chunk id is " + std::to_string(id) + ", expected that of a known chunk kind");
    }
    if (cursor.Stopped()) {
        return;
    }
    cursor.SetWhere(std::string(chunk.type->name) + " chunk");
    if (chunk.type->file != file.kind) {
        cursor.Report(chunk.offset, std::string("stands in a file of the kind \"") +
                                        KindName(file.kind) + "\", expected only in \"" +
                                        KindName(chunk.type->file) + "\"");
    }
    ReadBody(cursor, chunk);
    if (!cursor.Stopped()) {
        file.chunks.push_back(std::move(chunk));
        file.end = cursor.Offset();
    }
}

// File header: 0 magic[4], 4 major version u8, 5 minor version u8, 6 kind u8.
std::optional<File> ReadHeader(Cursor& cursor) {
    cursor.SetWhere("header");
    cursor.Require(kFileHeaderSize);
    std::string magic;
    for (std::size_t i = 0; i < kMagic.size(); ++i) {
        magic += static_cast<char>(cursor.U8());
    }
    if (magic != kMagic) {
        cursor.Stop(0, "magic is " + Quoted(magic) + ", expected " + Quoted(kMagic));
    }
    File file;
    file.version = {cursor.U8(), cursor.U8()};
    if (file.version != kVersion) {
        cursor.Stop(
            4, "version is " + VersionText(file.version) + ", expected " + VersionText(kVersion));
    }
    const std::uint8_t kind = cursor.U8();
    if (kind > 1) {
        cursor.Stop(
            6, "file kind is " + std::to_string(int{kind}) + ", expected 0 (motion) or 1 (actor)");
    }
    if (cursor.Stopped()) {
        return std::nullopt;
    }
    file.kind = kind == 1 ? kFileKindActor : kFileKindMotion;
    file.end = cursor.Offset();
    return file;
}

// ---------------------------------------------------------------- streams

std::string SystemError(std::string what) {
    if (errno != 0) {
        what += " (" + std::generic_category().message(errno) + ")";
    }
    return what;
}

Reading Failed(std::string inputError) {
    Reading reading;
    reading.inputError = std::move(inputError);
    return reading;
}

// Appends up to `size` bytes; fewer only at the stream's end or when it fails.
void Append(std::istream& stream, std::size_t size, std::vector<std::uint8_t>& bytes) {
    const std::size_t old = bytes.size();
    bytes.resize(old + size);
    stream.read(reinterpret_cast<char*>(bytes.data() + old), static_cast<std::streamsize>(size));
    bytes.resize(old + static_cast<std::size_t>(stream.gcount()));
}

}  // namespace

Reading Read(std::span<const std::uint8_t> bytes) {
    Reading reading;
    Cursor cursor(bytes, reading.faults);
    reading.file = ReadHeader(cursor);
    if (reading.file) {
        reading.file->size = bytes.size();
        while (!cursor.Stopped() && cursor.Left() > 0) {
            ReadChunk(cursor, *reading.file);
        }
    }
    return reading;
}

Reading Read(std::istream& stream) {
    constexpr std::size_t kBlockSize = std::size_t{1} << 16;
    std::vector<std::uint8_t> bytes;
    errno = 0;
    Append(stream, kFileHeaderSize, bytes);
    // What is no KTA file is not read to its end, however long it is.
    if (!stream.bad() && Read(bytes).file) {
        while (stream) {
            Append(stream, kBlockSize, bytes);
        }
    }
    if (stream.bad()) {
        return Failed(SystemError("cannot be read"));
    }
    return Read(bytes);
}

Reading ReadFile(const std::string& path) {
    errno = 0;
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        return Failed(SystemError("cannot be opened"));
    }
    try {
        return Read(stream);
    } catch (const std::bad_alloc&) {
        return Failed("is too large for the memory there is");
    }
}

Reading ReadFile(const std::string& path, KTAFileKind expected) {
    Reading reading = ReadFile(path);
    if (reading.file && reading.file->kind != expected) {
        reading.faults.push_back({kFileHeaderSize - 1, "header",
                                  std::string("file kind is \"") + KindName(reading.file->kind) +
                                      "\", expected \"" + KindName(expected) + "\""});
    }
    return reading;
}

const char* KindName(KTAFileKind kind) {
    return kind == kFileKindActor ? "actor" : "motion";
}

std::vector<std::string> FaultLines(const std::string& path, const Reading& reading) {
    std::vector<std::string> lines;
    if (!reading.inputError.empty()) {
        lines.push_back(path + ": " + reading.inputError);
    }
    for (const Fault& fault : reading.faults) {
        lines.push_back(path + ": offset " + std::to_string(fault.offset) + ": " + fault.where +
                        ": " + fault.text);
    }
    return lines;
}

}  // namespace kta
