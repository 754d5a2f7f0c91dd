// Skinning weights and morphs beside their meshes, and joint limits.
#include <cmath>

#include "kta/check/findings.h"
#include "kta/cursor.h"

namespace kta {
namespace {

// The original vertices of the meshes, by the number of their node.
using MeshSizes = std::unordered_map<std::int32_t, std::int32_t>;

MeshSizes SizesOf(const File& file) {
    MeshSizes sizes;
    for (const Chunk& chunk : file.chunks) {
        if (const auto* mesh = chunk.As<Mesh>()) {
            sizes.emplace(mesh->head.nodeNumber, mesh->head.originalVertexCount);
        }
    }
    return sizes;
}

// ---------------------------------------------------------------- weights

class WeightsCheck {
  public:
    WeightsCheck(Findings& findings, std::size_t chunk, std::string_view node)
        : findings_(findings), chunk_(chunk), node_(node) {}

    void Check(const Weights& weights) {
        std::uint64_t offset = findings_.BodyOffset(chunk_) + sizeof(KTAWeights);
        const KTAWeight* first = weights.weights.data();
        for (const std::uint8_t count : weights.weightCounts) {
            CheckVertex(offset, {first, count});
            first += count;
            offset += 1 + count * sizeof(KTAWeight);
        }
        for (const Alike* alike : {&range_, &sums_, &twice_, &none_}) {
            alike->Report(findings_, chunk_, node_);
        }
    }

  private:
    void CheckVertex(std::uint64_t offset, std::span<const KTAWeight> weights) {
        constexpr double kSumTolerance = 0.01;
        if (weights.empty()) {
            none_.Note(offset, [] { return Words{"number of weights", "0", "one at least"}; });
            return;
        }
        double sum = 0;
        bool inRange = true;
        for (std::size_t i = 0; i < weights.size(); ++i) {
            const std::uint64_t at = offset + 1 + i * sizeof(KTAWeight);
            inRange = CheckRange(at + offsetof(KTAWeight, weight), weights[i].weight) && inRange;
            CheckBone(at, weights, i);
            sum += weights[i].weight;
        }
        if (inRange && std::abs(sum - 1) > kSumTolerance) {
            sums_.Note(offset, [&] {
                return Words{"sum of a vertex's weights", Digits(static_cast<float>(sum)), "1"};
            });
        }
    }

    // Weights that are not finite are a fault of their own.
    bool CheckRange(std::uint64_t offset, float weight) {
        constexpr float kTolerance = 1e-4f;
        if (weight < 0 || weight > 1 + kTolerance) {
            range_.Note(offset, [&] { return Words{"weight", Digits(weight), "0 to 1"}; });
        }
        return weight >= 0 && weight <= 1 + kTolerance;
    }

    // A vertex has 255 weights at most, and few as a rule.
    void CheckBone(std::uint64_t offset, std::span<const KTAWeight> weights, std::size_t i) {
        for (std::size_t k = 0; k < i; ++k) {
            if (weights[k].bone == weights[i].bone && weights[i].bone != -1) {
                twice_.Note(offset, [&] {
                    return Words{"bone", std::to_string(weights[i].bone) + ", as before",
                                 "each bone once a vertex"};
                });
                return;
            }
        }
    }

    Findings& findings_;
    std::size_t chunk_;
    std::string_view node_;
    Alike range_{IssueCode::weightRange, "skin"};
    Alike sums_{IssueCode::weightSum, "skin"};
    Alike twice_{IssueCode::weightBoneTwice, "skin"};
    Alike none_{IssueCode::weightsNone, "skin"};
};

// A skin without context has no vertices at all.
void CheckVertexCount(Findings& findings, std::size_t chunk, const Weights& weights,
                      const MeshSizes& meshes, std::string_view node) {
    const auto mesh = meshes.find(weights.head.nodeNumber);
    if (mesh == meshes.end() || weights.vertexCount == static_cast<std::uint32_t>(mesh->second)) {
        return;
    }
    const std::string expected =
        std::to_string(mesh->second) + ", as many as the mesh has original vertices";
    const bool none = weights.vertexCount == 0;
    findings.Add(none ? IssueCode::weightsNone : IssueCode::skinVertexCount, chunk,
                 findings.TheFile().chunks[chunk].offset + offsetof(KTAChunkHeader, size),
                 {"number of the skin's vertices", std::to_string(weights.vertexCount), expected},
                 node, 1, "skin");
}

// ---------------------------------------------------------------- morphs

void CheckMorph(Findings& findings, std::size_t chunk, const Morph& morph, const NodeTable& nodes,
                const MeshSizes& meshes) {
    constexpr float kMostRange = 65535;
    const std::string_view channel = TextOf(morph.channel.channelName);
    if (morph.head.maximum - morph.head.minimum > kMostRange) {
        findings.AddInBody(IssueCode::morphFlattened, chunk,
                           sizeof(KTAMorphChannel) + offsetof(KTAMorphPoints, minimum),
                           {"range of the coordinates",
                            Digits(morph.head.maximum - morph.head.minimum), "65535 at most"},
                           channel);
    }
    const auto node = nodes.byName.find(TextOf(morph.head.nodeName));
    if (node == nodes.byName.end() || node->second.count > 1) {
        return;
    }
    const auto mesh = meshes.find(static_cast<std::int32_t>(node->second.first));
    if (mesh != meshes.end() && mesh->second != morph.head.pointCount) {
        findings.AddInBody(
            IssueCode::morphVertexCount, chunk,
            sizeof(KTAMorphChannel) + offsetof(KTAMorphPoints, pointCount),
            {"point count", std::to_string(morph.head.pointCount),
             std::to_string(mesh->second) + ", as many as the mesh has original vertices"},
            channel);
    }
}

// ---------------------------------------------------------------- joint limits

void CheckLimits(Findings& findings, std::size_t chunk, const KTAJointLimits& limits,
                 std::string_view node) {
    struct Part {
        const char* what;
        const float* minimum;
        const float* maximum;
        const Plinth::UInt8* limited;
        std::size_t at;
    };
    const Part parts[] = {{"position minimum", limits.positionMinimum, limits.positionMaximum,
                           limits.positionLimited, offsetof(KTAJointLimits, positionMinimum)},
                          {"rotation minimum", limits.rotationMinimum, limits.rotationMaximum,
                           limits.rotationLimited, offsetof(KTAJointLimits, rotationMinimum)}};
    for (const Part& part : parts) {
        for (std::size_t i = 0; i < 3; ++i) {
            if (part.limited[i] != 0 && part.minimum[i] > part.maximum[i]) {
                findings.AddInBody(IssueCode::jointLimitOrder, chunk, part.at + i * sizeof(float),
                                   {part.what, Digits(part.minimum[i]),
                                    "at most " + Digits(part.maximum[i]) + ", the maximum"},
                                   node);
            }
        }
    }
}

}  // namespace

void CheckSkins(Findings& findings, const NodeTable& nodes) {
    const std::vector<Chunk>& chunks = findings.TheFile().chunks;
    const MeshSizes meshes = SizesOf(findings.TheFile());
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        if (const auto* weights = chunks[i].As<Weights>()) {
            const std::string_view node = nodes.NameOfNumber(weights->head.nodeNumber);
            WeightsCheck(findings, i, node).Check(*weights);
            CheckVertexCount(findings, i, *weights, meshes, node);
        }
    }
}

void CheckRigs(Findings& findings, const NodeTable& nodes) {
    const std::vector<Chunk>& chunks = findings.TheFile().chunks;
    const MeshSizes meshes = SizesOf(findings.TheFile());
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        if (const auto* morph = chunks[i].As<Morph>()) {
            CheckMorph(findings, i, *morph, nodes, meshes);
        } else if (const auto* limits = chunks[i].As<KTAJointLimits>()) {
            CheckLimits(findings, i, *limits, nodes.NameOfNumber(limits->nodeNumber));
        }
    }
}

}  // namespace kta
