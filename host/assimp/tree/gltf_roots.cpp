#include "host/assimp/tree/gltf_roots.h"

#include <unordered_set>
#include <vector>

#include "host/assimp/tree/gltf_file.h"

namespace maxhost::import {
namespace {

std::size_t CountNodesBelow(const nlohmann::json& nodes, const nlohmann::json& roots) {
    std::unordered_set<const nlohmann::json*> known;
    std::vector<const nlohmann::json*> lists{&roots};
    while (!lists.empty()) {
        const nlohmann::json& list = *lists.back();
        lists.pop_back();
        if (!list.is_array()) {
            continue;
        }
        for (const nlohmann::json& reference : list) {
            const nlohmann::json* const node = ItemAt(nodes, reference);
            if (node && known.insert(node).second && node->is_object()) {
                const auto children = node->find("children");
                if (children != node->end()) {
                    lists.push_back(&*children);
                }
            }
        }
    }
    return known.size();
}

}  // namespace

std::optional<GltfSceneFacts> ReadGltfSceneFacts(const std::string& path) {
    const auto file = GltfFile::Read(path);
    if (!file) {
        return std::nullopt;
    }
    const nlohmann::json* const shown = file->ShownScene();
    if (!shown || !shown->is_object()) {
        return std::nullopt;
    }
    GltfSceneFacts facts;
    const nlohmann::json none = nlohmann::json::array();
    const auto found = shown->find("nodes");
    const nlohmann::json& roots = found != shown->end() && found->is_array() ? *found : none;
    facts.roots = roots.size();
    const nlohmann::json* const nodes = Member(file->Document(), "nodes");
    if (nodes && nodes->is_structured()) {
        facts.nodesOutside = nodes->size() - CountNodesBelow(*nodes, roots);
    }
    return facts;
}

}  // namespace maxhost::import
