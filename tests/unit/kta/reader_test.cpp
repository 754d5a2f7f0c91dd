#include "kta/reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <sstream>

#include "tests/unit/kta/sample_file.h"

namespace {

using sample::Bytes;
using sample::Kind;
using sample::Writer;

constexpr std::size_t kNodeChunk = 644;  // header and body

// Reads from a heap block of exactly the file's size, so that the sanitizers see any read past it.
kta::Reading ReadExact(const Bytes& bytes) {
    const auto block = std::make_unique<std::uint8_t[]>(bytes.size());
    if (!bytes.empty()) {
        std::memcpy(block.get(), bytes.data(), bytes.size());
    }
    return kta::Read(std::span<const std::uint8_t>(block.get(), bytes.size()));
}

const kta::Node& NodeOf(const kta::Reading& reading, std::size_t chunk) {
    return std::get<kta::Node>(reading.file.value().chunks.at(chunk).body);
}

// The file's only fault as it is printed.
std::string OnlyFault(const Bytes& bytes) {
    const auto lines = kta::FaultLines("f", ReadExact(bytes));
    EXPECT_EQ(lines.size(), 1u);
    return lines.empty() ? "" : lines[0];
}

Bytes Patched(Bytes bytes, std::size_t offset, std::initializer_list<std::uint8_t> values) {
    std::copy(values.begin(), values.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    return bytes;
}

// ---------------------------------------------------------------- whole files

TEST(ReaderTest, MotionFileWithoutAnimationIsSevenBytes) {
    Writer writer;
    AddHeader(writer, Kind::motion);
    ASSERT_EQ(writer.bytes.size(), 7u);
    const kta::Reading reading = ReadExact(writer.bytes);
    EXPECT_TRUE(reading.Good());
    ASSERT_TRUE(reading.file);
    EXPECT_EQ(reading.file->kind, kFileKindMotion);
    EXPECT_EQ(reading.file->version, (std::array<std::uint8_t, 2>{1, 1}));
    EXPECT_TRUE(reading.file->chunks.empty());
    EXPECT_EQ(reading.file->size, 7u);
    EXPECT_EQ(reading.file->end, 7u);
}

TEST(ReaderTest, KindByteTellsActorFromMotion) {
    Writer writer;
    AddHeader(writer, Kind::actor);
    EXPECT_EQ(writer.bytes[6], 1);
    const kta::Reading reading = ReadExact(writer.bytes);
    EXPECT_TRUE(reading.Good());
    ASSERT_TRUE(reading.file);
    EXPECT_EQ(reading.file->kind, kFileKindActor);
    EXPECT_STREQ(kta::KindName(kFileKindActor), "actor");
    EXPECT_STREQ(kta::KindName(kFileKindMotion), "motion");
}

TEST(ReaderTest, NodeFieldsComeFromTheirOffsets) {
    const sample::Node node = sample::DistinctNode();
    const kta::Reading reading = ReadExact(sample::ActorFile({node}));
    ASSERT_TRUE(reading.Good());
    const kta::Chunk& chunk = reading.file.value().chunks.at(0);
    EXPECT_EQ(chunk.type->id, kChunkNode);
    EXPECT_STREQ(chunk.type->name, "node");
    EXPECT_EQ(chunk.offset, 7u);
    EXPECT_EQ(chunk.size, 632u);
    EXPECT_EQ(chunk.version, 3u);
    const kta::Node& read = NodeOf(reading, 0);
    EXPECT_EQ(read.nodeName, node.name);
    EXPECT_EQ(read.parentName, "scene root");  // another case than the scene root's own name
    EXPECT_EQ(read.translation, (std::array<float, 3>{1, 3, 2}));
    EXPECT_EQ(read.rotation, node.rotation);
    EXPECT_EQ(read.scale, node.scale);
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            EXPECT_EQ(read.inverseWorldMatrix[row][column], node.matrix[row * 4 + column]);
        }
        EXPECT_EQ(read.inverseWorldMatrix[row][3], 0);
    }
    EXPECT_TRUE(read.isBone);
    EXPECT_TRUE(read.hasHelperSize);
    EXPECT_EQ(read.helperSize, 12.5f);
}

// The body's layout once more, as bytes written by hand at absolute positions.
TEST(ReaderTest, NodeBodyOffsets) {
    Bytes bytes = sample::ActorFile({{}});
    const std::size_t body = 7 + 12;
    const auto putOne = [&](std::size_t offset) {
        bytes = Patched(bytes, body + offset, {0x00, 0x00, 0x80, 0x3f});  // 1.0f
    };
    bytes = Patched(bytes, body + 0, {'N', 0});
    bytes = Patched(bytes, body + 260, {'P', 0});
    putOne(520 + 8);
    putOne(532 + 4);
    putOne(560 + 4 * 13);
    bytes = Patched(bytes, body + 625, {1});
    bytes = Patched(bytes, body + 628, {0x00, 0x00, 0x20, 0xc1});  // -10.0f
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_TRUE(reading.Good());
    const kta::Node& node = NodeOf(reading, 0);
    EXPECT_EQ(node.nodeName, "N");
    EXPECT_EQ(node.parentName, "P");
    EXPECT_EQ(node.translation, (std::array<float, 3>{0, 0, 1}));
    EXPECT_EQ(node.rotation, (std::array<float, 4>{0, 1, 0, 1}));
    EXPECT_EQ(node.inverseWorldMatrix[3], (std::array<float, 4>{0, 1, 0, 0}));
    EXPECT_FALSE(node.isBone);
    EXPECT_TRUE(node.hasHelperSize);
    EXPECT_EQ(node.helperSize, -10.0f);
}

TEST(ReaderTest, ChunksFollowOneAnotherWithoutPadding) {
    const kta::Reading reading =
        ReadExact(sample::ActorFile({{.name = "a"}, {.name = "b", .parentName = "a"}}));
    ASSERT_TRUE(reading.Good());
    ASSERT_EQ(reading.file->chunks.size(), 2u);
    EXPECT_EQ(reading.file->chunks[1].offset, 7 + kNodeChunk);
    EXPECT_EQ(NodeOf(reading, 1).nodeName, "b");
    EXPECT_EQ(NodeOf(reading, 1).parentName, "a");
    EXPECT_EQ(reading.file->end, 7 + 2 * kNodeChunk);
}

TEST(ReaderTest, TextEndsAtItsNulAndMayFillItsField) {
    const std::string longest(259, 'x');
    const kta::Reading full = ReadExact(sample::ActorFile({{.name = longest}}));
    EXPECT_TRUE(full.Good());
    EXPECT_EQ(NodeOf(full, 0).nodeName, longest);

    // What stands behind a NUL and in padding means nothing.
    Bytes bytes = sample::ActorFile({{.name = "ab"}});
    bytes = Patched(bytes, 7 + 12 + 3, {'z', 0xff, 7});
    bytes = Patched(bytes, 7 + 12 + 626, {9, 9});
    const kta::Reading reading = ReadExact(bytes);
    EXPECT_TRUE(reading.Good());
    EXPECT_EQ(NodeOf(reading, 0).nodeName, "ab");
}

TEST(ReaderTest, FloatsKeepTheirBits) {
    sample::Node node;
    node.translation = {-0.0f, std::numeric_limits<float>::infinity(), 1e-45f};
    node.helperSize = std::numeric_limits<float>::quiet_NaN();
    const kta::Reading reading = ReadExact(sample::ActorFile({node}));
    ASSERT_TRUE(reading.file);
    const kta::Node& read = NodeOf(reading, 0);
    EXPECT_TRUE(std::signbit(read.translation[0]));
    EXPECT_EQ(read.translation[1], node.translation[1]);
    EXPECT_EQ(read.translation[2], 1e-45f);
    EXPECT_TRUE(std::isnan(read.helperSize));
}

// ---------------------------------------------------------------- faults

TEST(ReaderFaultTest, Magic) {
    const Bytes file = sample::ActorFile({});
    EXPECT_EQ(OnlyFault(Patched(file, 0, {'P', 'K', 3, '"'})),
              "f: offset 0: header: magic is \"PK\\x03\\x22\", expected \"KTA \"");
    EXPECT_EQ(OnlyFault(Patched(file, 3, {0})),
              "f: offset 0: header: magic is \"KTA\\x00\", expected \"KTA \"");
    EXPECT_FALSE(ReadExact(Patched(file, 3, {0})).file);
}

TEST(ReaderFaultTest, FileVersion) {
    const Bytes file = sample::ActorFile({});
    EXPECT_EQ(OnlyFault(Patched(file, 4, {2})),
              "f: offset 4: header: version is 2.1, expected 1.1");
    EXPECT_EQ(OnlyFault(Patched(file, 5, {0})),
              "f: offset 4: header: version is 1.0, expected 1.1");
}

TEST(ReaderFaultTest, FileKind) {
    const kta::Reading reading = ReadExact(Patched(sample::ActorFile({}), 6, {2}));
    EXPECT_FALSE(reading.file);
    ASSERT_EQ(reading.faults.size(), 1u);
    EXPECT_EQ(reading.faults[0].offset, 6u);
    EXPECT_EQ(reading.faults[0].where, "header");
    EXPECT_EQ(reading.faults[0].text, "file kind is 2, expected 0 (motion) or 1 (actor)");
}

TEST(ReaderFaultTest, UnknownChunkIds) {
    for (const std::uint32_t id : {5u, 9u, 11u, 12u, 13u, 16u, 0xffffffffu}) {
        Writer writer;
        AddChunkHeader(AddHeader(writer, Kind::actor), id, 0, 1);
        EXPECT_EQ(OnlyFault(writer.bytes), "f: offset 7: chunk header: chunk id is " +
                                               std::to_string(id) +
                                               ", expected that of a known chunk kind");
    }
}

TEST(ReaderFaultTest, VersionsOfEveryKind) {
    const struct {
        std::uint32_t id;
        const char* name;
        std::vector<std::uint32_t> versions;
        const char* expected;
    } kinds[] = {{0, "node", {3}, "3"},
                 {1, "motion part", {2}, "2"},
                 {2, "key track", {1, 2}, "1 or 2"},
                 {3, "mesh", {3}, "3"},
                 {4, "skinning weights", {1}, "1"},
                 {6, "material", {2}, "2"},
                 {7, "material layer", {3}, "3"},
                 {8, "joint limits", {1}, "1"},
                 {10, "morph", {3}, "3"},
                 {14, "parameter wiring", {1}, "1"},
                 {15, "IK chain", {1}, "1"}};
    for (const auto& [id, name, versions, expected] : kinds) {
        for (std::uint32_t version = 0; version < 5; ++version) {
            Writer writer;
            AddHeader(writer, id == 1 || id == 2 ? Kind::motion : Kind::actor);
            AddChunkHeader(writer, id, 0, version);
            const std::string text = std::string("f: offset 15: ") + name + " chunk: version is " +
                                     std::to_string(version) + ", expected " + expected;
            const bool known =
                std::find(versions.begin(), versions.end(), version) != versions.end();
            EXPECT_EQ(OnlyFault(writer.bytes) != text, known) << text;
        }
    }
}

TEST(ReaderFaultTest, WhatStandsBeforeTheFaultIsKept) {
    Writer writer;
    AddNode(AddHeader(writer, Kind::actor), {});
    AddChunkHeader(writer, 4, 0, 1);
    const kta::Reading reading = ReadExact(writer.bytes);
    EXPECT_FALSE(reading.Good());
    ASSERT_TRUE(reading.file);
    EXPECT_EQ(reading.file->chunks.size(), 1u);
    EXPECT_EQ(reading.file->end, 7 + kNodeChunk);
    EXPECT_EQ(reading.file->size, 7 + kNodeChunk + 12);
}

TEST(ReaderFaultTest, NodeChunkInMotionFileIsReadAllTheSame) {
    const Bytes bytes = Patched(sample::ActorFile({{}, {}}), 6, {0});
    const kta::Reading reading = ReadExact(bytes);
    const auto lines = kta::FaultLines("f", reading);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0],
              "f: offset 7: node chunk: stands in a file of the kind \"motion\", expected only in "
              "\"actor\"");
    EXPECT_EQ(reading.faults[1].offset, 7 + kNodeChunk);
    EXPECT_EQ(reading.file.value().chunks.size(), 2u);
}

TEST(ReaderFaultTest, NodeVersionAndSize) {
    const Bytes file = sample::ActorFile({{}});
    EXPECT_EQ(OnlyFault(Patched(file, 15, {2})),
              "f: offset 15: node chunk: version is 2, expected 3");
    EXPECT_EQ(OnlyFault(Patched(file, 11, {0x77})),
              "f: offset 11: node chunk: size is 631, expected 632");
    EXPECT_EQ(OnlyFault(Patched(file, 11, {0xff, 0xff, 0xff, 0xff})),
              "f: offset 11: node chunk: size is 4294967295, expected 632");
    EXPECT_TRUE(ReadExact(Patched(file, 15, {2})).file.value().chunks.empty());
}

TEST(ReaderFaultTest, TextsWithoutNul) {
    Bytes bytes = sample::ActorFile({{}, {.name = "next"}});
    std::fill_n(bytes.begin() + 19, 520, std::uint8_t{'n'});
    const kta::Reading reading = ReadExact(bytes);
    const auto lines = kta::FaultLines("f", reading);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0],
              "f: offset 19: node chunk: node name has no NUL in its 260 bytes, expected one");
    EXPECT_EQ(lines[1],
              "f: offset 279: node chunk: parent name has no NUL in its 260 bytes, expected one");
    EXPECT_EQ(NodeOf(reading, 0).nodeName, std::string(260, 'n'));
    EXPECT_EQ(NodeOf(reading, 1).nodeName, "next");
}

TEST(ReaderFaultTest, FlagBytes) {
    const Bytes file = sample::ActorFile({{}});
    EXPECT_EQ(OnlyFault(Patched(file, 19 + 624, {2})),
              "f: offset 643: node chunk: bone flag is 2, expected 0 or 1");
    EXPECT_EQ(OnlyFault(Patched(file, 19 + 625, {255})),
              "f: offset 644: node chunk: helper-size flag is 255, expected 0 or 1");
    EXPECT_TRUE(NodeOf(ReadExact(Patched(file, 19 + 624, {2})), 0).isBone);
}

TEST(ReaderFaultTest, NumbersThatAreNotFinite) {
    const Bytes file = sample::ActorFile({{}});
    const struct {
        std::size_t offset;
        const char* what;
    } rows[] = {{520, "translation"},
                {536, "rotation"},
                {556, "scale"},
                {560, "inverse world matrix"},
                {620, "inverse world matrix"},
                {628, "helper size"}};
    for (const auto& [offset, what] : rows) {
        for (const std::uint8_t last : {0x7f, 0xff}) {  // inf and -inf; with a 1 before, NaN
            for (const std::uint8_t first : {0, 1}) {
                EXPECT_EQ(OnlyFault(Patched(file, 19 + offset, {first, 0, 0x80, last})),
                          "f: offset " + std::to_string(19 + offset) + ": node chunk: " + what +
                              " is not a finite number");
            }
        }
    }
}

// ---------------------------------------------------------------- cut and damaged files

// What a file of two nodes says when only its first `length` bytes are there.
std::string ExpectedCut(std::size_t length) {
    const auto cut = [](std::size_t offset, const char* where, std::size_t size,
                        std::size_t there) {
        return "f: offset " + std::to_string(offset) + ": " + where +
               "cut off: " + std::to_string(size) + " bytes expected, " + std::to_string(there) +
               " are there";
    };
    if (length < 7) {
        return cut(0, "header: ", 7, length);
    }
    const std::size_t chunk = 7 + (length - 7) / kNodeChunk * kNodeChunk;
    const std::size_t there = length - chunk;
    if (there == 0) {
        return "";
    }
    return there < 12 ? cut(chunk, "chunk header: ", 12, there)
                      : cut(chunk + 12, "node chunk: body ", 632, there - 12);
}

TEST(ReaderTruncationTest, EveryPrefixNamesWhereItEnds) {
    const Bytes file = sample::ActorFile({sample::DistinctNode(), {}});
    for (std::size_t length = 0; length <= file.size(); ++length) {
        const auto end = file.begin() + static_cast<std::ptrdiff_t>(length);
        const auto lines = kta::FaultLines("f", ReadExact(Bytes(file.begin(), end)));
        const std::string expected = ExpectedCut(length);
        ASSERT_EQ(lines.size(), expected.empty() ? 0u : 1u) << length;
        if (!lines.empty()) {
            ASSERT_EQ(lines[0], expected);
        }
    }
}

TEST(ReaderTruncationTest, OneByteTooManyIsACutChunkHeader) {
    Bytes bytes = sample::ActorFile({{}});
    bytes.push_back(0);
    EXPECT_EQ(OnlyFault(bytes),
              "f: offset 651: chunk header: cut off: 12 bytes expected, 1 are there");
}

// Whatever the bytes are: no read outside them, offsets inside the file, and chunks that lie one
// behind the other.
TEST(ReaderMutationTest, DamagedFilesAreReportedInBounds) {
    const Bytes file = sample::ActorFile({sample::DistinctNode(), {}, {.isBone = 1}});
    std::mt19937 random(20120317);
    int faulty = 0;
    for (int round = 0; round < 20000; ++round) {
        Bytes bytes = file;
        for (auto count = random() % 8 + 1; count > 0; --count) {
            // Half of the changes go where structure stands.
            const std::size_t chunk = 7 + kNodeChunk * (random() % 3);
            const std::size_t offset =
                random() % 2 == 0 ? random() % bytes.size() : chunk + random() % 12;
            bytes[offset] = static_cast<std::uint8_t>(random());
        }
        bytes.resize(random() % 4 == 0 ? random() % (bytes.size() + 1) : bytes.size());
        const kta::Reading reading = ReadExact(bytes);
        for (const kta::Fault& fault : reading.faults) {
            ASSERT_LE(fault.offset, bytes.size());
            ASSERT_FALSE(fault.where.empty());
            ASSERT_FALSE(fault.text.empty());
        }
        faulty += reading.Good() ? 0 : 1;
        if (reading.file) {
            ASSERT_EQ(reading.file->size, bytes.size());
            ASSERT_EQ(reading.file->end, 7 + kNodeChunk * reading.file->chunks.size());
            ASSERT_TRUE(!reading.Good() || reading.file->end == bytes.size());
        }
    }
    EXPECT_GT(faulty, 1000);
    EXPECT_LT(faulty, 20000);
}

// ---------------------------------------------------------------- streams and files

// Hands out one byte at a time, and counts them.
class Trickle : public std::streambuf {
  public:
    explicit Trickle(Bytes bytes) : bytes_(std::move(bytes)) {}
    std::size_t Taken() const { return next_; }

  protected:
    int_type underflow() override {
        if (next_ == bytes_.size()) {
            return traits_type::eof();
        }
        current_ = static_cast<char>(bytes_[next_++]);
        setg(&current_, &current_, &current_ + 1);
        return traits_type::to_int_type(current_);
    }

  private:
    Bytes bytes_;
    std::size_t next_ = 0;
    char current_ = 0;
};

TEST(ReaderStreamTest, StreamAndMemoryGiveTheSame) {
    const Bytes bytes = sample::ActorFile(std::vector<sample::Node>(300, sample::DistinctNode()));
    ASSERT_GT(bytes.size(), std::size_t{1} << 16);
    Trickle trickle(bytes);
    std::istream stream(&trickle);
    const kta::Reading reading = kta::Read(stream);
    ASSERT_TRUE(reading.Good());
    EXPECT_EQ(reading.file->size, bytes.size());
    EXPECT_EQ(reading.file->chunks.size(), 300u);
    EXPECT_EQ(NodeOf(reading, 299).nodeName, sample::DistinctNode().name);
}

TEST(ReaderStreamTest, OtherFilesAreNotReadToTheirEnd) {
    Trickle trickle(Bytes(1000000, 'x'));
    std::istream stream(&trickle);
    const kta::Reading reading = kta::Read(stream);
    ASSERT_EQ(reading.faults.size(), 1u);
    EXPECT_EQ(reading.faults[0].text, "magic is \"xxxx\", expected \"KTA \"");
    EXPECT_EQ(trickle.Taken(), 7u);
}

TEST(ReaderStreamTest, EmptyStream) {
    std::istringstream stream;
    EXPECT_EQ(
        kta::FaultLines("f", kta::Read(stream)),
        std::vector<std::string>{"f: offset 0: header: cut off: 7 bytes expected, 0 are there"});
}

TEST(ReaderStreamTest, FileOnDisk) {
    const std::string path = sample::Save("on_disk", sample::ActorFile({sample::DistinctNode()}));
    const kta::Reading reading = kta::ReadFile(path);
    EXPECT_TRUE(reading.Good());
    EXPECT_EQ(NodeOf(reading, 0).nodeName, sample::DistinctNode().name);
}

TEST(ReaderStreamTest, MissingFileAndDirectory) {
    const kta::Reading missing = kta::ReadFile(sample::ScratchPath("missing"));
    EXPECT_FALSE(missing.Good());
    EXPECT_FALSE(missing.file);
    EXPECT_TRUE(missing.inputError.starts_with("cannot be opened (")) << missing.inputError;
    const auto lines = kta::FaultLines("gone", missing);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], "gone: " + missing.inputError);

    const kta::Reading directory = kta::ReadFile(KTA_SCRATCH);
    EXPECT_FALSE(directory.Good());
    EXPECT_TRUE(directory.inputError.starts_with("cannot be ")) << directory.inputError;
}

}  // namespace
