#include "host/app/scene_warnings.h"

#include <string_view>
#include <unordered_map>

#include "kta/text.h"

namespace maxhost::app {
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

std::string_view NameInFile(const scene::Node& node) {
    return std::string_view(node.name).substr(0, kMostNameBytes);
}

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

std::vector<std::string> NameWarnings(const scene::Scene& scene) {
    std::vector<std::string> warnings;
    if (const NameList names = LongNames(scene); names.Count() > 0) {
        warnings.push_back("node names of more than " + std::to_string(kMostNameBytes) +
                           " bytes, which the files cut: " + names.Text());
    }
    if (const NameList names = SharedNames(scene); names.Count() > 0) {
        warnings.push_back("several nodes of one name, and the files tell parents by name: " +
                           names.Text());
    }
    return warnings;
}

}  // namespace maxhost::app
