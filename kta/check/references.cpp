// Whether what chunks refer to is there: nodes by number and by name, parents, materials, bones.
#include "kta/check/findings.h"

namespace kta {
namespace {

std::string Below(std::size_t count, const char* what) {
    return count == 0 ? std::string("none, no ") + what + " stands before it"
                      : "0 to " + std::to_string(count - 1) + ", a " + what + " of the file";
}

// ---------------------------------------------------------------- numbers

// Goes through the file's chunks with what stands before each.
class NumberCheck {
  public:
    NumberCheck(Findings& findings, const NodeTable& nodes) : findings_(findings), nodes_(nodes) {}

    void Check(std::size_t i, const Chunk& chunk) {
        if (chunk.As<KTANode>() != nullptr) {
            ++numNodes_;
        } else if (chunk.As<KTAMaterial>() != nullptr) {
            ++numMaterials_;
        } else if (const auto* layer = chunk.As<KTAMaterialLayer>()) {
            CheckLayer(i, *layer);
        } else if (const auto* mesh = chunk.As<Mesh>()) {
            CheckNode(i, mesh->head.nodeNumber);
            CheckSubMeshes(i, *mesh);
        } else if (const auto* weights = chunk.As<Weights>()) {
            CheckNode(i, weights->head.nodeNumber);
            CheckBones(i, *weights);
        } else if (const auto* limits = chunk.As<KTAJointLimits>()) {
            CheckNode(i, limits->nodeNumber);
        }
    }

  private:
    // All records begin with the node's number.
    void CheckNode(std::size_t i, std::int32_t number) {
        const std::string expected = Below(numNodes_, "node");
        if (number == -1) {
            findings_.AddInBody(IssueCode::nodeNone, i, 0, {"node number", "-1", expected});
        } else if (number < 0 || static_cast<std::size_t>(number) >= numNodes_) {
            findings_.AddInBody(IssueCode::nodeMissing, i, 0,
                                {"node number", std::to_string(number), expected});
        }
    }

    // The file keeps the number's low 16 bits.
    void CheckLayer(std::size_t i, const KTAMaterialLayer& layer) {
        const auto last = static_cast<std::int16_t>(static_cast<std::uint16_t>(numMaterials_ - 1));
        if (numMaterials_ > 0 && layer.parentMaterial != last) {
            findings_.AddInBody(IssueCode::layerMaterial, i,
                                offsetof(KTAMaterialLayer, parentMaterial),
                                {"parent material", std::to_string(layer.parentMaterial),
                                 std::to_string(last) + ", the material before it"},
                                TextOf(layer.textureFileName));
        }
    }

    void CheckSubMeshes(std::size_t i, const Mesh& mesh) {
        Alike missing(IssueCode::materialMissing, "mesh");
        for (const SubMesh& subMesh : mesh.subMeshes) {
            if (static_cast<std::size_t>(subMesh.materialNumber) >= numMaterials_) {
                missing.Note(subMesh.offset, [&] {
                    return Words{"material number", std::to_string(subMesh.materialNumber),
                                 Below(numMaterials_, "material")};
                });
            }
        }
        missing.Report(findings_, i, nodes_.NameOfNumber(mesh.head.nodeNumber));
    }

    void CheckBones(std::size_t i, const Weights& weights) {
        Alike missing(IssueCode::boneMissing, "chunk");
        Alike none(IssueCode::boneNone, "chunk");
        std::uint64_t offset = findings_.BodyOffset(i) + sizeof(KTAWeights);
        const KTAWeight* weight = weights.weights.data();
        for (const std::uint8_t count : weights.weightCounts) {
            ++offset;
            for (std::uint8_t k = 0; k < count; ++k, ++weight, offset += sizeof(KTAWeight)) {
                if (weight->bone >= 0 && static_cast<std::size_t>(weight->bone) < numNodes_) {
                    continue;
                }
                (weight->bone == -1 ? none : missing).Note(offset, [&] {
                    return Words{"bone", std::to_string(weight->bone), Below(numNodes_, "node")};
                });
            }
        }
        missing.Report(findings_, i, nodes_.NameOfNumber(weights.head.nodeNumber));
        none.Report(findings_, i, nodes_.NameOfNumber(weights.head.nodeNumber));
    }

    Findings& findings_;
    const NodeTable& nodes_;
    std::size_t numNodes_ = 0;  // so far
    std::size_t numMaterials_ = 0;
};

// ---------------------------------------------------------------- names

void CheckName(Findings& findings, const NodeTable& nodes, IssueCode code, std::size_t chunk,
               std::uint64_t at, const char* what, std::string_view name,
               std::string_view subject) {
    if (!nodes.byName.contains(name)) {
        findings.AddInBody(code, chunk, at, {what, InQuotes(name), "the name of a node"}, subject);
    }
}

void CheckNames(Findings& findings, const NodeTable& nodes, std::size_t i, const Chunk& chunk) {
    const auto check = [&](IssueCode code, std::uint64_t at, const char* what,
                           std::string_view name, std::string_view subject) {
        CheckName(findings, nodes, code, i, at, what, name, subject);
    };
    constexpr IssueCode kUnknown = IssueCode::nodeNameUnknown;
    if (const auto* morph = chunk.As<Morph>()) {
        check(kUnknown, sizeof(KTAMorphChannel), "node name", TextOf(morph->head.nodeName),
              TextOf(morph->channel.channelName));
    } else if (const auto* wire = chunk.As<KTAWire>()) {
        check(kUnknown, offsetof(KTAWire, firstNodeName), "first node name",
              TextOf(wire->firstNodeName), "");
        check(kUnknown, offsetof(KTAWire, secondNodeName), "second node name",
              TextOf(wire->secondNodeName), "");
    } else if (const auto* chain = chunk.As<KTAIKChain>()) {
        const std::string_view node = TextOf(chain->nodeName);
        check(kUnknown, offsetof(KTAIKChain, nodeName), "node name", node, "");
        check(IssueCode::jointUnknown, offsetof(KTAIKChain, startJoint), "start joint",
              TextOf(chain->startJoint), node);
        check(IssueCode::jointUnknown, offsetof(KTAIKChain, endJoint), "end joint",
              TextOf(chain->endJoint), node);
    }
}

// ---------------------------------------------------------------- hierarchy

constexpr std::size_t kNoParent = ~std::size_t{0};

// By name, and told of where no node has it.
std::vector<std::size_t> Parents(Findings& findings, const NodeTable& nodes) {
    std::vector<std::size_t> parents(nodes.records.size(), kNoParent);
    for (std::size_t i = 0; i < parents.size(); ++i) {
        const std::string_view name = TextOf(nodes.records[i]->parentName);
        const auto use = nodes.byName.find(name);
        if (use != nodes.byName.end()) {
            parents[i] = name.empty() ? kNoParent : use->second.first;
        } else if (!name.empty() && findings.IsWhole()) {
            findings.AddInBody(
                IssueCode::parentUnknown, nodes.chunks[i], offsetof(KTANode, parentName),
                {"parent name", InQuotes(name), "the name of a node, or none"}, nodes.NameOf(i));
        }
    }
    return parents;
}

// A circle in which several nodes have one name may be no circle in the scene.
void ReportCycle(Findings& findings, const NodeTable& nodes,
                 const std::vector<std::size_t>& parents, std::size_t node) {
    std::size_t first = node;
    std::uint64_t length = 0;
    for (std::size_t at = node; length == 0 || at != node; at = parents[at], ++length) {
        if (nodes.byName.at(nodes.NameOf(at)).count > 1) {
            return;
        }
        first = std::min(first, at);
    }
    findings.AddInBody(
        IssueCode::parentCycle, nodes.chunks[first], offsetof(KTANode, parentName),
        {"parent name", InQuotes(TextOf(nodes.records[first]->parentName)),
         "a node that does not hang from this one (a circle of " + std::to_string(length) + ")"},
        nodes.NameOf(first));
}

void CheckCycles(Findings& findings, const NodeTable& nodes,
                 const std::vector<std::size_t>& parents) {
    std::vector<std::size_t> visits(parents.size(), 0);  // from which node one came by, 1 the first
    for (std::size_t start = 0; start < parents.size(); ++start) {
        std::size_t at = start;
        for (; at != kNoParent && visits[at] == 0; at = parents[at]) {
            visits[at] = start + 1;
        }
        if (at != kNoParent && visits[at] == start + 1) {
            ReportCycle(findings, nodes, parents, at);
        }
    }
}

void CheckNodeNames(Findings& findings, const NodeTable& nodes) {
    std::unordered_map<std::string_view, std::size_t> seen;
    for (std::size_t i = 0; i < nodes.records.size(); ++i) {
        const std::string_view name = nodes.NameOf(i);
        const std::size_t uses = nodes.byName.at(name).count;
        if (name.empty()) {
            findings.AddInBody(IssueCode::nodeNameEmpty, nodes.chunks[i], 0,
                               {"node name", "empty", "a name"});
        } else if (++seen[name] == 2) {
            findings.Add(
                IssueCode::nodeNameDuplicate, nodes.chunks[i], findings.BodyOffset(nodes.chunks[i]),
                {"node name", "that of " + std::to_string(uses) + " nodes", "a name of its own"},
                name, uses - 1, "nodes");
        }
    }
}

}  // namespace

void CheckReferences(Findings& findings, const NodeTable& nodes) {
    NumberCheck numbers(findings, nodes);
    const std::vector<Chunk>& chunks = findings.TheFile().chunks;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        numbers.Check(i, chunks[i]);
        if (findings.IsWhole()) {
            CheckNames(findings, nodes, i, chunks[i]);
        }
    }
    CheckNodeNames(findings, nodes);
    CheckCycles(findings, nodes, Parents(findings, nodes));
}

}  // namespace kta
