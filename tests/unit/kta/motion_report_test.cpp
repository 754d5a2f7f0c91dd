#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>

#include "kta/dump.h"
#include "kta/info.h"
#include "kta/motion_summary.h"
#include "tests/unit/kta/sample_chunks.h"

namespace {

using namespace sample;
using nlohmann::json;

std::string TextOf(const Bytes& bytes) {
    std::ostringstream out;
    kta::DumpText("m", kta::Read(bytes).file.value(), out);
    return out.str();
}

std::string JsonOf(const Bytes& bytes) {
    std::ostringstream out;
    const kta::Reading reading = kta::Read(bytes);
    kta::DumpJson("m", reading.file.value(), reading.faults, out);
    return out.str();
}

std::string InfoOf(const Bytes& bytes) {
    std::ostringstream out;
    kta::WriteInfo("m", kta::Read(bytes).file.value(), out);
    return out.str();
}

TEST(MotionDumpTest, Text) {
    Writer writer;
    AddMotionPart(AddHeader(writer, Kind::motion), "Box01");
    AddSampledTrack(writer, 'R', {{0, {0, 0, 0, 1}}, {0.5f, {0.5f, -0.5f, 0.5f, 0.5f}}});
    AddCurveTrack(writer, 'S',
                  {{0.1f, {1, 2, 3}, 7, {5, 3, 4, 3, 3, 5}, {{0.5f, 2}, {1, -4}}}, {1, {4, 5, 6}}});
    EXPECT_EQ(TextOf(writer.bytes),
              "m: motion file, 467 bytes\n"
              "\n"
              "offset 0: header\n"
              "           0  magic               \"KTA \"\n"
              "           4  version             [1,1]\n"
              "           6  kind                motion\n"
              "\n"
              "offset 7: motion part chunk, id 1, size 300, version 2\n"
              "          19  nodeName            \"Box01\"\n"
              "         279  translation         [1.0,3.0,2.0]\n"
              "         291  rotation            [0.5,-0.5,0.25,0.75]\n"
              "         307  scale               [4.0,6.0,5.0]\n"
              "\n"
              "offset 319: key track chunk, id 2, size 48, version 1\n"
              "         331  keyCount            2\n"
              "         335  interpolation       \"L\"\n"
              "         336  trackLetter         \"R\"\n"
              "         339  key                 0.0 [0.0,0.0,0.0,1.0]\n"
              "         359  key                 0.5 [0.5,-0.5,0.5,0.5]\n"
              "\n"
              "offset 379: key track chunk, id 2, size 8, version 2\n"
              "         391  keyCount            2\n"
              "         395  interpolation       \"L\"\n"
              "         396  trackLetter         \"S\"\n"
              "         399  key                 0.1 [1.0,2.0,3.0] 7 [5,3,4,3,3,5] [0.5,2.0] "
              "[1.0,-4.0]\n"
              "         441  key                 1.0 [4.0,5.0,6.0] 7 [3,3,3,3,3,3]\n");
}

TEST(MotionDumpTest, Json) {
    const std::string text = JsonOf(MotionFile());
    const json dump = json::parse(text);
    EXPECT_EQ(dump.at("kind"), "motion");
    const json& chunks = dump.at("chunks");
    ASSERT_EQ(chunks.size(), 8u);
    EXPECT_EQ(chunks[0], json::parse(R"({"id": 1, "name": "motion part", "offset": 7, "size": 300,
        "version": 2, "nodeName": "Sampled", "translation": [1.0, 3.0, 2.0],
        "rotation": [0.5, -0.5, 0.25, 0.75], "scale": [4.0, 6.0, 5.0]})"));
    EXPECT_EQ(chunks[1], json::parse(R"({"id": 2, "name": "key track", "offset": 319, "size": 56,
        "version": 1, "keyCount": 3, "interpolation": "L", "trackLetter": "P",
        "keys": [{"time": 0.0, "values": [1.0, 3.0, 2.0]},
                 {"time": 0.5, "values": [2.0, 4.0, 3.0]},
                 {"time": 0.5, "values": [2.0, 4.0, 3.0]}]})"));
    EXPECT_EQ(chunks[2].at("keys")[1],
              json::parse(R"({"time": 0.5, "values": [0.5, -0.5, 0.5, 0.5]})"));
    EXPECT_EQ(chunks[5].at("version"), 2);
    EXPECT_EQ(chunks[5].at("keys"),
              json::parse(R"([{"time": 0.0, "values": [1.0, 2.0, 3.0], "axisMask": 7,
                               "tangentCodes": [5, 1, 3, 4, 1, 5],
                               "tangentRecords": [[0.5, 2.0], [1.0, -4.0]]},
                              {"time": 1.0, "values": [0.0, 7.0, 0.0], "axisMask": 2,
                               "tangentCodes": [1, 3, 1, 1, 4, 1], "tangentRecords": []}])"));
    EXPECT_EQ(chunks[6].at("trackLetter"), "r");
    // Keys begin lines of their own.
    std::istringstream lines(text);
    int keys = 0;
    for (std::string line; std::getline(lines, line);) {
        keys += line.starts_with("{\"time\"") ? 1 : 0;
    }
    EXPECT_EQ(keys, 3 + 2 + 1 + 2 + 1 + 1);
}

TEST(MotionDumpTest, TimesReadBackToTheSameBits) {
    for (const float time : {1 / 30.0f, 0.1f, 3.3333333f, 1e-5f, 16777217.0f}) {
        Writer writer;
        AddMotionPart(AddHeader(writer, Kind::motion), "Box01");
        AddSampledTrack(writer, 'P', {{time, {time, 0, 0}}});
        const json dump = json::parse(JsonOf(writer.bytes));
        const json& key = dump.at("chunks")[1].at("keys")[0];
        EXPECT_EQ(key.at("time").get<float>(), time);
        EXPECT_EQ(key.at("values")[0].get<float>(), time);
    }
}

TEST(MotionInfoTest, CountsTracksAndKeys) {
    EXPECT_EQ(InfoOf(MotionFile()),
              "m\n"
              "  kind                    motion\n"
              "  version                 1.1\n"
              "  size                    1023 bytes\n"
              "  chunks                  8\n"
              "    motion part           2, 624 bytes\n"
              "    key track             6, 392 bytes\n"
              "  motion parts            2\n"
              "  key tracks              6\n"
              "    P sampled             1 track, 3 keys\n"
              "    P keyframed           1 track, 2 keys\n"
              "    R sampled             1 track, 2 keys\n"
              "    r keyframed           1 track, 1 key\n"
              "    S sampled             1 track, 1 key\n"
              "    S keyframed           1 track, 1 key\n"
              "  keys                    10\n"
              "  first time              0.0 s\n"
              "  last time               1.0 s\n"
              "  most keys               Sampled (6), Curves (4)\n");
}

TEST(MotionInfoTest, PartWithoutTracks) {
    Writer writer;
    const std::string info = InfoOf(AddMotionPart(AddHeader(writer, Kind::motion), "Box01").bytes);
    EXPECT_TRUE(info.ends_with("  motion parts            1\n  key tracks              0\n"))
        << info;
}

TEST(MotionInfoTest, TrackWithoutPart) {
    Writer writer;
    AddSampledTrack(AddHeader(writer, Kind::motion), 'P', {{2, {1, 2, 3}}});
    const std::string info = InfoOf(writer.bytes);
    EXPECT_TRUE(
        info.ends_with("  motion parts            0\n"
                       "  key tracks              1\n"
                       "    P sampled             1 track, 1 key\n"
                       "  keys                    1\n"
                       "  first time              2.0 s\n"
                       "  last time               2.0 s\n"))
        << info;
}

TEST(MotionInfoTest, FivePartsWithMostKeys) {
    Writer writer;
    AddHeader(writer, Kind::motion);
    const std::pair<const char*, int> parts[] = {{"a", 1}, {"b", 3}, {"c", 2}, {"d\n", 3},
                                                 {"e", 1}, {"f", 4}, {"g", 0}};
    for (const auto& [name, count] : parts) {
        AddMotionPart(writer, name);
        if (count > 0) {
            AddSampledTrack(writer, 'P', std::vector<sample::Key>(count, {2, {1, 2, 3}}));
        }
    }
    const std::string info = InfoOf(writer.bytes);
    EXPECT_TRUE(info.ends_with("  most keys               f (4), b (3), d (3), c (2), a (1)\n"))
        << info;
}

TEST(MotionInfoTest, TimesThatAreNotFiniteDoNotCount) {
    Writer writer;
    AddMotionPart(AddHeader(writer, Kind::motion), "Box01");
    AddSampledTrack(writer, 'P',
                    {{std::numeric_limits<float>::quiet_NaN(), {1, 2, 3}},
                     {-2, {1, 2, 3}},
                     {std::numeric_limits<float>::infinity(), {1, 2, 3}}});
    const kta::MotionSummary summary = kta::SummarizeMotion(kta::Read(writer.bytes).file.value());
    EXPECT_EQ(summary.firstTime, -2);
    EXPECT_EQ(summary.lastTime, -2);
    EXPECT_EQ(summary.keys, 3u);
}

}  // namespace
