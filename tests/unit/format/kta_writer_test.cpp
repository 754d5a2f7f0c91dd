#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "core/log.h"
#include "core/string.h"
#include "format/kta_writer.h"
#include "format/records.h"
#include "tests/support/kta_bytes.h"
#include "tests/support/temporary_directory.h"

namespace {

using support::Bytes;

// A writer whose file can be read.
class OpenWriter : public KTAWriter {
  public:
    OpenWriter() { EXPECT_TRUE(Open(path_.c_str())); }

    const std::string& Path() const { return path_; }
    std::string Written() {
        Close();
        return support::ReadFile(path_);
    }

  private:
    support::TemporaryDirectory directory_;
    const std::string path_ = directory_.PathOf("file");
};

TEST(KTAWriter, FileHeaderIsSevenBytesWithItsKind) {
    OpenWriter actor;
    actor.WriteFileHeader(kFileKindActor);
    EXPECT_EQ(actor.Written(), std::string("KTA \x01\x01\x01", 7));
}

TEST(KTAWriter, MotionFilesAreOfKindZero) {
    OpenWriter motion;
    motion.WriteFileHeader(kFileKindMotion);
    EXPECT_EQ(motion.Written(), std::string("KTA \x01\x01\x00", 7));
}

TEST(KTAWriter, ChunkHeaderIsIdSizeVersion) {
    OpenWriter writer;
    writer.WriteChunkHeader(14, 1116, 1);
    EXPECT_EQ(writer.Written(), std::string("\x0e\0\0\0\x5c\x04\0\0\x01\0\0\0", 12));
}

TEST(KTAWriter, ChunkIsHeaderAndBody) {
    OpenWriter writer;
    writer.WriteChunk(7, 3, "abc", 2);
    EXPECT_EQ(writer.Written(), Bytes().U32(7).U32(3).U32(2).Text("abc").Str());
}

TEST(KTAWriter, RecordsNameIdAndVersionOfTheirChunk) {
    OpenWriter writer;
    const KTAWeights head = {9};
    writer.WriteChunk(head);
    writer.BeginChunk(head, 77);
    writer.WriteRecord(head);
    const std::string expected = Bytes().U32(4).U32(4).U32(1).U32(9).Str() +
                                 Bytes().U32(4).U32(77).U32(1).U32(9).U32(9).Str();
    EXPECT_EQ(writer.Written(), expected);
}

TEST(KTAWriter, RawBytesFollowWithoutPadding) {
    OpenWriter writer;
    writer.WriteRaw("a", 1);
    writer.WriteRaw("bcd", 3);
    writer.WriteRaw("", 0);
    EXPECT_EQ(writer.Written(), "abcd");
}

TEST(KTAWriter, OpeningEmptiesAFormerFileAndClosesTheLastOne) {
    OpenWriter writer;
    writer.WriteRaw("former", 6);
    EXPECT_TRUE(writer.Open(writer.Path().c_str()));
    writer.WriteRaw("new", 3);
    EXPECT_EQ(writer.Written(), "new");
    EXPECT_FALSE(writer.Open((writer.Path() + "/file").c_str()));
}

class LineCounter : public Plinth::LogCallback {
  public:
    explicit LineCounter(int& lines) : lines_(lines) {}
    void Log(const Plinth::String&) override { ++lines_; }

  private:
    int& lines_;
};

TEST(KTAWriter, DoesNothingWithoutAFile) {
    int lines = 0;
    Plinth::GetLogManager().AddLogCallback(new LineCounter(lines));
    KTAWriter writer;
    const KTAKeyTrack track = {};
    writer.WriteFileHeader(kFileKindActor);
    writer.WriteChunkHeader(1, 2, 3);
    writer.WriteChunk(1, sizeof(track), &track, 3);
    writer.WriteChunk(KTAMotionPart());
    writer.WriteRaw(&track, sizeof(track));
    const std::string large(100000, 'x');
    writer.WriteRaw(large.data(), large.size());
    writer.Flush();
    writer.Close();
    Plinth::GetLogManager().ClearLogCallbacks();
    EXPECT_EQ(lines, 0);
}

// However the writes fall onto the pieces in which the file gets them.
TEST(KTAWriter, ManyWritesFollowOneAnother) {
    for (const std::size_t size : {1u, 7u, 4096u, 65535u, 65536u, 65537u, 200000u}) {
        OpenWriter writer;
        std::string expected;
        for (int i = 0; expected.size() < 300000; ++i) {
            const std::string piece(size, static_cast<char>('a' + i % 26));
            writer.WriteRaw(piece.data(), piece.size());
            writer.WriteRaw("-", 1);
            expected += piece + "-";
        }
        EXPECT_TRUE(writer.Written() == expected) << size;
    }
}

TEST(KTAWriter, FlushPutsIntoTheFileWhatWasWritten) {
    OpenWriter writer;
    writer.WriteRaw("abc", 3);
    writer.Flush();
    EXPECT_EQ(support::ReadFile(writer.Path()), "abc");
    writer.WriteRaw("d", 1);
    EXPECT_EQ(writer.Written(), "abcd");
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
