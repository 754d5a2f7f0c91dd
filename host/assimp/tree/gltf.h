// A glTF file (.gltf or .glb) as its JSON and its buffers, for the facts that Assimp drops.
#pragma once

#include <assimp/scene.h>

#include <cstddef>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace maxhost::import {

class GltfFile {
  public:
    // None where the file cannot be read as glTF 1 or 2: no JSON object.
    static std::optional<GltfFile> Read(const std::string& path);

    const nlohmann::json& Document() const { return document_; }

    // The scene that the file shows; null where there is none. glTF 1 names its scenes, glTF 2
    // numbers them.
    const nlohmann::json* ShownScene() const;

    // The numbers of accessor `index` of a glTF 2 file, `components` an element; integers that
    // stand for fractions are brought to 0 to 1 or -1 to 1. None where there is no such accessor of
    // that many components, or where it or its buffers are not as the format wants them.
    std::optional<std::vector<double>> Numbers(const nlohmann::json& index, std::size_t components);

  private:
    struct Range;

    const std::string* Buffer(std::size_t index);
    std::string ReadBuffer(const nlohmann::json& buffer) const;
    std::optional<Range> RangeOf(const nlohmann::json& holder, std::size_t elementSize,
                                 std::size_t count, bool isStrided);
    bool ApplySparse(const nlohmann::json& accessor, std::size_t components,
                     std::vector<double>& numbers);

    std::filesystem::path path_;
    nlohmann::json document_;
    std::map<std::size_t, std::string> buffers_;
};

// The item of `list` that `reference` names: in an array by number, in an object by key. Null where
// there is none.
const nlohmann::json* ItemAt(const nlohmann::json& list, const nlohmann::json& reference);

// The member of that name; null where `object` has none or is no object.
const nlohmann::json* Member(const nlohmann::json& object, const char* name);

// ---------------------------------------------------------------- nodes

struct GltfSceneFacts {
    std::size_t roots = 0;         // root nodes of the scene that the file shows
    std::size_t nodesOutside = 0;  // nodes of the file that stand in other scenes or in none
};

// Looks into a glTF 1 or 2 file (.gltf or .glb); none where it cannot be read as such or shows no
// scene.
std::optional<GltfSceneFacts> ReadGltfSceneFacts(const std::string& path);

// The nodes of Assimp's tree by the number of the file's node that each stands for: names do not
// tell them apart. Empty where the two trees do not agree.
std::map<std::size_t, const aiNode*> MatchGltfNodes(const GltfFile& file, const aiScene& scene);

}  // namespace maxhost::import
