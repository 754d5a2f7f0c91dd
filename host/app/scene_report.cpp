#include "host/app/scene_report.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include "kta/text.h"

namespace maxhost::app {

// ---------------------------------------------------------------- the table of --list

namespace {

constexpr scene::ClassId kBoneObject = {0x28bf6e8d, 0x2ecca840};
constexpr scene::ClassId kOldBone = {0x8a63c0, 0};

enum SuperClass : std::uint32_t {
    kGeometry = 0x10,
    kCamera = 0x20,
    kLight = 0x30,
    kShape = 0x40,
    kHelper = 0x50
};

std::string Line(const char* item, std::size_t index, const std::string& fields,
                 const std::string& name) {
    return std::string(item) + '\t' + std::to_string(index) + '\t' + fields + '\t' +
           kta::Escaped(name);
}

std::string Seconds(double seconds) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.6g", seconds);
    return text.data();
}

}  // namespace

const char* KindOf(const scene::Node& node) {
    if (!node.object) {
        return "helper";
    }
    const scene::Object& object = *node.object;
    if (object.classId == kBoneObject || object.classId == kOldBone) {
        return "bone";
    }
    switch (object.superClassId.value_or(kGeometry)) {
        case kGeometry:
            return "geometry";
        case kCamera:
            return "camera";
        case kLight:
            return "light";
        case kShape:
            return "shape";
        case kHelper:
            return "helper";
        default:
            return "other";
    }
}

const char* KindOf(scene::MaterialKind kind) {
    switch (kind) {
        case scene::MaterialKind::standard:
            return "standard";
        case scene::MaterialKind::multi:
            return "multi";
        default:
            return "other";
    }
}

std::vector<ListedNode> NodesInOrder(const scene::Scene& scene) {
    std::vector<std::vector<std::size_t>> children(scene.nodes.size());
    std::vector<ListedNode> waiting;  // the next one at the back
    for (std::size_t i = scene.nodes.size(); i-- > 0;) {
        const int parent = scene.nodes[i].parent;
        if (parent == scene::kNone) {
            waiting.push_back({i, 0});
        } else {
            children[static_cast<std::size_t>(parent)].push_back(i);
        }
    }
    std::vector<ListedNode> nodes;
    while (!waiting.empty()) {
        const ListedNode node = waiting.back();
        waiting.pop_back();
        nodes.push_back(node);
        for (const std::size_t child : children[node.index]) {
            waiting.push_back({child, node.depth + 1});
        }
    }
    return nodes;
}

std::vector<std::string> ListScene(const LoadedScene& loaded) {
    std::vector<std::string> lines;
    for (const ListedNode& listed : NodesInOrder(loaded.scene)) {
        const scene::Node& node = loaded.scene.nodes[listed.index];
        lines.push_back(Line("node", listed.index,
                             std::to_string(listed.depth) + '\t' + KindOf(node), node.name));
    }
    for (std::size_t i = 0; i < loaded.scene.materials.size(); ++i) {
        const scene::Material& material = *loaded.scene.materials[i];
        lines.push_back(Line("material", i, KindOf(material.kind), material.name));
    }
    for (std::size_t i = 0; i < loaded.animations.size(); ++i) {
        const Animation& animation = loaded.animations[i];
        lines.push_back(Line("animation", i, Seconds(animation.seconds), animation.name));
    }
    return lines;
}

// ---------------------------------------------------------------- names

namespace {

// The field of 260 bytes less its NUL.
constexpr std::size_t kMostNameBytes = 259;

constexpr std::size_t kMostNames = 5;
constexpr std::size_t kMostShownBytes = 40;

// A few of many names.
class NameList {
  public:
    void Add(std::string_view name, const std::string& behind = {}) {
        if (++count_ <= kMostNames) {
            const bool isShort = name.size() <= kMostShownBytes;
            shown_.push_back("\"" + kta::Escaped(name.substr(0, kMostShownBytes)) +
                             (isShort ? "\"" : "...\"") + behind);
        }
    }
    std::size_t Count() const { return count_; }
    std::string Text() const {
        const std::size_t rest = count_ - shown_.size();
        return kta::Joined(shown_) + (rest > 0 ? " and " + std::to_string(rest) + " more" : "");
    }

  private:
    std::vector<std::string> shown_;
    std::size_t count_ = 0;
};

}  // namespace

std::string_view NameInFile(const scene::Node& node) {
    return std::string_view(node.name).substr(0, kMostNameBytes);
}

namespace {

NameList LongNames(const scene::Scene& scene) {
    NameList names;
    for (const scene::Node& node : scene.nodes) {
        if (node.name.size() > kMostNameBytes) {
            names.Add(node.name, " (" + kta::Counted(node.name.size(), "byte") + ")");
        }
    }
    return names;
}

// In the order of each name's first node.
NameList SharedNames(const scene::Scene& scene) {
    std::unordered_map<std::string_view, std::size_t> nodesByName;
    for (const scene::Node& node : scene.nodes) {
        ++nodesByName[NameInFile(node)];
    }
    NameList names;
    for (const scene::Node& node : scene.nodes) {
        std::size_t& nodes = nodesByName[NameInFile(node)];
        if (nodes > 1) {
            names.Add(NameInFile(node), " (" + kta::Counted(nodes, "node") + ")");
            nodes = 0;
        }
    }
    return names;
}

}  // namespace

std::vector<Warning> NameWarnings(const scene::Scene& scene) {
    std::vector<Warning> warnings;
    if (const NameList names = LongNames(scene); names.Count() > 0) {
        warnings.push_back(
            {scene::LossCode::nameCut, "node names of more than " + std::to_string(kMostNameBytes) +
                                           " bytes, which the files cut: " + names.Text()});
    }
    if (const NameList names = SharedNames(scene); names.Count() > 0) {
        warnings.push_back(
            {scene::LossCode::nameShared,
             "several nodes of one name, and the files tell parents by name: " + names.Text()});
    }
    return warnings;
}

// ---------------------------------------------------------------- materials

namespace {

std::uint64_t Sum(std::uint64_t a, std::uint64_t b) {
    return std::min(a + b, kMostMaterials + 1);
}

class MaterialCounter {
  public:
    explicit MaterialCounter(const scene::Scene& scene)
        : scene_(scene), counts_(scene.materials.size(), 0) {}

    std::uint64_t Below(int position) {
        const auto i = static_cast<std::size_t>(position);
        if (counts_[i] == 0) {
            counts_[i] = Below(*scene_.materials[i]);
        }
        return counts_[i];
    }

  private:
    // Nesting is limited by the scene's rules.
    std::uint64_t Below(const scene::Material& material) {
        std::uint64_t count = 1;
        for (const scene::SubMaterial& subMaterial : material.subMaterials) {
            if (const int* position = std::get_if<int>(&subMaterial)) {
                count = Sum(count, Below(*position));
            } else if (const auto* own =
                           std::get_if<std::shared_ptr<const scene::Material>>(&subMaterial)) {
                count = Sum(count, Below(**own));
            }
        }
        return count;
    }

    const scene::Scene& scene_;
    std::vector<std::uint64_t> counts_;  // by position; 0: not known yet
};

}  // namespace

std::uint64_t CountMaterials(const scene::Scene& scene) {
    std::set<int> used;
    for (const scene::Node& node : scene.nodes) {
        if (node.material != scene::kNone) {
            used.insert(node.material);
        }
    }
    MaterialCounter counter(scene);
    std::uint64_t count = 0;
    for (const int position : used) {
        count = Sum(count, counter.Below(position));
    }
    return count;
}

}  // namespace maxhost::app
