// What the check tells, beside the faults that the reader tells already.
#include "kta/check.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <limits>
#include <map>
#include <set>
#include <sstream>

#include "kta/check/good_export.h"
#include "kta/check/report.h"
#include "kta/check/self_test.h"
#include "tests/support/sweep.h"
#include "tests/unit/kta/sample.h"

namespace {

using namespace sample;
using kta::IssueCode;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> LinesOf(const std::vector<kta::Issue>& issues) {
    std::vector<std::string> lines;
    for (const kta::Issue& issue : issues) {
        lines.push_back(kta::IssueLine("f", issue));
    }
    return lines;
}

std::vector<std::string> CheckedLines(const std::string& bytes,
                                      const kta::CheckOptions& options = {}) {
    return LinesOf(kta::Check(ReadExact(bytes), nullptr, options));
}

// An actor file of a skinned triangle.
std::string Skinned(const std::vector<VertexWeights>& weights) {
    MeshFields mesh = Triangle(0, 0, 0);
    mesh.originalVertexCount = static_cast<std::uint32_t>(weights.size());
    for (std::uint32_t i = 0; i < 3; ++i) {
        mesh.subMeshes[0].vertices[i].original = i;
        mesh.subMeshes[0].vertices[i].normal = {0, 0, 1};
    }
    return ActorBeginning() + NodeChunk({.name = "Skin"}) + MeshChunk(mesh) +
           NodeChunk({.name = "Bone"}) + WeightsChunk(0, weights);
}

// ---------------------------------------------------------------- the check's proof of itself

TEST(CheckSelfTest, EveryCodeIsPlantedAndCaughtAlone) {
    std::ostringstream out;
    EXPECT_TRUE(kta::RunSelfTest("", out)) << out.str();
    for (const kta::IssueType& type : kta::IssueTypes()) {
        EXPECT_THAT("\n" + out.str(), HasSubstr("\n" + std::string(type.name) + ": ok\n"));
    }
}

TEST(CheckSelfTest, GoodFilesHaveEveryKindOfChunk) {
    const kta::DraftExport drafts = kta::GoodExport();
    std::set<int> kinds;
    for (const kta::DraftFile& file : {drafts.actor, drafts.sampled, drafts.keyframed}) {
        for (const kta::DraftChunk& chunk : file.chunks) {
            kinds.insert(static_cast<int>(chunk.header.id));
        }
    }
    EXPECT_EQ(kinds.size(), std::size(kChunkTypes));
}

// ---------------------------------------------------------------- the table

TEST(IssueTable, NamesAreDifferentAndReadable) {
    std::set<std::string> names;
    for (const kta::IssueType& type : kta::IssueTypes()) {
        const std::string name = type.name;
        EXPECT_TRUE(names.insert(name).second) << name;
        EXPECT_EQ(name.find_first_not_of("abcdefghijklmnopqrstuvwxyz-"), std::string::npos) << name;
        EXPECT_EQ(kta::FindIssueType(name), &type);
        EXPECT_EQ(&kta::TypeOf(type.code), &type);
        EXPECT_STRNE(type.meaning, "");
        EXPECT_STRNE(type.remedy, "");
    }
    EXPECT_EQ(kta::FindIssueType("no-such-code"), nullptr);
}

TEST(IssueTable, MessagesHaveTheirPlacesFilled) {
    EXPECT_EQ(kta::MessageOf(IssueCode::chunkSize, "size", "3", "4"), "size is 3, expected 4");
    EXPECT_EQ(kta::MessageOf(IssueCode::cutOff, "", "3", "4"),
              "cut off: 4 bytes expected, 3 are there");
    EXPECT_EQ(kta::MessageOf(IssueCode::chunkSize, "{found}", "{expected}", "x"),
              "{found} is {expected}, expected x");
}

// ---------------------------------------------------------------- members of a fault

TEST(FaultMembers, TellWhereAndWhat) {
    const kta::Reading reading = ReadExact(ActorFile({{}, {.isBone = 2}}));
    ASSERT_EQ(reading.faults.size(), 1u);
    const kta::Fault& fault = reading.faults[0];
    EXPECT_EQ(fault.code, IssueCode::flagValue);
    EXPECT_EQ(fault.offset, 7 + 644 + 12 + 624u);
    EXPECT_EQ(fault.place.where, "node chunk");
    ASSERT_NE(fault.place.chunkType, nullptr);
    EXPECT_EQ(fault.place.chunkType->id, kChunkNode);
    EXPECT_EQ(fault.place.chunkOffset, 7 + 644u);
    EXPECT_EQ(fault.place.chunk, 1u);
    EXPECT_EQ(fault.what, "bone flag");
    EXPECT_EQ(fault.found, "2");
    EXPECT_EQ(fault.expected, "0 or 1");
    EXPECT_EQ(fault.count, 1u);
}

TEST(FaultMembers, AFaultOfManyItemsCountsThem) {
    const std::string bytes = kMotion + MotionPart("a") +
                              SampledTrack('P', {{3, {0, 0, 0}}, {2, {0, 0, 0}}, {1, {0, 0, 0}}});
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_EQ(reading.faults.size(), 1u);
    EXPECT_EQ(reading.faults[0].code, IssueCode::keyTimeOrder);
    EXPECT_EQ(reading.faults[0].count, 2u);
    EXPECT_EQ(reading.faults[0].found, "2");
}

TEST(FaultMembers, OfTheHeaderHaveNoChunk) {
    const kta::Reading reading = ReadExact("KTB \1\1\1");
    ASSERT_EQ(reading.faults.size(), 1u);
    EXPECT_EQ(reading.faults[0].code, IssueCode::fileMagic);
    EXPECT_EQ(reading.faults[0].place.where, "header");
    EXPECT_EQ(reading.faults[0].place.chunkType, nullptr);
    EXPECT_EQ(reading.faults[0].found, "\"KTB \"");
}

TEST(FaultMembers, NoMoreAreKeptThanTheLimit) {
    const kta::Reading reading =
        ReadExact(ActorFile(std::vector<NodeFields>(kta::kMostFaults + 5, {.isBone = 2})));
    ASSERT_EQ(reading.faults.size(), kta::kMostFaults);
    EXPECT_EQ(reading.faults.back().code, IssueCode::tooManyFaults);
    EXPECT_LT(reading.file->end, reading.file->size);
}

// ---------------------------------------------------------------- what is told

TEST(Check, LinesTellPlaceSeverityNameAndCode) {
    const std::string bytes = ActorBeginning() + NodeChunk({.name = "Arm", .scale = {1, -1, 1}});
    EXPECT_THAT(CheckedLines(bytes),
                ElementsAre("f: offset 687: node chunk: error: \"Arm\": scale is (1, -1, 1), "
                            "expected parts of one sign [scale-signs]"));
}

TEST(Check, NotesAreToldOnRequest) {
    const std::string bytes =
        ActorBeginning() + NodeChunk({.name = "Twin"}) + NodeChunk({.name = "Twin"});
    EXPECT_THAT(CheckedLines(bytes), IsEmpty());
    EXPECT_THAT(CheckedLines(bytes, {.notes = true}),
                ElementsAre(HasSubstr("note: \"Twin\": node name is that of 2 nodes")));
}

TEST(Check, SeveritiesAreChosen) {
    const std::string bytes = Skinned({{{1, 0.5f}}, {{1, 1}}, {{1, 1}}});
    EXPECT_THAT(CheckedLines(bytes, {.notes = true}), ElementsAre(HasSubstr(": note: ")));
    kta::CheckOptions options;
    options.severities[IssueCode::weightSum] = kta::Severity::error;
    EXPECT_THAT(CheckedLines(bytes, options), ElementsAre(HasSubstr(": error: ")));
    options.severities[IssueCode::weightSum] = kta::Severity::note;
    EXPECT_THAT(CheckedLines(bytes, options), IsEmpty());
    options.notes = true;
    EXPECT_THAT(CheckedLines(bytes, options), ElementsAre(HasSubstr(": note: ")));
    options.severities[IssueCode::weightSum] = std::nullopt;
    EXPECT_THAT(CheckedLines(bytes, options), IsEmpty());
}

TEST(Check, WeightsSumToOneWithinAHundredth) {
    const kta::CheckOptions notes{.notes = true};
    EXPECT_THAT(CheckedLines(Skinned({{{1, 0.991f}}, {{1, 0.5f}, {0, 0.509f}}, {{1, 1}}}), notes),
                IsEmpty());
    EXPECT_THAT(CheckedLines(Skinned({{{1, 0.98f}}, {{1, 0.5f}, {0, 0.52f}}, {{1, 1}}}), notes),
                ElementsAre(HasSubstr("sum of a vertex's weights is 0.98, expected 1, and so for 1 "
                                      "more of the skin [weight-sum]")));
}

TEST(Check, IssuesAreToldInTheFilesOrder) {
    const std::string bytes = ActorBeginning() +
                              NodeChunk({.name = "a", .scale = {1, -1, 1}, .isBone = 2}) +
                              NodeChunk({.name = "b", .scale = {1, -1, 1}});
    std::uint64_t before = 0;
    const std::vector<kta::Issue> issues = kta::Check(ReadExact(bytes));
    EXPECT_EQ(issues.size(), 3u);
    for (const kta::Issue& issue : issues) {
        EXPECT_LE(before, issue.offset);
        before = issue.offset;
    }
}

// A bone's own chunks stand between the mesh and the weights of what it moves, and bones may have
// skins themselves.
TEST(Check, SkinsOfBonesStandInOneAnother) {
    const auto mesh = [](std::uint32_t node) {
        MeshFields fields = Triangle(0, 0, 0);
        fields.node = node;
        fields.originalVertexCount = 3;
        for (std::uint32_t i = 0; i < 3; ++i) {
            fields.subMeshes[0].vertices[i].original = i;
        }
        return MeshChunk(fields);
    };
    const std::vector<VertexWeights> weights = {{{2, 1}}, {{2, 1}}, {{2, 1}}};
    const std::string good =
        ActorBeginning() + NodeChunk({.name = "Outer"}) + mesh(0) + NodeChunk({.name = "Inner"}) +
        mesh(1) + NodeChunk({.name = "Bone"}) + WeightsChunk(1, weights) +
        MorphChunk({.node = "Inner", .packed = {{}, {}, {}}}) + WeightsChunk(0, weights) +
        MorphChunk({.node = "Outer", .packed = {{}, {}, {}}});
    EXPECT_THAT(CheckedLines(good), IsEmpty());
    const std::string bad = ActorBeginning() + NodeChunk({.name = "Outer"}) + mesh(0) +
                            NodeChunk({.name = "Inner"}) + mesh(1) + NodeChunk({.name = "Bone"}) +
                            WeightsChunk(0, weights) + WeightsChunk(1, weights);
    EXPECT_THAT(CheckedLines(bad), ElementsAre(HasSubstr("[chunk-place]")));
}

TEST(Check, WhatStandsBehindAFaultIsNotMissed) {
    // The parent's node stands behind the chunk at which reading ends.
    const std::string bytes = ActorBeginning() +
                              NodeChunk({.name = "Child", .parentName = "Parent"}) +
                              ChunkHeader(5, 0, 1).Str() + NodeChunk({.name = "Parent"});
    EXPECT_THAT(CheckedLines(bytes, {.notes = true}), ElementsAre(HasSubstr("[chunk-unknown]")));
}

TEST(Check, AMotionFileIsCheckedAlone) {
    EXPECT_THAT(CheckedLines(kMotion), IsEmpty());
    EXPECT_THAT(CheckedLines(kMotion + MotionPart("a")),
                ElementsAre("f: offset 7: motion part chunk: error: \"a\": nothing follows it, "
                            "expected a key track at least [part-without-tracks]"));
}

TEST(Check, APairIsComparedAtTimeZero) {
    const kta::Reading actor =
        ReadExact(ActorBeginning() + NodeChunk({.name = "Arm", .rotation = {0, 0, 0, 1}}));
    const auto issues = [&](const Pose& pose, const std::string& name = "Arm") {
        const kta::Reading motion =
            ReadExact(kMotion + MotionPart(name, pose) + SampledTrack('P', {{0, {0, 0, 0}}}));
        return LinesOf(kta::Check(actor, &motion));
    };
    EXPECT_THAT(issues({}), IsEmpty());
    EXPECT_THAT(issues({.rotation = {0, 0, 0, -1}}), IsEmpty());
    EXPECT_THAT(issues({.scale = {2, 2, 2}}), IsEmpty());
    EXPECT_THAT(issues({.translation = {0, 0.01f, 0}}),
                ElementsAre(HasSubstr("translation is (0, 0.01, 0), expected (0, 0, 0), that of "
                                      "the node [motion-pose]")));
    EXPECT_THAT(issues({.rotation = {1, 0, 0, 0}}), ElementsAre(HasSubstr("[motion-pose]")));
    EXPECT_THAT(issues({}, "Leg"),
                ElementsAre("f: warning: no motion part moves a node of the actor file, expected "
                            "those of one export [motion-other-scene]"));
}

// ---------------------------------------------------------------- exports

// Deliberate oddities included: sums of weights that are not 1, morphs of fewer points than the
// mesh, motions of hidden nodes.
TEST(Check, ExportsOfTheTestScenesAreGood) {
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(KTA_EXPECTED)) {
        const std::string path = entry.path().string();
        const std::string ending = ".actor.kta";
        if (!path.ends_with(ending)) {
            continue;
        }
        const std::string base = path.substr(0, path.size() - ending.size());
        const kta::Reading actor = kta::ReadFile(path, kFileKindActor);
        const kta::Reading motion = kta::ReadFile(base + ".motion.kta", kFileKindMotion);
        ASSERT_EQ(actor.inputError + motion.inputError, "");
        for (const kta::Issue& issue : kta::Check(actor, &motion)) {
            ADD_FAILURE() << kta::IssueLine(path, issue);
        }
        ++files;
    }
    EXPECT_GE(files, 17u);
}

// ---------------------------------------------------------------- damage

// Cut anywhere but between two chunks, a file has an error.
TEST(Check, EveryCutIsTold) {
    const kta::DraftExport drafts = kta::GoodExport();
    for (const kta::DraftFile& file : {drafts.actor, drafts.sampled, drafts.keyframed}) {
        const kta::FileBytes bytes = file.Bytes();
        std::set<std::size_t> ends = {7};
        for (const kta::DraftChunk& chunk : file.chunks) {
            ends.insert(*ends.rbegin() + 12 + chunk.body.size());
        }
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            const kta::Reading reading = kta::Read(std::span(bytes).first(size));
            EXPECT_EQ(reading.Good(), ends.contains(size)) << size;
            EXPECT_GE(kta::Check(reading).size(), reading.faults.size());
        }
    }
}

// Of these bytes every change breaks a rule: headers of the file and of chunks, counts,
// constants and letters.
TEST(Check, EveryChangedByteThatBreaksARuleIsTold) {
    const kta::DraftExport drafts = kta::GoodExport();
    for (const kta::DraftFile& file : {drafts.actor, drafts.sampled, drafts.keyframed}) {
        kta::FileBytes bytes = file.Bytes();
        std::vector<std::size_t> offsets = {0, 1, 2, 3, 4, 5, 6};
        std::size_t at = 7;
        for (const kta::DraftChunk& chunk : file.chunks) {
            for (std::size_t i = 0; i < 12; ++i) {
                offsets.push_back(at + i);
            }
            const auto add = [&](std::size_t first, std::size_t count) {
                for (std::size_t i = 0; i < count; ++i) {
                    offsets.push_back(at + 12 + first + i);
                }
            };
            switch (chunk.header.id) {
                case kChunkMesh:
                    add(offsetof(KTAMesh, vertexCount), 12);
                    break;
                case kChunkJointLimits:
                    add(offsetof(KTAJointLimits, at52), 24);
                    add(offsetof(KTAJointLimits, at82), 6);
                    break;
                case kChunkMorph:
                    add(offsetof(KTAMorphChannel, at268), 5);
                    add(offsetof(KTAMorphChannel, at276), 12);
                    break;
                case kChunkKeyTrack:
                    add(0, 6);
                    break;
                default:
                    break;
            }
            at += 12 + chunk.body.size();
        }
        for (const std::size_t offset : offsets) {
            for (const int mask : {0x01, 0x80, 0xff}) {
                const std::uint8_t old = bytes[offset];
                bytes[offset] = static_cast<std::uint8_t>(old ^ mask);
                EXPECT_FALSE(kta::Check(kta::Read(bytes), nullptr).empty())
                    << "offset " << offset << " from " << int{old} << " with " << mask;
                bytes[offset] = old;
            }
        }
    }
}

// Whatever is changed, reading and checking end, and what is told stands in the file.
TEST(Check, AnyChangedByteEndsWell) {
    const kta::DraftExport drafts = kta::GoodExport();
    kta::FileBytes actor = drafts.actor.Bytes();
    kta::FileBytes motion = drafts.keyframed.Bytes();
    const kta::Reading good = kta::Read(actor);
    const auto change = [&](kta::FileBytes& bytes, const auto& check) {
        for (std::size_t offset = 0; offset < bytes.size(); offset += support::SweepStride(7)) {
            for (const int mask : {0x01, 0x80, 0xff}) {
                bytes[offset] = static_cast<std::uint8_t>(bytes[offset] ^ mask);
                for (const kta::Issue& issue : check(kta::Read(bytes))) {
                    EXPECT_LE(issue.offset, bytes.size());
                    EXPECT_NE(issue.text, "");
                }
                bytes[offset] = static_cast<std::uint8_t>(bytes[offset] ^ mask);
            }
        }
    };
    const kta::CheckOptions notes{.notes = true};
    change(actor, [&](const kta::Reading& changed) { return kta::Check(changed, nullptr, notes); });
    change(motion, [&](const kta::Reading& changed) { return kta::Check(good, &changed, notes); });
}

TEST(Check, NoMoreIsKeptThanTheLimit) {
    std::string bytes = ActorBeginning();
    for (std::size_t i = 0; i < kta::kMostFaults + 5; ++i) {
        bytes += NodeChunk({.name = std::to_string(i), .scale = {1, -1, 1}});
    }
    const std::vector<kta::Issue> issues = kta::Check(ReadExact(bytes));
    ASSERT_EQ(issues.size(), kta::kMostFaults);
    EXPECT_EQ(issues.back().text, "9999 faults are told already, expected no more");
}

TEST(Check, FaultsHaveTheNamesOfTheirNodes) {
    EXPECT_THAT(CheckedLines(ActorBeginning() + NodeChunk({.name = "Arm", .isBone = 2})),
                ElementsAre("f: offset 763: node chunk: error: \"Arm\": bone flag is 2, expected 0 "
                            "or 1 [flag-value]"));
}

// ---------------------------------------------------------------- rules

std::string RefusalOf(const std::string& rules) {
    kta::CheckOptions options;
    try {
        kta::AddRules(rules, options);
    } catch (const kta::RulesError& error) {
        EXPECT_TRUE(options.rules.budgets.empty() && options.severities.empty());
        return error.what();
    }
    return "";
}

TEST(StudioRules, AreRead) {
    kta::CheckOptions options;
    kta::AddRules(
        R"({"bones": {"most": 64, "severity": "error"}, "node-name": {"pattern": "[a-z]+"},
                      "severities": {"weight-sum": "ignore", "parent-unknown": "warning"}})",
        options);
    EXPECT_EQ(options.rules.budgets.at(IssueCode::ruleBones), 64u);
    EXPECT_EQ(options.rules.patterns.at(IssueCode::ruleNodeName), "[a-z]+");
    EXPECT_EQ(options.severities.at(IssueCode::ruleBones), kta::Severity::error);
    EXPECT_EQ(options.severities.at(IssueCode::weightSum), std::nullopt);
    EXPECT_EQ(options.severities.at(IssueCode::parentUnknown), kta::Severity::warning);
}

TEST(StudioRules, WhatIsNoRuleIsRefused) {
    EXPECT_EQ(RefusalOf("{"), "is no JSON, wrong at byte 2");
    EXPECT_EQ(RefusalOf("[]"), "the file is a list, expected an object");
    EXPECT_THAT(RefusalOf(R"({"legs": {"most": 2}})"),
                HasSubstr("\"legs\" is no rule, expected one of nodes, bones, influences"));
    EXPECT_EQ(RefusalOf(R"({"bones": 4})"), "bones is 4, expected an object with \"most\"");
    EXPECT_EQ(RefusalOf(R"({"bones": {"most": -1}})"),
              "bones.most is -1, expected a whole number, 0 or more");
    EXPECT_EQ(RefusalOf(R"({"bones": {"most": 1, "least": 1}})"),
              "bones.least is no member of a rule, expected most or severity");
    EXPECT_EQ(RefusalOf(R"({"node-name": {"pattern": "("}})"),
              "node-name.pattern is \"(\", expected a regular expression of at most 1000 bytes "
              "without look-aheads and "
              "back-references");
    EXPECT_EQ(RefusalOf(R"({"severities": {"weight-sum": "bad"}})"),
              "severities.weight-sum is \"bad\", expected note, warning, error or ignore");
    EXPECT_EQ(RefusalOf(R"({"severities": {"x": "error"}})"),
              "severities.x is no code, see kta check --list-codes");
}

// There are 2^199 ways to part the name into groups of letters, none of which matches.
TEST(StudioRules, NoPatternTakesLong) {
    kta::CheckOptions options;
    kta::AddRules(R"({"node-name": {"pattern": "(a*)*b"}})", options);
    const std::string name(200, 'a');
    const auto issues =
        kta::Check(ReadExact(ActorBeginning() + NodeChunk({.name = name})), nullptr, options);
    ASSERT_EQ(issues.size(), 1u);
    EXPECT_EQ(issues[0].code, IssueCode::ruleNodeName);
    EXPECT_EQ(RefusalOf(R"({"node-name": {"pattern": "(a)\\1"}})"),
              "node-name.pattern is \"(a)\\\\1\", expected a regular expression of at most 1000 "
              "bytes without look-aheads and "
              "back-references");
    // Four of them in one another took a second for a name of 100 letters, and each more a
    // multiple.
    const std::string kRefused =
        ", expected a regular expression of at most 1000 bytes without "
        "look-aheads and back-references";
    EXPECT_EQ(RefusalOf(R"({"node-name": {"pattern": "(?=a).*"}})"),
              "node-name.pattern is \"(?=a).*\"" + kRefused);
    EXPECT_EQ(RefusalOf(R"({"node-name": {"pattern": "a(?!b)."}})"),
              "node-name.pattern is \"a(?!b).\"" + kRefused);
    // The library's compiler goes a level deeper for each of them.
    EXPECT_THAT(RefusalOf(R"({"node-name": {"pattern": ")" + std::string(30000, '(') + R"("}})"),
                testing::EndsWith(kRefused));
}

TEST(StudioRules, BudgetsAndNames) {
    kta::CheckOptions options;
    kta::AddRules(R"({"nodes": {"most": 1}, "node-name": {"pattern": "[A-Z][a-z]+"},
                      "influences": {"most": 1}})",
                  options);
    const std::string bytes = Skinned({{{1, 0.5f}, {0, 0.5f}}, {{1, 1}}, {{1, 1}}});
    EXPECT_THAT(CheckedLines(bytes, options),
                ElementsAre("f: warning: number of nodes is 2, expected 1 at most [rule-nodes]",
                            HasSubstr("\"Skin\": number of weights is 2, expected 1 at most")));
    const std::string named = ActorBeginning() + NodeChunk({.name = "L_hand"});
    EXPECT_THAT(CheckedLines(named, options),
                ElementsAre("f: offset 139: node chunk: warning: \"L_hand\": node name is "
                            "\"L_hand\", expected one like [A-Z][a-z]+ [rule-node-name]"));
}

}  // namespace
