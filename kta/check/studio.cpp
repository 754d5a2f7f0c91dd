// The rules of a studio: budgets of a file, and how its names look.
#include <regex>
#include <set>

#include "kta/check/findings.h"

namespace kta {
namespace {

// What the budgets of a whole file limit.
struct Totals {
    std::uint64_t nodes = 0;
    std::set<std::size_t> bones;  // numbers of nodes
    std::uint64_t triangles = 0;
    std::uint64_t vertices = 0;
    std::uint64_t materials = 0;
    std::set<std::string_view> textures;
    std::uint64_t keys = 0;
};

void Count(const Chunk& chunk, Totals& totals) {
    if (const auto* node = chunk.As<KTANode>()) {
        if (node->isBone != 0) {
            totals.bones.insert(totals.nodes);
        }
        ++totals.nodes;
    } else if (const auto* mesh = chunk.As<Mesh>(); mesh != nullptr && !mesh->head.isCollision) {
        totals.triangles += static_cast<std::uint64_t>(mesh->head.indexCount) / 3;
        totals.vertices += static_cast<std::uint64_t>(mesh->head.vertexCount);
    } else if (const auto* weights = chunk.As<Weights>()) {
        for (const KTAWeight& weight : weights->weights) {
            if (weight.bone >= 0) {
                totals.bones.insert(static_cast<std::size_t>(weight.bone));
            }
        }
    } else if (chunk.As<KTAMaterial>() != nullptr) {
        ++totals.materials;
    } else if (const auto* layer = chunk.As<KTAMaterialLayer>()) {
        totals.textures.insert(TextOf(layer->textureFileName));
    } else if (const auto* track = chunk.As<KeyTrack>()) {
        totals.keys += track->head.keyCount;
    }
}

void CheckBudgets(Findings& findings, const StudioRules& rules) {
    Totals totals;
    for (const Chunk& chunk : findings.TheFile().chunks) {
        Count(chunk, totals);
    }
    const std::uint64_t extra = totals.materials > 0 ? 1 : 0;
    const std::pair<IssueCode, std::pair<const char*, std::uint64_t>> counts[] = {
        {IssueCode::ruleNodes, {"number of nodes", totals.nodes}},
        {IssueCode::ruleBones, {"number of bones", totals.bones.size()}},
        {IssueCode::ruleTriangles, {"number of triangles", totals.triangles}},
        {IssueCode::ruleVertices, {"number of vertices", totals.vertices}},
        {IssueCode::ruleMaterials, {"number of materials", totals.materials - extra}},
        {IssueCode::ruleTextures, {"number of textures", totals.textures.size()}},
        {IssueCode::ruleKeys, {"number of keys", totals.keys}},
        {IssueCode::ruleFileSize, {"number of bytes", findings.TheFile().size}}};
    for (const auto& [code, count] : counts) {
        const auto most = rules.budgets.find(code);
        if (most != rules.budgets.end() && count.second > most->second) {
            findings.AddOfFile(code, {count.first, std::to_string(count.second),
                                      std::to_string(most->second) + " at most"});
        }
    }
}

void CheckInfluences(Findings& findings, const NodeTable& nodes, std::uint64_t most) {
    const std::vector<Chunk>& chunks = findings.TheFile().chunks;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        const auto* weights = chunks[i].As<Weights>();
        if (weights == nullptr) {
            continue;
        }
        Alike over(IssueCode::ruleInfluences, "skin");
        std::uint64_t offset = findings.BodyOffset(i) + sizeof(KTAWeights);
        for (const std::uint8_t count : weights->weightCounts) {
            if (count > most) {
                over.Note(offset, [&, count = count] {
                    return Words{"number of weights", std::to_string(count),
                                 std::to_string(most) + " at most"};
                });
            }
            offset += 1 + count * sizeof(KTAWeight);
        }
        over.Report(findings, i, nodes.NameOfNumber(weights->head.nodeNumber));
    }
}

// A studio's pattern must not keep the check from ending. Where the library can match without
// backtracking it does, which leaves no back-references; each look-ahead would begin a match of its
// own at every place, and the library's compiler goes a level deeper for every parenthesis.
std::regex Compiled(const std::string& pattern) {
    constexpr std::size_t kLongest = 1000;
    if (pattern.size() > kLongest || pattern.find("(?=") != pattern.npos ||
        pattern.find("(?!") != pattern.npos) {
        throw std::regex_error(std::regex_constants::error_complexity);
    }
    auto syntax = std::regex::ECMAScript;
#ifdef __GLIBCXX__
    syntax |= std::regex_constants::__polynomial;
#endif
    return std::regex(pattern, syntax);
}

// Names that do not match their pattern, whole.
class NameCheck {
  public:
    NameCheck(Findings& findings, const StudioRules& rules) : findings_(findings) {
        for (const auto& [code, pattern] : rules.patterns) {
            patterns_.emplace(code, std::pair(pattern, Compiled(pattern)));
        }
    }

    void Check(IssueCode code, std::size_t chunk, const char* what, std::string_view name) {
        const auto pattern = patterns_.find(code);
        if (pattern != patterns_.end() &&
            !std::regex_match(name.begin(), name.end(), pattern->second.second)) {
            findings_.AddInBody(code, chunk, 0,
                                {what, InQuotes(name), "one like " + pattern->second.first}, name);
        }
    }

  private:
    Findings& findings_;
    std::map<IssueCode, std::pair<std::string, std::regex>> patterns_;
};

void CheckAllNames(Findings& findings, const StudioRules& rules) {
    NameCheck names(findings, rules);
    const std::vector<Chunk>& chunks = findings.TheFile().chunks;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        if (const auto* node = chunks[i].As<KTANode>()) {
            names.Check(IssueCode::ruleNodeName, i, "node name", TextOf(node->nodeName));
        } else if (const auto* layer = chunks[i].As<KTAMaterialLayer>()) {
            names.Check(IssueCode::ruleTextureName, i, "texture file name",
                        TextOf(layer->textureFileName));
        } else if (const auto* material = chunks[i].As<KTAMaterial>();
                   material != nullptr && i > 0) {
            names.Check(IssueCode::ruleMaterialName, i, "material name",
                        TextOf(material->materialName));
        }
    }
}

}  // namespace

bool IsPattern(const std::string& text) {
    try {
        static_cast<void>(Compiled(text));
        return true;
    } catch (const std::regex_error&) {
        return false;
    }
}

void CheckStudioRules(Findings& findings, const StudioRules& rules) {
    if (!rules.budgets.empty()) {
        CheckBudgets(findings, rules);
    }
    const auto influences = rules.budgets.find(IssueCode::ruleInfluences);
    if (influences != rules.budgets.end()) {
        CheckInfluences(findings, NodeTable(findings.TheFile()), influences->second);
    }
    if (!rules.patterns.empty()) {
        CheckAllNames(findings, rules);
    }
}

}  // namespace kta
