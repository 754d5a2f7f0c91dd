#include "tests/unit/kta/sample.h"

namespace {

using namespace sample;

constexpr std::size_t kTrack = 7 + 312;          // of the chunk behind one motion part
constexpr std::size_t kTrackBody = kTrack + 12;  // its body
constexpr std::size_t kFirstKey = kTrackBody + 8;

std::string Sampled(char letter, const std::vector<SampleFields>& samples) {
    return kMotion + PosedPart("Box01") + SampledTrack(letter, samples);
}

std::string Keyframed(char letter, const std::vector<std::string>& keyRecords) {
    return kMotion + PosedPart("Box01") + KeyframedTrack(letter, keyRecords);
}

// At a time, with every axis, all zero and linear.
std::string PlainKey(float time) {
    return KeyRecord(time, {0, 0, 0});
}

const kta::KeyTrack& TrackOf(const kta::Reading& reading, std::size_t chunk = 1) {
    return BodyOf<kta::KeyTrack>(reading, chunk);
}

std::string TrackFault(std::size_t offset, const std::string& text) {
    return FaultLine(offset, "key track", text);
}

// ---------------------------------------------------------------- layout

TEST(MotionReaderTest, MotionPart) {
    const std::string bytes = kMotion + PosedPart("Box01");
    ASSERT_EQ(bytes.size(), kTrack);
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_TRUE(reading.Good());
    const kta::Chunk& chunk = reading.file->chunks.at(0);
    EXPECT_EQ(chunk.type->id, kChunkMotionPart);
    EXPECT_EQ(chunk.size, 300u);
    EXPECT_EQ(chunk.version, 2u);
    const auto& part = BodyOf<KTAMotionPart>(reading);
    EXPECT_EQ(kta::TextOf(part.nodeName), "Box01");
    EXPECT_EQ(ListOf(part.translation), (std::vector<float>{1, 3, 2}));
    EXPECT_EQ(ListOf(part.rotation), (std::vector<float>{0.5f, -0.5f, 0.25f, 0.75f}));
    EXPECT_EQ(ListOf(part.scale), (std::vector<float>{4, 6, 5}));
}

// Keys at 0, 40, 80 and 100 of 100 ticks a second.
TEST(MotionReaderTest, SampledTracks) {
    const std::vector<SampleFields> keys = {
        {0, {1, 2, 3}}, {0.4f, {4, 5, 6}}, {0.8f, {7, 8, 9}}, {1, {10, 11, 12}}};
    for (const char letter : {'P', 'S'}) {
        const kta::Reading reading = ReadExact(Sampled(letter, keys));
        ASSERT_TRUE(reading.Good());
        EXPECT_EQ(reading.file->chunks[1].size, 72u);
        const kta::KeyTrack& track = TrackOf(reading);
        EXPECT_EQ(track.head.trackLetter, letter);
        EXPECT_EQ(track.head.interpolation, 'L');
        EXPECT_EQ(track.head.keyCount, 4u);
        ASSERT_EQ(track.vectorSamples.size(), 4u);
        EXPECT_TRUE(track.rotationSamples.empty() && track.keyframedKeys.empty());
        EXPECT_EQ(track.vectorSamples[1].time, 0.4f);
        EXPECT_EQ(ListOf(track.vectorSamples[3].values), (std::vector<float>{10, 11, 12}));
    }
    const kta::Reading reading = ReadExact(Sampled(
        'R', {{0, {1, 2, 3, 4}}, {0.4f, {0, 0, 0, 1}}, {0.8f, {0, 0, 0, 1}}, {1, {5, 6, 7, 8}}}));
    ASSERT_TRUE(reading.Good());
    EXPECT_EQ(reading.file->chunks[1].size, 88u);
    EXPECT_EQ(ListOf(TrackOf(reading).rotationSamples.at(3).values),
              (std::vector<float>{5, 6, 7, 8}));
}

TEST(MotionReaderTest, DeclaredSizes) {
    const std::vector<SampleFields> three = {{0, {1, 1, 1}}, {1, {1, 1, 1}}, {2, {1, 1, 1}}};
    EXPECT_EQ(ReadExact(Sampled('P', three)).file->chunks.at(1).size, 56u);
    EXPECT_EQ(ReadExact(Sampled('S', three)).file->chunks.at(1).size, 56u);
    const std::vector<SampleFields> turns = {
        {0, {0, 0, 0, 1}}, {1, {0, 0, 0, 1}}, {2, {0, 0, 0, 1}}};
    EXPECT_EQ(ReadExact(Sampled('R', turns)).file->chunks.at(1).size, 68u);
    const kta::Reading reading = ReadExact(
        Keyframed('P', {PlainKey(0), PlainKey(1), PlainKey(2), PlainKey(3), PlainKey(4)}));
    ASSERT_TRUE(reading.Good());
    EXPECT_EQ(reading.file->chunks.at(1).size, 8u);
    EXPECT_EQ(TrackOf(reading).keyframedKeys.size(), 5u);
    EXPECT_EQ(reading.file->end, kFirstKey + 5 * 26);
}

// A sampled track ends with its last time, which stands twice when it is on the grid.
TEST(MotionReaderTest, LastTimeTwice) {
    EXPECT_TRUE(
        ReadExact(Sampled('P', {{0, {1, 2, 3}}, {0.8f, {4, 5, 6}}, {0.8f, {4, 5, 6}}})).Good());
    EXPECT_TRUE(ReadExact(Sampled('P', {{-1, {1, 2, 3}}})).Good());
}

// Keys of x at 0 and 10, of y at 5, of z nowhere: the first record has all axes, the value of y
// with it; those whose key is not of that time have tangent code 1.
TEST(MotionReaderTest, CurvesOfDifferentTimes) {
    const std::string bytes =
        Keyframed('P', {KeyRecord(0, {1, 2, 0}, 7, {3, 1, 1, 4, 1, 1}),
                        KeyRecord(10, {3, 0, 0}, 1, {5, 1, 1, 3, 1, 1}, {{0.5f, -2}})});
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_TRUE(reading.Good()) << FaultsOf(bytes)[0];
    const kta::KeyTrack& track = TrackOf(reading);
    EXPECT_TRUE(track.vectorSamples.empty() && track.rotationSamples.empty());
    ASSERT_EQ(track.keyframedKeys.size(), 2u);
    const kta::KeyframedKey& first = track.keyframedKeys[0];
    EXPECT_EQ(first.head.time, 0);
    EXPECT_EQ(ListOf(first.head.values), (std::vector<float>{1, 2, 0}));
    EXPECT_EQ(first.head.axisMask, 7);
    EXPECT_EQ(first.tangentCodes, (std::array<std::uint8_t, 6>{3, 1, 1, 4, 1, 1}));
    const kta::KeyframedKey& second = track.keyframedKeys[1];
    EXPECT_EQ(second.head.time, 10);
    EXPECT_EQ(second.head.axisMask, 1);
    EXPECT_EQ(second.tangentRecords[0].length, 0.5f);
    EXPECT_EQ(second.tangentRecords[0].slope, -2);
}

// Tangent records stand for the codes 5 alone, in the codes' order.
TEST(MotionReaderTest, TangentRecordsBelongToTheirCodes) {
    const kta::Reading reading = ReadExact(
        Keyframed('r', {KeyRecord(0, {1, 2, 3}, 7, {3, 5, 4, 5, 1, 5}, {{0.5f, 1}, {1, 2}, {2, 3}}),
                        KeyRecord(1, {4, 5, 6})}));
    ASSERT_TRUE(reading.Good());
    const kta::KeyTrack& track = TrackOf(reading);
    EXPECT_EQ(track.head.trackLetter, 'r');
    constexpr std::pair<float, float> kExpected[] = {{0, 0}, {0.5f, 1}, {0, 0},
                                                     {1, 2}, {0, 0},    {2, 3}};
    for (std::size_t i = 0; i < 6; ++i) {
        const KTATangent& tangent = track.keyframedKeys.at(0).tangentRecords[i];
        EXPECT_EQ(tangent.length, kExpected[i].first) << i;
        EXPECT_EQ(tangent.slope, kExpected[i].second) << i;
    }
    EXPECT_EQ(ListOf(track.keyframedKeys.at(1).head.values), (std::vector<float>{4, 5, 6}));
}

TEST(MotionReaderTest, ReservedBytesMeanNothing) {
    const std::string bytes = PatchedU8(Keyframed('S', {PlainKey(0)}), kTrackBody + 7, 99);
    EXPECT_TRUE(ReadExact(PatchedU8(bytes, kFirstKey + 19, 99)).Good());
}

TEST(MotionReaderTest, EveryKindOfTrack) {
    const kta::Reading reading = ReadExact(TracksFile());
    ASSERT_TRUE(reading.Good()) << FaultsOf(TracksFile())[0];
    ASSERT_EQ(reading.file->chunks.size(), 8u);
    EXPECT_EQ(TrackOf(reading, 7).keyframedKeys[0].tangentRecords[5].slope, 4);
    EXPECT_EQ(reading.file->end, reading.file->size);
}

// ---------------------------------------------------------------- faults

TEST(MotionReaderFaultTest, SizeOfAMotionPart) {
    EXPECT_EQ(OnlyFaultOf(PatchedU32(Sampled('P', {{0, {1, 2, 3}}}), 11, 301)),
              FaultLine(11, "motion part", "size is 301, expected 300"));
}

TEST(MotionReaderFaultTest, SizesOfTracks) {
    const std::string sampled = Sampled('P', {{0, {1, 2, 3}}});
    const std::string patched = PatchedU32(sampled, kTrack + 4, 8);
    EXPECT_EQ(OnlyFaultOf(patched),
              TrackFault(kTrack + 4, "size is 8, expected 24 by its key count"));
    EXPECT_EQ(TrackOf(ReadExact(patched)).vectorSamples.size(), 1u);
    EXPECT_EQ(OnlyFaultOf(PatchedU32(Keyframed('P', {PlainKey(0)}), kTrack + 4, 34)),
              TrackFault(kTrack + 4, "size is 34, expected 8"));
}

// No memory is asked for before the bytes are known to be there.
TEST(MotionReaderFaultTest, KeyCounts) {
    const std::string sampled = Sampled('R', {{0, {0, 0, 0, 1}}});
    const std::string curves = Keyframed('P', {PlainKey(0)});
    EXPECT_EQ(OnlyFaultOf(PatchedU32(sampled, kTrackBody, 0)),
              TrackFault(kTrackBody, "key count is 0, expected 1 or more"));
    EXPECT_EQ(OnlyFaultOf(PatchedU32(sampled, kTrackBody, 0xffffffff)),
              TrackFault(kFirstKey, "keys cut off: 85899345900 bytes expected, 20 are there"));
    EXPECT_EQ(OnlyFaultOf(PatchedU32(curves, kTrackBody, 0xffffffff)),
              TrackFault(kFirstKey, "keys cut off: 111669149670 bytes expected, 26 are there"));
    // One key less leaves bytes that are no chunk.
    const std::string two = Keyframed('P', {PlainKey(0), PlainKey(1)});
    EXPECT_EQ(OnlyFaultOf(PatchedU32(two, kTrackBody, 1)),
              "f: offset " + std::to_string(kFirstKey + 26) +
                  ": chunk header: chunk id is 1065353216, expected that of a known chunk kind");
}

TEST(MotionReaderFaultTest, LettersOfTracks) {
    const std::string sampled = Sampled('P', {{0, {1, 2, 3}}});
    const std::string curves = Keyframed('P', {PlainKey(0)});
    EXPECT_EQ(OnlyFaultOf(PatchedU8(sampled, kTrackBody + 4, 'B')),
              TrackFault(kTrackBody + 4, "interpolation letter is byte 66, expected L"));
    for (const std::uint8_t letter : {'r', 'p', '\0'}) {
        EXPECT_EQ(OnlyFaultOf(PatchedU8(sampled, kTrackBody + 5, letter)),
                  TrackFault(kTrackBody + 5, "track letter is byte " + std::to_string(letter) +
                                                 ", expected P, R or S"));
    }
    EXPECT_EQ(OnlyFaultOf(PatchedU8(curves, kTrackBody + 5, 'R')),
              TrackFault(kTrackBody + 5, "track letter is byte 82, expected P, r or S"));
}

TEST(MotionReaderFaultTest, Times) {
    const std::vector<SampleFields> keys = {
        {1, {0, 0, 0}}, {0.5f, {0, 0, 0}}, {2, {0, 0, 0}}, {1.5f, {0, 0, 0}}, {2, {0, 0, 0}}};
    EXPECT_EQ(OnlyFaultOf(Sampled('P', keys)),
              TrackFault(kFirstKey + 16,
                         "key time is 0.5, expected at least 1, the time before it, and so for 1 "
                         "more of the track"));
    EXPECT_EQ(OnlyFaultOf(Keyframed('P', {PlainKey(3), PlainKey(2)})),
              TrackFault(kFirstKey + 26, "key time is 2, expected at least 3, the time before it"));
    EXPECT_EQ(OnlyFaultOf(Keyframed('P', {PlainKey(0), PlainKey(kInfinity), PlainKey(1)})),
              TrackFault(kFirstKey + 26, "key time is not a finite number"));
}

TEST(MotionReaderFaultTest, NumbersThatAreNotFinite) {
    EXPECT_EQ(OnlyFaultOf(
                  Sampled('P', {{0, {0, 0, 0}}, {1, {0, kInfinity, 0}}, {2, {-kInfinity, 0, 0}}})),
              TrackFault(kFirstKey + 20,
                         "key value is not a finite number, nor are 1 more of the track"));
    EXPECT_EQ(
        OnlyFaultOf(Keyframed('P', {KeyRecord(0, {}, 7, {3, 3, 3, 3, 3, 5}, {{1, kInfinity}})})),
        TrackFault(kFirstKey + 26, "tangent record is not a finite number"));
    const std::string part = Sampled('P', {{0, {0, 0, 0}}});
    EXPECT_EQ(OnlyFaultOf(PatchedF32(part, 7 + 12 + 276, kInfinity)),
              FaultLine(295, "motion part", "rotation is not a finite number"));
}

TEST(MotionReaderFaultTest, AxisMasks) {
    const std::size_t mask = kFirstKey + 16;
    const std::string file =
        Keyframed('P', {PlainKey(0), KeyRecord(1, {0, 0, 0}, 4, {1, 1, 3, 1, 1, 3})});
    ASSERT_TRUE(ReadExact(file).Good());
    EXPECT_EQ(OnlyFaultOf(PatchedU8(file, mask, 3)),
              TrackFault(mask, "axis mask is 3, expected 7, all axes"));
    EXPECT_EQ(OnlyFaultOf(PatchedU8(file, mask + 26, 0)),
              TrackFault(mask + 26, "axis mask is 0, expected 1 to 7"));
    EXPECT_EQ(OnlyFaultOf(PatchedU8(file, mask + 27, 1)),
              TrackFault(mask + 26, "axis mask is 260, expected 1 to 7"));
    EXPECT_EQ(OnlyFaultOf(PatchedU8(Keyframed('S', {PlainKey(0), PlainKey(1)}), mask + 26, 6)),
              TrackFault(mask + 26, "axis mask is 6, expected 7, all axes"));
    EXPECT_EQ(
        OnlyFaultOf(
            Keyframed('P', {PlainKey(0), KeyRecord(1, {2.5f, 0, 3}, 4, {1, 1, 3, 1, 1, 3})})),
        TrackFault(kFirstKey + 26 + 4, "X value is 2.5, expected 0, the mask lacks the axis"));
}

TEST(MotionReaderFaultTest, TangentCodes) {
    const std::size_t codes = kFirstKey + 20;
    const std::string file =
        Keyframed('P', {PlainKey(0), KeyRecord(1, {0, 0, 0}, 4, {1, 1, 3, 1, 1, 3})});
    for (const std::uint8_t code : {0, 2, 6, 255}) {
        EXPECT_EQ(OnlyFaultOf(PatchedU8(file, codes + 3, code)),
                  TrackFault(codes + 3, "tangent code is " + std::to_string(code) +
                                            ", expected 1, 3, 4 or 5"));
    }
    EXPECT_EQ(OnlyFaultOf(PatchedU8(file, codes + 26 + 4, 5)),
              TrackFault(codes + 26 + 4, "tangent code is 5, expected 1, the mask lacks the axis"));
    EXPECT_EQ(OnlyFaultOf(PatchedU8(file, codes + 26 + 5, 5)),
              TrackFault(codes + 26 + 6, "tangent records cut off: 8 bytes expected, 0 are there"));
}

TEST(MotionReaderFaultTest, HandleLengths) {
    const auto withLength = [](float length) {
        return Keyframed('r', {KeyRecord(0, {}, 7, {3, 5, 3, 3, 3, 3}, {{length, 0}})});
    };
    EXPECT_TRUE(ReadExact(withLength(1e-5f)).Good());
    EXPECT_TRUE(ReadExact(withLength(2.99999f)).Good());
    EXPECT_EQ(OnlyFaultOf(withLength(3)),
              TrackFault(kFirstKey + 26, "handle length is 3, expected 1e-05 to 2.99999"));
    EXPECT_EQ(OnlyFaultOf(withLength(0)),
              TrackFault(kFirstKey + 26, "handle length is 0, expected 1e-05 to 2.99999"));
}

TEST(MotionReaderFaultTest, OrderOfTracks) {
    const std::string alone = kMotion + SampledTrack('P', {{0, {1, 2, 3}}});
    EXPECT_EQ(OnlyFaultOf(alone), TrackFault(7, "no motion part stands before it, expected one"));
    EXPECT_EQ(ReadExact(alone).file->chunks.size(), 1u);
    for (const char* letters : {"SP", "PP", "rP", "Sr"}) {
        const char first = letters[0];
        const char second = letters[1];
        EXPECT_EQ(
            OnlyFaultOf(Keyframed(first, {PlainKey(0)}) + KeyframedTrack(second, {PlainKey(0)})),
            TrackFault(kFirstKey + 26, std::string("track ") + second + " stands behind track " +
                                           first +
                                           ", expected position, rotation, scale, each once"));
    }
}

// ---------------------------------------------------------------- cut, damaged and large files

TEST(MotionReaderTruncationTest, EveryPrefix) {
    ReadPrefixes(TracksFile());
}

TEST(MotionReaderMutationTest, DamagedTracksAreReportedInBounds) {
    const int faulty = ReadDamaged(TracksFile());
    EXPECT_GT(faulty, 5000);
    EXPECT_LT(faulty, 10000);
}

// Each key is wrong in every way that can be told of many; each way takes one line.
TEST(MotionReaderMutationTest, FaultsOfManyKeysTakeALineAKind) {
    std::vector<std::string> keys = {PlainKey(0)};
    for (int i = 1; i < 50000; ++i) {
        keys.push_back(KeyRecord(-static_cast<float>(i), {1, kInfinity, 0}, 2, {1, 5, 1, 1, 3, 1},
                                 {{9, kInfinity}}));
    }
    EXPECT_EQ(FaultsOf(Keyframed('P', keys)).size(), 5u);
}

TEST(MotionReaderTest, LargeTrack) {
    std::vector<SampleFields> keys(300000);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        keys[i] = {static_cast<float>(i), {1, 2, static_cast<float>(i)}};
    }
    const kta::Reading reading = ReadExact(Sampled('P', keys));
    ASSERT_TRUE(reading.Good());
    EXPECT_EQ(TrackOf(reading).vectorSamples.back().values[2], 299999.0f);
}

}  // namespace
