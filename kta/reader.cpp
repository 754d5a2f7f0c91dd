#include "kta/reader.h"

#include <cerrno>
#include <exception>
#include <fstream>
#include <new>
#include <system_error>
#include <unordered_map>

#include "kta/bodies.h"

namespace kta {
namespace {

constexpr std::string_view kMagic = "KTA ";
constexpr std::array<std::uint8_t, 2> kVersion = {1, 1};
constexpr const char* kHeader = "header";
constexpr const char* kNoMemory = "out of memory";  // short enough to be kept without any

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

// The layouts of all kinds of chunk.
struct BodyReader {
    int id;
    std::uint32_t version;
    void (*read)(Cursor& cursor, Chunk& chunk);
};

template <typename Record>
constexpr BodyReader Layout(void (*read)(Cursor&, Chunk&) = ReadRecordBody<Record>) {
    return {Record::kChunkId, Record::kChunkVersion, read};
}

constexpr BodyReader kBodyReaders[] = {Layout<KTANode>(),
                                       Layout<KTAMotionPart>(),
                                       {kChunkKeyTrack, kKeyTrackSampled, ReadKeyTrackBody},
                                       {kChunkKeyTrack, kKeyTrackKeyframed, ReadKeyTrackBody},
                                       Layout<KTAMesh>(ReadMeshBody),
                                       Layout<KTAWeights>(ReadWeightsBody),
                                       Layout<KTAMaterial>(),
                                       Layout<KTAMaterialLayer>(),
                                       Layout<KTAJointLimits>(),
                                       Layout<KTAMorphChannel>(ReadMorphBody),
                                       Layout<KTAWire>(ReadWireBody),
                                       Layout<KTAIKChain>()};

void ReadBody(Cursor& cursor, Chunk& chunk) {
    std::string versions;
    for (const BodyReader& reader : kBodyReaders) {
        if (reader.id != chunk.type->id) {
            continue;
        }
        if (reader.version == chunk.version) {
            reader.read(cursor, chunk);
            return;
        }
        versions += (versions.empty() ? "" : " or ") + std::to_string(reader.version);
    }
    cursor.Stop(chunk.offset + offsetof(KTAChunkHeader, version),
                Found(IssueCode::chunkVersion, "version", chunk.version, versions));
}

// ---------------------------------------------------------------- what chunks say of one another

// The original vertices of the meshes read so far, by their node's number.
using MeshSizes = std::unordered_map<std::int32_t, std::int32_t>;

// Vertices without a record are only believed where the mesh has as many as the size counts.
// Weights that the end of the file breaks off are told from them by that.
void CheckShortWeights(Cursor& cursor, const MeshSizes& meshes, const Chunk& chunk) {
    const auto& weights = *chunk.As<Weights>();
    const std::uint64_t missing = weights.vertexCount - weights.weightCounts.size();
    const auto mesh = meshes.find(weights.head.nodeNumber);
    if (missing == 0 ||
        (mesh != meshes.end() && weights.vertexCount == static_cast<std::uint32_t>(mesh->second))) {
        return;
    }
    if (cursor.Left() == 0) {
        cursor.Require(missing, "weights");
    } else {
        cursor.Report(chunk.offset + offsetof(KTAChunkHeader, size),
                      Found(IssueCode::chunkSize, "size", chunk.size,
                            std::to_string(chunk.size - missing) + ", what stands there"));
    }
}

// A track's place behind its motion part: 0 position, 1 rotation, 2 scale.
int PlaceOf(char trackLetter) {
    return trackLetter == 'P' ? 0 : trackLetter == 'S' ? 2 : 1;
}

// The tracks of a motion part stand behind it in their order, each once.
void CheckTrackOrder(Cursor& cursor, const File& file, const Chunk& chunk) {
    const char letter = chunk.As<KeyTrack>()->head.trackLetter;
    const Chunk* previous = file.chunks.empty() ? nullptr : &file.chunks.back();
    const auto* before = previous != nullptr ? previous->As<KeyTrack>() : nullptr;
    if (before != nullptr && PlaceOf(before->head.trackLetter) >= PlaceOf(letter)) {
        cursor.Report(chunk.offset, {IssueCode::trackOrder, std::string("track ") + letter,
                                     std::string("behind track ") + before->head.trackLetter,
                                     "position, rotation, scale, each once"});
    } else if (before == nullptr &&
               (previous == nullptr || previous->As<KTAMotionPart>() == nullptr)) {
        cursor.Report(chunk.offset, {IssueCode::trackWithoutPart, "", "no motion part", "one"});
    }
}

void CheckAgainstOthers(Cursor& cursor, const File& file, MeshSizes& meshes, const Chunk& chunk) {
    if (const auto* mesh = chunk.As<Mesh>()) {
        meshes[mesh->head.nodeNumber] = mesh->head.originalVertexCount;
    } else if (chunk.As<Weights>() != nullptr) {
        CheckShortWeights(cursor, meshes, chunk);
    } else if (chunk.As<KeyTrack>() != nullptr) {
        CheckTrackOrder(cursor, file, chunk);
    }
}

// ---------------------------------------------------------------- files

void ReadChunk(Cursor& cursor, MeshSizes& meshes, File& file) {
    Chunk chunk;
    chunk.offset = cursor.Offset();
    cursor.SetPlace({"chunk header", nullptr, chunk.offset, file.chunks.size()});
    cursor.Require(sizeof(KTAChunkHeader));
    const auto header = cursor.Read<KTAChunkHeader>();
    chunk.size = header.size;
    chunk.version = header.version;
    chunk.type = FindChunkType(header.id);
    if (chunk.type == nullptr) {
        cursor.Stop(chunk.offset, Found(IssueCode::chunkUnknown, "chunk id", header.id,
                                        "that of a known chunk kind"));
    }
    if (cursor.Stopped()) {
        return;
    }
    cursor.SetPlace(
        {std::string(chunk.type->name) + " chunk", chunk.type, chunk.offset, file.chunks.size()});
    if (chunk.type->file != file.kind) {
        cursor.Report(chunk.offset, {IssueCode::chunkInOtherFile, "", KindName(file.kind),
                                     KindName(chunk.type->file)});
    }
    ReadBody(cursor, chunk);
    if (!cursor.Stopped()) {
        CheckAgainstOthers(cursor, file, meshes, chunk);
    }
    if (!cursor.Stopped()) {
        file.chunks.push_back(std::move(chunk));
        file.end = cursor.Offset();
    }
}

std::optional<File> ReadHeader(Cursor& cursor) {
    cursor.SetPlace({kHeader});
    cursor.Require(sizeof(KTAFileHeader));
    const auto header = cursor.Read<KTAFileHeader>();
    const std::string_view magic(header.magic, sizeof(header.magic));
    if (magic != kMagic) {
        cursor.Stop(offsetof(KTAFileHeader, magic),
                    {IssueCode::fileMagic, "magic", Quoted(magic), Quoted(kMagic)});
    }
    File file;
    file.version = {header.majorVersion, header.minorVersion};
    if (file.version != kVersion) {
        cursor.Stop(
            offsetof(KTAFileHeader, majorVersion),
            {IssueCode::fileVersion, "version", VersionText(file.version), VersionText(kVersion)});
    }
    if (header.kind > kFileKindActor) {
        cursor.Stop(offsetof(KTAFileHeader, kind), Found(IssueCode::fileKind, "file kind",
                                                         header.kind, "0 (motion) or 1 (actor)"));
    }
    if (cursor.Stopped()) {
        return std::nullopt;
    }
    file.kind = static_cast<KTAFileKind>(header.kind);
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

// How many bytes are left in a stream that can tell; 0 for another, which then is as it was.
std::size_t LeftIn(std::istream& stream) {
    const std::istream::pos_type here = stream.tellg();
    if (here == std::istream::pos_type(-1) || !stream.seekg(0, std::ios::end)) {
        stream.clear();
        return 0;
    }
    const std::istream::pos_type end = stream.tellg();
    stream.seekg(here);
    return end > here ? static_cast<std::size_t>(end - here) : 0;
}

// Appends up to `size` bytes; fewer only at the stream's end or when it fails.
void Append(std::istream& stream, std::size_t size, std::vector<std::uint8_t>& bytes) {
    const std::size_t old = bytes.size();
    bytes.resize(old + size);
    stream.read(reinterpret_cast<char*>(bytes.data() + old), static_cast<std::streamsize>(size));
    bytes.resize(old + static_cast<std::size_t>(stream.gcount()));
}

// What `read` gives, or why there is not the memory for it or the stream failed.
template <typename Function>
Reading Guarded(Function read) noexcept {
    Reading reading;
    try {
        reading = read();
    } catch (const std::bad_alloc&) {
        reading.inputError = kNoMemory;
        try {
            reading.inputError = "is too large for the memory there is";
        } catch (const std::bad_alloc&) {
            // The short text stays.
        }
    } catch (const std::exception&) {
        reading.inputError = "cannot be read";
    }
    return reading;
}

Reading ReadBytes(std::span<const std::uint8_t> bytes) {
    Reading reading;
    Cursor cursor(bytes, reading.faults);
    reading.file = ReadHeader(cursor);
    if (reading.file) {
        reading.file->size = bytes.size();
        MeshSizes meshes;
        while (!cursor.Stopped() && cursor.Left() > 0) {
            ReadChunk(cursor, meshes, *reading.file);
        }
    }
    return reading;
}

Reading ReadStream(std::istream& stream) {
    constexpr std::size_t kBlockSize = std::size_t{1} << 16;
    std::vector<std::uint8_t> bytes;
    errno = 0;
    Append(stream, sizeof(KTAFileHeader), bytes);
    // A file that is no KTA file is not read to its end, however long it is.
    if (!stream.bad() && ReadBytes(bytes).file) {
        // One byte more tells the end of a file of that size.
        for (std::size_t size = LeftIn(stream) + 1; stream; size = kBlockSize) {
            Append(stream, size, bytes);
        }
    }
    if (stream.bad()) {
        return Failed(SystemError("cannot be read"));
    }
    return ReadBytes(bytes);
}

Reading ReadPath(const std::string& path) {
    errno = 0;
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        return Failed(SystemError("cannot be opened"));
    }
    return ReadStream(stream);
}

Reading ReadPath(const std::string& path, KTAFileKind expected) {
    Reading reading = ReadPath(path);
    RequireKind(reading, expected);
    return reading;
}

}  // namespace

Reading Read(std::span<const std::uint8_t> bytes) noexcept {
    return Guarded([&] { return ReadBytes(bytes); });
}

Reading Read(std::istream& stream) noexcept {
    return Guarded([&] { return ReadStream(stream); });
}

Reading ReadFile(const std::string& path) noexcept {
    return Guarded([&] { return ReadPath(path); });
}

Reading ReadFile(const std::string& path, KTAFileKind expected) noexcept {
    return Guarded([&] { return ReadPath(path, expected); });
}

void RequireKind(Reading& reading, KTAFileKind expected) {
    if (reading.file && reading.file->kind != expected) {
        Cursor cursor({}, reading.faults);
        cursor.SetPlace({kHeader});
        cursor.Report(offsetof(KTAFileHeader, kind),
                      {IssueCode::fileOtherKind, "file kind", Quoted(KindName(reading.file->kind)),
                       Quoted(KindName(expected))});
    }
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
