#include "host/import/gltf_roots.h"

#include <cstdint>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace maxhost::import {
namespace {

std::uint32_t LittleEndian32(std::string_view bytes) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
        value = value << 8 | static_cast<unsigned char>(bytes[static_cast<std::size_t>(i)]);
    }
    return value;
}

// The JSON text in the bytes of a file. A binary one holds it behind its header: magic, version
// and length, then in version 2 the first chunk's length and type, in version 1 the text's length
// and format.
std::string_view JsonText(std::string_view file) {
    constexpr std::size_t kHeaderSize = 20;
    if (!file.starts_with("glTF")) {
        return file;
    }
    if (file.size() < kHeaderSize) {
        return {};
    }
    return file.substr(kHeaderSize, LittleEndian32(file.substr(12, 4)));
}

// glTF 1 names its scenes, glTF 2 numbers them.
const nlohmann::json* ShownScene(const nlohmann::json& document) {
    const auto scenes = document.find("scenes");
    if (scenes == document.end() || scenes->empty()) {
        return nullptr;
    }
    const auto shown = document.find("scene");
    if (scenes->is_array()) {
        const std::size_t index =
            shown != document.end() && shown->is_number_unsigned() ? shown->get<std::size_t>() : 0;
        return index < scenes->size() ? &(*scenes)[index] : nullptr;
    }
    if (!scenes->is_object()) {
        return nullptr;
    }
    const auto named = shown != document.end() && shown->is_string()
                           ? scenes->find(shown->get_ref<const std::string&>())
                           : scenes->begin();
    return named != scenes->end() ? &*named : nullptr;
}

// A node by its number (glTF 2) or name (glTF 1); null where there is none.
const nlohmann::json* NodeAt(const nlohmann::json& nodes, const nlohmann::json& reference) {
    if (nodes.is_array() && reference.is_number_unsigned()) {
        const std::size_t index = reference.get<std::size_t>();
        return index < nodes.size() ? &nodes[index] : nullptr;
    }
    if (nodes.is_object() && reference.is_string()) {
        const auto found = nodes.find(reference.get_ref<const std::string&>());
        return found != nodes.end() ? &*found : nullptr;
    }
    return nullptr;
}

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
            const nlohmann::json* const node = NodeAt(nodes, reference);
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
    std::ifstream stream(path, std::ios::binary);
    const std::string file{std::istreambuf_iterator<char>(stream), {}};
    const nlohmann::json document = nlohmann::json::parse(JsonText(file), nullptr, false);
    if (!document.is_object()) {
        return std::nullopt;
    }
    const nlohmann::json* shown = ShownScene(document);
    if (!shown || !shown->is_object()) {
        return std::nullopt;
    }
    GltfSceneFacts facts;
    const nlohmann::json none = nlohmann::json::array();
    const auto found = shown->find("nodes");
    const nlohmann::json& roots = found != shown->end() && found->is_array() ? *found : none;
    facts.roots = roots.size();
    const auto nodes = document.find("nodes");
    if (nodes != document.end() && nodes->is_structured()) {
        facts.nodesOutside = nodes->size() - CountNodesBelow(*nodes, roots);
    }
    return facts;
}

}  // namespace maxhost::import
