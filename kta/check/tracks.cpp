// Motion parts and key tracks, alone and beside the actor file.
#include <algorithm>
#include <cmath>

#include "kta/check/findings.h"
#include "kta/cursor.h"

namespace kta {
namespace {

// ---------------------------------------------------------------- tracks

std::vector<float> SampleTimes(const KeyTrack& track) {
    std::vector<float> times;
    times.reserve(track.head.keyCount);
    for (const KTAVectorSample& sample : track.vectorSamples) {
        times.push_back(sample.time);
    }
    for (const KTARotationSample& sample : track.rotationSamples) {
        times.push_back(sample.time);
    }
    return times;
}

class TracksCheck {
  public:
    explicit TracksCheck(Findings& findings) : findings_(findings) {}

    void Check(std::size_t i, const Chunk& chunk) {
        if (const auto* part = chunk.As<KTAMotionPart>()) {
            part_ = TextOf(part->nodeName);
            CheckPart(i, *part);
        } else if (const auto* track = chunk.As<KeyTrack>()) {
            const bool sampled = chunk.version == kKeyTrackSampled;
            CheckKind(i, chunk.version);
            sampled ? CheckSampled(i, *track) : CheckKeyframed(i, *track);
        }
    }

  private:
    void CheckPart(std::size_t i, const KTAMotionPart& part) {
        const std::vector<Chunk>& chunks = findings_.TheFile().chunks;
        const bool last = i + 1 == chunks.size();
        if (last ? findings_.IsWhole() : chunks[i + 1].As<KeyTrack>() == nullptr) {
            findings_.AddAtChunk(
                IssueCode::partWithoutTracks, i,
                {"", last ? "nothing" : "another motion part", "a key track at least"}, part_);
        }
        if (!IsUnit(part.rotation)) {
            findings_.AddInBody(IssueCode::rotationNotUnit, i, offsetof(KTAMotionPart, rotation),
                                {"rotation", Listed(part.rotation), "a quaternion of length 1"},
                                part_);
        }
    }

    void CheckKind(std::size_t i, std::uint32_t version) {
        version_ = version_ == 0 ? version : version_;
        if (version != version_) {
            findings_.AddAtChunk(IssueCode::trackKindsMixed, i,
                                 {"track", version == kKeyTrackSampled ? "sampled" : "keyframed",
                                  version == kKeyTrackSampled ? "keyframed, as the first track is"
                                                              : "sampled, as the first track is"},
                                 part_);
        }
    }

    std::uint64_t KeysOffset(std::size_t i) const {
        return findings_.BodyOffset(i) + sizeof(KTAKeyTrack);
    }

    void CheckSampled(std::size_t i, const KeyTrack& track) {
        const bool rotation = !track.rotationSamples.empty();
        const std::size_t keySize = rotation ? sizeof(KTARotationSample) : sizeof(KTAVectorSample);
        std::vector<float> times = SampleTimes(track);
        Alike repeated(IssueCode::keyTimeRepeated, "track");
        for (std::size_t k = 1; k + 1 < times.size(); ++k) {
            if (times[k] == times[k - 1]) {
                NoteRepeated(repeated, KeysOffset(i) + k * keySize, times[k]);
            }
        }
        repeated.Report(findings_, i, part_);
        CheckRotations(i, track);
        CheckTimes(i, std::move(times), keySize);
    }

    static void NoteRepeated(Alike& repeated, std::uint64_t offset, float time) {
        repeated.Note(offset, [&] {
            return Words{"key time", Digits(time) + ", as of the key before it", "a later one"};
        });
    }

    void CheckRotations(std::size_t i, const KeyTrack& track) {
        Alike rotations(IssueCode::rotationNotUnit, "track");
        std::uint64_t offset = KeysOffset(i) + offsetof(KTARotationSample, values);
        for (const KTARotationSample& sample : track.rotationSamples) {
            if (!IsUnit(sample.values)) {
                rotations.Note(offset, [&] {
                    return Words{"rotation", Listed(sample.values), "a quaternion of length 1"};
                });
            }
            offset += sizeof(KTARotationSample);
        }
        rotations.Report(findings_, i, part_);
    }

    // One export samples all tracks at the same times.
    void CheckTimes(std::size_t i, std::vector<float> times, std::size_t keySize) {
        if (!hasTimes_) {
            times_ = std::move(times);
            hasTimes_ = true;
        } else if (times.size() != times_.size()) {
            findings_.AddInBody(IssueCode::trackTimesDiffer, i, offsetof(KTAKeyTrack, keyCount),
                                {"key count", std::to_string(times.size()),
                                 std::to_string(times_.size()) + ", as in the first track"},
                                part_);
        } else {
            const auto [here, first] = std::mismatch(
                times.begin(), times.end(), times_.begin(),
                [](float a, float b) { return a == b || !std::isfinite(a) || !std::isfinite(b); });
            if (here != times.end()) {
                const auto key = static_cast<std::size_t>(here - times.begin());
                findings_.Add(
                    IssueCode::trackTimesDiffer, i, KeysOffset(i) + key * keySize,
                    {"key time", Digits(*here), Digits(*first) + ", as in the first track"}, part_,
                    1, "");
            }
        }
    }

    void CheckKeyframed(std::size_t i, const KeyTrack& track) {
        Alike repeated(IssueCode::keyTimeRepeated, "track");
        std::uint64_t offset = KeysOffset(i);
        for (std::size_t k = 0; k < track.keyframedKeys.size(); ++k) {
            const KeyframedKey& key = track.keyframedKeys[k];
            if (k > 0 && key.head.time == track.keyframedKeys[k - 1].head.time) {
                NoteRepeated(repeated, offset, key.head.time);
            }
            const auto handles = static_cast<std::uint64_t>(
                std::count(key.tangentCodes.begin(), key.tangentCodes.end(), kTangentBezier));
            offset += sizeof(KTAKeyHead) + kNumTangentCodes + handles * sizeof(KTATangent);
        }
        repeated.Report(findings_, i, part_);
    }

    Findings& findings_;
    std::string_view part_;      // the name of the last motion part
    std::uint32_t version_ = 0;  // of the first track
    bool hasTimes_ = false;
    std::vector<float> times_;  // of the first sampled track
};

// ---------------------------------------------------------------- actor and motion

double Distance(std::span<const float> a, std::span<const float> b, float sign) {
    double most = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        most = std::max(most, std::abs(double{a[i]} - double{sign} * b[i]));
    }
    return most;
}

// Scales are told in two ways and are not compared.
void ComparePose(Findings& findings, std::size_t chunk, const KTAMotionPart& part,
                 const KTANode& node) {
    constexpr double kTolerance = 1e-3;
    const std::string_view name = TextOf(part.nodeName);
    double size = 1;
    for (const float number : node.translation) {
        size = std::max(size, std::abs(double{number}));
    }
    if (Distance(part.translation, node.translation, 1) > kTolerance * size) {
        findings.AddInBody(IssueCode::motionPose, chunk, offsetof(KTAMotionPart, translation),
                           {"translation", Listed(part.translation),
                            Listed(node.translation) + ", that of the node"},
                           name);
    }
    // A quaternion and its negative are one rotation.
    if (std::min(Distance(part.rotation, node.rotation, 1),
                 Distance(part.rotation, node.rotation, -1)) > kTolerance) {
        findings.AddInBody(
            IssueCode::motionPose, chunk, offsetof(KTAMotionPart, rotation),
            {"rotation", Listed(part.rotation), Listed(node.rotation) + ", that of the node"},
            name);
    }
}

}  // namespace

void CheckTracks(Findings& findings) {
    TracksCheck check(findings);
    const std::vector<Chunk>& chunks = findings.TheFile().chunks;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        check.Check(i, chunks[i]);
    }
}

void CheckMotionAgainst(Findings& findings, const NodeTable& nodes, bool allNodes) {
    const std::vector<Chunk>& chunks = findings.TheFile().chunks;
    std::unordered_map<std::string_view, std::size_t> parts;
    bool anyKnown = false;
    for (const Chunk& chunk : chunks) {
        if (const auto* part = chunk.As<KTAMotionPart>()) {
            ++parts[TextOf(part->nodeName)];
            anyKnown = anyKnown || nodes.byName.contains(TextOf(part->nodeName));
        }
    }
    if (!anyKnown) {
        if (allNodes && !parts.empty()) {
            findings.AddOfFile(IssueCode::motionOtherScene,
                               {"", "no motion part", "those of one export"});
        }
        return;
    }
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        const auto* part = chunks[i].As<KTAMotionPart>();
        if (part == nullptr) {
            continue;
        }
        const std::string_view name = TextOf(part->nodeName);
        const auto node = nodes.byName.find(name);
        if (node == nodes.byName.end()) {
            if (allNodes) {
                findings.AddInBody(
                    IssueCode::motionNodeUnknown, i, 0,
                    {"node name", InQuotes(name), "that of a node of the actor file"}, name);
            }
        } else if (node->second.count == 1 && parts.at(name) == 1) {
            ComparePose(findings, i, *part, *nodes.records[node->second.first]);
        }
    }
}

}  // namespace kta
