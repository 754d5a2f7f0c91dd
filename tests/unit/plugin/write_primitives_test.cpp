#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "core/log.h"
#include "core/string.h"
#include "format/records.h"
#include "plugin/kta_exp.h"
#include "plugin/motion_pass.h"
#include "tests/support/kta_bytes.h"

namespace {

using support::Bytes;

// An exporter whose stream is a temporary file.
class StreamExporter : public KTAExp {
  public:
    StreamExporter() { file = std::tmpfile(); }
    ~StreamExporter() {
        if (file != nullptr) {
            std::fclose(file);
        }
    }
    void CloseStream() {
        std::fclose(file);
        file = nullptr;
    }
    std::string Written() {
        std::string bytes(static_cast<std::size_t>(Position()), '\0');
        std::rewind(file);
        EXPECT_EQ(std::fread(bytes.data(), 1, bytes.size(), file), bytes.size());
        return bytes;
    }
    long Position() { return std::ftell(file); }
};

class MotionFlag {
  public:
    explicit MotionFlag(Plinth::UInt8 value) { g_motionPass = value; }
    ~MotionFlag() { g_motionPass = 0; }
};

TEST(WritePrimitives, FileHeaderIsSevenBytesAndItsKindTheNegatedPassFlag) {
    {
        const MotionFlag flag(0);
        StreamExporter exporter;
        exporter.WriteFileHeader();
        EXPECT_EQ(exporter.Written(), std::string("KTA \x01\x01\x01", 7));
    }
    {
        const MotionFlag flag(1);
        StreamExporter exporter;
        exporter.WriteFileHeader();
        EXPECT_EQ(exporter.Written(), std::string("KTA \x01\x01\x00", 7));
    }
}

TEST(WritePrimitives, ChunkHeaderIsIdSizeVersion) {
    StreamExporter exporter;
    exporter.WriteChunkHeader(14, 1116, 1);
    EXPECT_EQ(exporter.Written(), std::string("\x0e\0\0\0\x5c\x04\0\0\x01\0\0\0", 12));
}

TEST(WritePrimitives, ChunkIsHeaderAndBody) {
    StreamExporter exporter;
    exporter.WriteChunk(7, 3, "abc", 2);
    EXPECT_EQ(exporter.Written(), Bytes().U32(7).U32(3).U32(2).Text("abc").Str());
}

TEST(WritePrimitives, RawBytesFollowWithoutPadding) {
    StreamExporter exporter;
    exporter.WriteRaw("a", 1);
    exporter.WriteRaw("bcd", 3);
    exporter.WriteRaw("", 0);
    EXPECT_EQ(exporter.Written(), "abcd");
}

class LineCounter : public Plinth::LogCallback {
  public:
    explicit LineCounter(int& lines) : lines_(lines) {}
    void Log(const Plinth::String&) override { ++lines_; }

  private:
    int& lines_;
};

TEST(WritePrimitives, DoNothingWithoutAStream) {
    int lines = 0;
    Plinth::GetLogManager().AddLogCallback(new LineCounter(lines));
    StreamExporter exporter;
    exporter.CloseStream();
    const KTAKeyTrack track = {};
    exporter.WriteFileHeader();
    exporter.WriteChunkHeader(1, 2, 3);
    exporter.WriteChunk(1, sizeof(track), &track, 3);
    exporter.WriteRaw(&track, sizeof(track));
    const fpos_t position = exporter.ChunkPosition();
    const fpos_t nowhere = {};
    EXPECT_EQ(std::memcmp(&position, &nowhere, sizeof(position)), 0);
    exporter.PatchChunk(position, 1, 8, 2, &track, sizeof(track));
    Plinth::GetLogManager().ClearLogCallbacks();
    EXPECT_EQ(lines, 0);
}

TEST(WritePrimitives, PatchingRewritesHeaderAndBeginningAndReturnsToTheEnd) {
    StreamExporter exporter;
    exporter.WriteRaw("before", 6);
    const fpos_t position = exporter.ChunkPosition();
    KTAKeyTrack track = {0, 'L', 'P', {0, 0}};
    exporter.WriteChunk(kChunkKeyTrack, sizeof(track), &track, kKeyTrackKeyframed);
    exporter.WriteRaw("keys", 4);
    track.keyCount = 5;
    exporter.PatchChunk(position, kChunkKeyTrack, sizeof(track), kKeyTrackKeyframed, &track,
                        sizeof(track));
    exporter.WriteRaw("after", 5);
    EXPECT_EQ(exporter.Written(), Bytes()
                                      .Text("before")
                                      .U32(2)
                                      .U32(8)  // of a track of five keys, too
                                      .U32(2)
                                      .U32(5)
                                      .Text("LP")
                                      .U8(0)
                                      .U8(0)
                                      .Text("keysafter")
                                      .Str());
}

TEST(ChunkTypes, IdsAndVersionsAreTheFormats) {
    const struct {
        unsigned id, version;
        int file;
    } expected[] = {{0, 3, 1}, {1, 2, 0}, {2, 2, 0},  {3, 3, 1},  {4, 1, 1}, {6, 2, 1},
                    {7, 3, 1}, {8, 1, 1}, {10, 3, 1}, {14, 1, 1}, {15, 1, 1}};
    ASSERT_EQ(kNumChunkTypes, 11);
    for (const auto& row : expected) {
        const KTAChunkType* type = FindChunkType(row.id);
        ASSERT_NE(type, nullptr) << row.id;
        EXPECT_EQ(type->version, row.version) << row.id;
        EXPECT_EQ(type->file, row.file) << row.id;
    }
    for (const unsigned never : {5u, 9u, 11u, 12u, 13u, 16u}) {
        EXPECT_EQ(FindChunkType(never), nullptr) << never;
    }
}

TEST(Records, SampledTrackSizesAreExact) {
    // 8 + 16 for each position or scale key, 8 + 20 for each rotation key.
    EXPECT_EQ(sizeof(KTAKeyTrack) + 3 * sizeof(KTARotationSample), 68u);
    EXPECT_EQ(sizeof(KTAKeyTrack) + 3 * sizeof(KTAVectorSample), 56u);
}

TEST(Records, FieldsStandAtTheirOffsets) {
    EXPECT_EQ(offsetof(KTANode, translation), 520u);
    EXPECT_EQ(offsetof(KTANode, rotation), 532u);
    EXPECT_EQ(offsetof(KTANode, scale), 548u);
    EXPECT_EQ(offsetof(KTANode, inverseWorldMatrix), 560u);
    EXPECT_EQ(offsetof(KTANode, isBone), 624u);
    EXPECT_EQ(offsetof(KTANode, hasHelperSize), 625u);
    EXPECT_EQ(offsetof(KTANode, helperSize), 628u);
    EXPECT_EQ(offsetof(KTAMotionPart, scale), 288u);
    EXPECT_EQ(offsetof(KTAKeyHead, axisMask), 16u);
    EXPECT_EQ(offsetof(KTAMesh, isCollision), 24u);
    EXPECT_EQ(offsetof(KTAMaterial, shininess), 88u);
    EXPECT_EQ(offsetof(KTAMaterial, transparencyType), 106u);
    EXPECT_EQ(offsetof(KTAMaterialLayer, parentMaterial), 262u);
    EXPECT_EQ(offsetof(KTAMaterialLayer, rotationAngle), 284u);
    EXPECT_EQ(offsetof(KTAJointLimits, rotationMaximum), 40u);
    EXPECT_EQ(offsetof(KTAJointLimits, positionLimited), 76u);
    EXPECT_EQ(offsetof(KTAJointLimits, at84), 84u);
    EXPECT_EQ(offsetof(KTAMorphChannel, at276), 276u);
    EXPECT_EQ(offsetof(KTAMorphPoints, maximum), 268u);
    EXPECT_EQ(offsetof(KTAWire, secondVariable), 1040u);
    EXPECT_EQ(offsetof(KTAWire, firstVariable), 1060u);
    EXPECT_EQ(offsetof(KTAWire, firstWeight), 1096u);
    EXPECT_EQ(offsetof(KTAWire, linkKind), 1112u);
    EXPECT_EQ(offsetof(KTAIKChain, at780), 780u);
    EXPECT_EQ(offsetof(KTAIKChain, solverNode), 781u);
    EXPECT_EQ(offsetof(KTAIKChain, at1044), 1044u);
    EXPECT_EQ(offsetof(KTAIKChain, at1048), 1048u);
    EXPECT_EQ(offsetof(KTAIKChain, at1052), 1052u);
}

}  // namespace
