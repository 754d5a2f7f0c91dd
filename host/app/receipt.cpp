#include "host/app/receipt.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <unordered_map>

#include "host/app/exit_status.h"
#include "host/app/json_parts.h"
#include "kta/dump.h"
#include "kta/text.h"

namespace maxhost::app {

// ---------------------------------------------------------------- costs

namespace {

constexpr int kReceiptVersion = 1;

class CostCounter {
  public:
    CostCounter(const scene::Scene& scene, const SceneMatch& match, const kta::NodeTree& tree)
        : scene_(scene), match_(match), tree_(tree) {}

    void Count(const kta::File& file) {
        for (std::size_t i = 0; i < file.chunks.size(); ++i) {
            const kta::Chunk& chunk = file.chunks[i];
            const std::uint64_t end =
                i + 1 < file.chunks.size() ? file.chunks[i + 1].offset : file.end;
            kta::ChunkTotal& total = costs_[OwnerOf(chunk)][chunk.type->id];
            total.type = chunk.type;
            ++total.count;
            total.bytes += end - chunk.offset;
        }
    }

    std::vector<NodeCost> Costs() const {
        std::vector<NodeCost> costs;
        for (const auto& [owner, totals] : costs_) {
            NodeCost cost{PathOfOwner(owner), 0, {}};
            for (const auto& [id, total] : totals) {
                cost.bytes += total.bytes;
                cost.chunks.push_back(total);
            }
            costs.push_back(std::move(cost));
        }
        std::ranges::stable_sort(costs, std::greater(), &NodeCost::bytes);
        return costs;
    }

  private:
    // Positions of node chunks; behind them kMaterials, and kUnknown for names that no node has.
    static constexpr std::size_t kMaterials = kta::kNoNode - 1;

    std::size_t Number(std::int32_t number) const {
        const auto node = static_cast<std::size_t>(number);
        return number >= 0 && node < nodes_ ? node : kta::kNoNode;
    }
    std::size_t Named(std::string_view name) const {
        const auto found = byName_.find(name);
        return found == byName_.end() ? kta::kNoNode : found->second;
    }

    // The last node of the name so far, as chunks follow their node's; in the motion file any.
    std::size_t OwnerOf(const kta::Chunk& chunk) {
        if (const auto* const node = chunk.As<KTANode>()) {
            byName_[kta::TextOf(node->nodeName)] = nodes_;
            return nodes_++;
        }
        if (const auto* const mesh = chunk.As<kta::Mesh>()) {
            return Number(mesh->head.nodeNumber);
        }
        if (const auto* const weights = chunk.As<kta::Weights>()) {
            return Number(weights->head.nodeNumber);
        }
        if (const auto* const limits = chunk.As<KTAJointLimits>()) {
            return Number(limits->nodeNumber);
        }
        if (const auto* const morph = chunk.As<kta::Morph>()) {
            return Named(kta::TextOf(morph->head.nodeName));
        }
        if (const auto* const wire = chunk.As<KTAWire>()) {
            return Named(kta::TextOf(wire->firstNodeName));
        }
        if (const auto* const chain = chunk.As<KTAIKChain>()) {
            return Named(kta::TextOf(chain->nodeName));
        }
        if (const auto* const part = chunk.As<KTAMotionPart>()) {
            part_ = Named(kta::TextOf(part->nodeName));
            return part_;
        }
        return chunk.As<kta::KeyTrack>() ? part_ : kMaterials;
    }

    std::string PathOfOwner(std::size_t owner) const {
        if (owner == kMaterials || owner == kta::kNoNode) {
            return owner == kMaterials ? "materials" : "nodes that are not there";
        }
        const int node = match_.SceneNodeOf(owner);
        return node != scene::kNone ? PathOf(scene_, node)
                                    : kta::Escaped(kta::TextOf(tree_.Record(owner).nodeName));
    }

    const scene::Scene& scene_;
    const SceneMatch& match_;
    const kta::NodeTree& tree_;
    std::map<std::size_t, std::map<std::uint32_t, kta::ChunkTotal>> costs_;
    std::unordered_map<std::string_view, std::size_t> byName_;
    std::size_t nodes_ = 0;
    std::size_t part_ = kta::kNoNode;
};

}  // namespace

std::vector<NodeCost> CostsOf(const scene::Scene& scene, const SceneMatch& match,
                              const kta::NodeTree& tree, const kta::File& actor,
                              const kta::File& motion) {
    CostCounter counter(scene, match, tree);
    counter.Count(actor);
    counter.Count(motion);
    return counter.Costs();
}

// ---------------------------------------------------------------- deviation and judgement

NamedDeviation Named(const Deviation& deviation, const scene::Scene& scene) {
    const auto named = [&](const WorstCase& worst, bool hasFrame) {
        NamedWorst result;
        result.value = worst.value;
        result.percent = deviation.Percent(worst);
        result.path = worst.node == scene::kNone ? "" : PathOf(scene, worst.node);
        result.vertex = worst.vertex;
        result.bone = worst.bone == scene::kNone ? "" : PathOf(scene, worst.bone);
        result.channel = worst.channel;
        result.frame = hasFrame ? std::optional(worst.frame) : std::nullopt;
        return result;
    };
    return {.size = deviation.size,
            .vertices = deviation.vertices,
            .poses = deviation.poses,
            .times = deviation.times,
            .skinnedVertices = deviation.skinnedVertices,
            .morphPoints = deviation.morphPoints,
            .normals = deviation.normals,
            .coordinatePairs = deviation.coordinatePairs,
            .vertex = named(deviation.vertex, false),
            .pose = named(deviation.pose, true),
            .angle = named(deviation.angle, true),
            .skin = named(deviation.skin, true),
            .morph = named(deviation.morph, false),
            .normal = named(deviation.normal, false),
            .coordinates = named(deviation.coordinates, false),
            .worst = deviation.Worst()};
}

std::size_t NewLosses(const Receipt& receipt) {
    return static_cast<std::size_t>(
        std::ranges::count(receipt.losses, false, &LedgerEntry::isAccepted));
}

namespace {

// What deviates most, in percents and degrees alike, and by how much.
std::string WorstOf(const NamedDeviation& deviation) {
    const std::pair<const char*, double> kinds[] = {
        {"vertices of meshes are off by ", deviation.vertex.percent},
        {"nodes are off by ", deviation.pose.percent},
        {"vertices of skins are off by ", deviation.skin.percent},
        {"points of morph targets are off by ", deviation.morph.percent}};
    const auto* worst = &kinds[0];
    for (const auto& kind : kinds) {
        worst = kind.second <= worst->second ? worst : &kind;
    }
    if (!(deviation.angle.value <= worst->second)) {
        return "nodes are turned by " + Figure(deviation.angle.value) + " degrees";
    }
    return worst->first + Figure(worst->second) + " % of the scene's size";
}

}  // namespace

std::vector<std::string> Objections(const Receipt& receipt) {
    constexpr std::size_t kMostLosses = 10;
    std::vector<std::string> lines;
    if (receipt.maxError && receipt.deviation && !(receipt.deviation->worst <= *receipt.maxError)) {
        lines.push_back(WorstOf(*receipt.deviation) + ", expected at most " +
                        Figure(*receipt.maxError));
    }
    std::size_t losses = 0;
    for (const LedgerEntry& loss : receipt.losses) {
        if (!receipt.failsByLosses || loss.isAccepted || ++losses > kMostLosses) {
            continue;
        }
        lines.push_back("new loss: " + std::string(scene::KindOf(loss.code).code) + ": " +
                        (loss.path.empty() ? "" : loss.path + ": ") +
                        (loss.subject.empty() ? "" : loss.subject + ": ") + loss.text);
    }
    if (losses > kMostLosses) {
        lines.push_back("and " + kta::Counted(losses - kMostLosses, "other new loss"));
    }
    return lines;
}

// ---------------------------------------------------------------- JSON

namespace {

// Six digits, so that the last bits of another machine's arithmetic do not show.
Json Number(double value) {
    return std::isfinite(value) ? Json::parse(Figure(value)) : Json("not finite");
}

Json JsonOf(const NamedWorst& worst, const char* unit) {
    Json json = {{unit, Number(worst.value)}};
    if (unit == std::string("distance")) {
        json["percent"] = Number(worst.percent);
    }
    if (worst.path.empty()) {
        return json;
    }
    json["path"] = Text(worst.path);
    if (worst.vertex >= 0) {
        json["vertex"] = worst.vertex;
    }
    if (!worst.bone.empty()) {
        json["bone"] = Text(worst.bone);
    }
    if (!worst.channel.empty()) {
        json["channel"] = Text(worst.channel);
    }
    if (worst.frame) {
        json["frame"] = Number(*worst.frame);
    }
    return json;
}

Json JsonOf(const NamedDeviation& deviation) {
    return {
        {"size", Number(deviation.size)},
        {"worst", Number(deviation.worst)},
        {"vertices",
         {{"compared", deviation.vertices}, {"worst", JsonOf(deviation.vertex, "distance")}}},
        {"poses",
         {{"compared", deviation.poses},
          {"times", deviation.times},
          {"worst", JsonOf(deviation.pose, "distance")},
          {"worstAngle", JsonOf(deviation.angle, "degrees")}}},
        {"skins",
         {{"compared", deviation.skinnedVertices}, {"worst", JsonOf(deviation.skin, "distance")}}},
        {"morphs",
         {{"compared", deviation.morphPoints}, {"worst", JsonOf(deviation.morph, "distance")}}},
        {"normals",
         {{"compared", deviation.normals}, {"worst", JsonOf(deviation.normal, "degrees")}}},
        {"textureCoordinates",
         {{"compared", deviation.coordinatePairs},
          {"worst", JsonOf(deviation.coordinates, "difference")}}}};
}

}  // namespace

Json JsonOf(const LedgerEntry& loss) {
    const scene::LossKind& kind = scene::KindOf(loss.code);
    return {{"code", kind.code},       {"stage", NameOf(kind.stage)},
            {"path", Text(loss.path)}, {"subject", Text(loss.subject)},
            {"count", loss.count},     {"reason", Text(loss.text)},
            {"remedy", kind.remedy},   {"accepted", loss.isAccepted}};
}

namespace {

Json TimesOf(const std::vector<SpentTime>& times, std::size_t most) {
    Json list = Json::array();
    for (std::size_t i = 0; i < std::min(most, times.size()); ++i) {
        list.push_back({{"name", Text(times[i].name)}, {"seconds", Number(times[i].seconds)}});
    }
    return list;
}

Json TimesOf(const Receipt& receipt) {
    constexpr std::size_t kMostNodes = 100;
    return {{"reading", Number(receipt.readingSeconds)},
            {"exporting", Number(receipt.exportingSeconds)},
            {"checking", Number(receipt.checkingSeconds)},
            {"comparing", Number(receipt.comparingSeconds)},
            {"stages", TimesOf(receipt.times.Stages(), kMostNodes)},
            {"nodes", TimesOf(receipt.times.Nodes(), kMostNodes)}};
}

}  // namespace

std::string JsonOf(const Receipt& receipt, bool withTimes) {
    Json json = {{"receipt", kReceiptVersion},      {"program", "hdo-export"},
                 {"version", HDO_VERSION},          {"scene", Text(receipt.scene)},
                 {"status", receipt.status},        {"options", OptionsOf(receipt.inForce)},
                 {"optionOrigins", receipt.origins}};
    if (receipt.unit) {
        json["unit"] = JsonOf(*receipt.unit);
    }
    Json& files = json["files"] = Json::array();
    for (const FileReport& file : receipt.files) {
        files.push_back({{"name", Text(file.path.filename().string())},
                         {"kind", file.kind},
                         {"bytes", file.bytes},
                         {"chunks", ChunksOf(file.chunks)}});
    }
    json["nodes"] = {{"inScene", receipt.nodesInScene}, {"exported", receipt.nodesExported}};
    Json& faults = json["faults"] = Json::array();
    for (const std::string& fault : receipt.faults) {
        faults.push_back(Text(fault));
    }
    json["issues"] = IssuesOf(receipt.issues);
    json["deviation"] = receipt.deviation ? JsonOf(*receipt.deviation) : Json();
    json["maxError"] = receipt.maxError ? Number(*receipt.maxError) : Json();
    json["newLosses"] = NewLosses(receipt);
    Json& losses = json["losses"] = Json::array();
    for (const LedgerEntry& loss : receipt.losses) {
        losses.push_back(JsonOf(loss));
    }
    Json& costs = json["costs"] = Json::array();
    for (const NodeCost& cost : receipt.costs) {
        costs.push_back(
            {{"path", Text(cost.path)}, {"bytes", cost.bytes}, {"chunks", ChunksOf(cost.chunks)}});
    }
    if (withTimes) {
        json["times"] = TimesOf(receipt);
    }
    return json.dump(2) + "\n";
}

// ---------------------------------------------------------------- accepted losses

AcceptedLosses::AcceptedLosses(const std::string& receipt) {
    const auto refuse = [&](const std::string& reason) {
        throw Failure(kExitRefused, receipt, reason + ", expected a receipt of hdo-export");
    };
    std::ifstream file(receipt, std::ios::binary);
    if (!file) {
        refuse("cannot be opened for reading");
    }
    const Json json = Json::parse(file, nullptr, false);
    if (!json.is_object() || json.value("receipt", Json()) != kReceiptVersion ||
        !json.value("losses", Json()).is_array()) {
        refuse(json.is_discarded() ? "is not JSON" : "is JSON of another kind");
    }
    for (const Json& loss : json["losses"]) {
        const auto text = [&](const char* member) {
            const Json value = loss.is_object() ? loss.value(member, Json()) : Json();
            if (!value.is_string()) {
                refuse(std::string("has a loss without a text \"") + member + "\"");
            }
            return value.get<std::string>();
        };
        const Json count = loss.value("count", Json(1));
        if (!count.is_number_unsigned()) {
            refuse("has a loss whose count is no whole number");
        }
        counts_[{text("code"), text("path"), text("subject")}] += count.get<std::size_t>();
    }
}

void AcceptedLosses::Accept(std::vector<LedgerEntry>& losses) const {
    std::map<Key, std::size_t> left = counts_;
    for (LedgerEntry& loss : losses) {
        const auto found = left.find(
            {scene::KindOf(loss.code).code, kta::ToUtf8(loss.path), kta::ToUtf8(loss.subject)});
        loss.isAccepted = found != left.end() && found->second >= loss.count;
        if (loss.isAccepted) {
            found->second -= loss.count;
        }
    }
}

}  // namespace maxhost::app
