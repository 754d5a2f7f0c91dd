// Where chunks may stand: materials and their layers, then nodes, each with what hangs from it.
#include "kta/check/findings.h"

namespace kta {
namespace {

constexpr const char* kNoMaterialName = "Extra material";

std::string Named(const char* what, std::string_view name) {
    return what + (" " + InQuotes(name));
}

// ---------------------------------------------------------------- materials

bool IsMaterialOrLayer(const Chunk& chunk) {
    return chunk.type->id == kChunkMaterial || chunk.type->id == kChunkMaterialLayer;
}

void CheckFirstMaterial(Findings& findings) {
    const File& file = findings.TheFile();
    if (file.chunks.empty()) {
        if (findings.IsWhole()) {
            findings.AddOfFile(IssueCode::firstMaterial,
                               {"first chunk", "missing", Named("material", kNoMaterialName)});
        }
        return;
    }
    const auto* material = file.chunks.front().As<KTAMaterial>();
    if (material == nullptr || TextOf(material->materialName) != kNoMaterialName) {
        findings.AddAtChunk(IssueCode::firstMaterial, 0,
                            {"first chunk",
                             material != nullptr ? Named("material", TextOf(material->materialName))
                                                 : "a chunk of the kind " +
                                                       InQuotes(file.chunks.front().type->name),
                             Named("material", kNoMaterialName)});
    }
}

void CheckMaterialPlaces(Findings& findings) {
    const std::vector<Chunk>& chunks = findings.TheFile().chunks;
    const KTANode* lastNode = nullptr;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        const auto* node = chunks[i].As<KTANode>();
        lastNode = node != nullptr ? node : lastNode;
        if (!IsMaterialOrLayer(chunks[i])) {
            continue;
        }
        if (lastNode != nullptr) {
            findings.AddAtChunk(IssueCode::materialPlace, i,
                                {"", Named("node", TextOf(lastNode->nodeName)), "all nodes"});
        }
    }
}

// ---------------------------------------------------------------- nodes

// What may hang from a node, in its order.
enum Rank { kRankNode, kRankMesh, kRankWeights, kRankLimits, kRankChain, kRankWire, kRankMorph };

// The nodes that may go on: the last one, and below it those whose bones are being written between
// their mesh and their weights.
class OpenNodes {
  public:
    OpenNodes(Findings& findings, const NodeTable& nodes) : findings_(findings), nodes_(nodes) {
        positions_.resize(nodes.records.size(), kClosed);
    }

    void Begin() {
        positions_[count_] = open_.size();
        open_.push_back({count_++, kRankNode});
    }

    // A chunk that gives its node's number, where that is one of the nodes before it.
    void AddByNumber(std::size_t chunk, Rank rank, std::int32_t number) {
        if (number < 0 || static_cast<std::size_t>(number) >= count_) {
            return;
        }
        const auto node = static_cast<std::size_t>(number);
        if (rank == kRankWeights && positions_[node] != kClosed &&
            open_[positions_[node]].rank == kRankMesh) {
            CloseAbove(node);
        }
        Add(chunk, rank, open_.empty() || open_.back().node != node, nodes_.NameOf(node));
    }

    // A chunk that gives its node's name, where a node has it.
    void AddByName(std::size_t chunk, Rank rank, std::string_view name) {
        if (nodes_.byName.contains(name)) {
            Add(chunk, rank, open_.empty() || nodes_.NameOf(open_.back().node) != name, name);
        }
    }

  private:
    struct Open {
        std::size_t node;
        Rank rank;  // of the last of its chunks
    };

    void CloseAbove(std::size_t node) {
        for (; open_.back().node != node; open_.pop_back()) {
            positions_[open_.back().node] = kClosed;
        }
    }

    void Add(std::size_t chunk, Rank rank, bool elsewhere, std::string_view name) {
        const Rank last = open_.empty() ? kRankNode : open_.back().rank;
        const bool once = rank <= kRankChain;
        if (elsewhere) {
            Misplaced(chunk, "with its node " + InQuotes(name), name);
        } else if (rank < last || (rank == kRankWeights && last < kRankMesh)) {
            Misplaced(chunk,
                      rank == kRankWeights ? "behind its node's mesh"
                                           : "before it, in the order of a node's chunks",
                      name);
        } else if (rank == last && once) {
            findings_.AddAtChunk(
                IssueCode::chunkTwice, chunk,
                {"", Named("node", name), "one " + std::string(TypeNameOf(chunk)) + " chunk"},
                name);
        } else {
            open_.back().rank = rank;
        }
    }

    const char* TypeNameOf(std::size_t chunk) const {
        return findings_.TheFile().chunks[chunk].type->name;
    }

    void Misplaced(std::size_t chunk, const std::string& expected, std::string_view name) {
        const std::string before =
            chunk == 0 ? "the header" : "a chunk of the kind " + InQuotes(TypeNameOf(chunk - 1));
        findings_.AddAtChunk(IssueCode::chunkPlace, chunk, {"", before, expected}, name);
    }

    static constexpr std::size_t kClosed = ~std::size_t{0};

    Findings& findings_;
    const NodeTable& nodes_;
    std::size_t count_ = 0;               // of nodes so far
    std::vector<Open> open_;              // the last one on top
    std::vector<std::size_t> positions_;  // of each node in `open_`
};

void CheckNodePlaces(Findings& findings, const NodeTable& nodes) {
    OpenNodes open(findings, nodes);
    const std::vector<Chunk>& chunks = findings.TheFile().chunks;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        const Chunk& chunk = chunks[i];
        if (chunk.As<KTANode>() != nullptr) {
            open.Begin();
        } else if (const auto* mesh = chunk.As<Mesh>()) {
            open.AddByNumber(i, kRankMesh, mesh->head.nodeNumber);
        } else if (const auto* weights = chunk.As<Weights>()) {
            open.AddByNumber(i, kRankWeights, weights->head.nodeNumber);
        } else if (const auto* limits = chunk.As<KTAJointLimits>()) {
            open.AddByNumber(i, kRankLimits, limits->nodeNumber);
        } else if (const auto* chain = chunk.As<KTAIKChain>()) {
            open.AddByName(i, kRankChain, TextOf(chain->nodeName));
        } else if (const auto* wire = chunk.As<KTAWire>()) {
            open.AddByName(i, kRankWire, TextOf(wire->secondNodeName));
        } else if (const auto* morph = chunk.As<Morph>()) {
            open.AddByName(i, kRankMorph, TextOf(morph->head.nodeName));
        }
    }
}

}  // namespace

void CheckPlaces(Findings& findings, const NodeTable& nodes) {
    CheckFirstMaterial(findings);
    CheckMaterialPlaces(findings);
    CheckNodePlaces(findings, nodes);
}

}  // namespace kta
