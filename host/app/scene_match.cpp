#include "host/app/scene_match.h"

#include <max.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <string_view>
#include <unordered_map>

#include "host/app/scene_report.h"
#include "kta/text.h"

namespace maxhost::app {
namespace {

using kta::operator-;

constexpr std::size_t kMostCandidates = 100;

kta::Vector3 InFileAxes(const Point3& v) {
    return {v.x, v.z, v.y};
}

kta::Affine InFileAxes(const Matrix3& m) {
    return {{InFileAxes(m.GetRow(0)), InFileAxes(m.GetRow(2)), InFileAxes(m.GetRow(1))},
            InFileAxes(m.GetRow(3))};
}

double Distance(const kta::Affine& a, const kta::Affine& b) {
    double sum = kta::Length(a.translation - b.translation);
    for (std::size_t i = 0; i < 3; ++i) {
        sum += kta::Length(a.axes[i] - b.axes[i]);
    }
    return std::isnan(sum) ? std::numeric_limits<double>::infinity() : sum;
}

}  // namespace

std::string PathOf(const scene::Scene& scene, int node) {
    constexpr std::size_t kMostNodes = 40;
    std::vector<const std::string*> names;
    for (; node != scene::kNone && names.size() < kMostNodes;
         node = scene.nodes[static_cast<std::size_t>(node)].parent) {
        names.push_back(&scene.nodes[static_cast<std::size_t>(node)].name);
    }
    std::string path = node != scene::kNone ? "/..." : "";
    for (std::size_t i = names.size(); i-- > 0;) {
        path += '/';
        for (const char c : kta::Escaped(*names[i])) {
            path += c == '/' ? std::string("\\x2f") : std::string(1, c);
        }
    }
    return path;
}

bool IsGeometry(INode& node) {
    const Class_ID target(0x1020, 0);
    Object* const object = node.EvalWorldState(0).obj;
    return object != nullptr && object->SuperClassID() == GEOMOBJECT_CLASS_ID &&
           object->ClassID() != target;
}

SceneWorlds::SceneWorlds(const std::vector<INode*>& nodes) : nodes_(nodes) {
    for (INode* const node : nodes) {
        isGeometry_.push_back(IsGeometry(*node));
    }
}

std::vector<kta::Affine> SceneWorlds::At(int tick) const {
    std::vector<kta::Affine> worlds;
    worlds.reserve(nodes_.size());
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        worlds.push_back(
            InFileAxes(isGeometry_[i] ? nodes_[i]->GetObjectTM(tick) : nodes_[i]->GetNodeTM(tick)));
    }
    return worlds;
}

SceneMatch::SceneMatch(const scene::Scene& scene, const std::vector<kta::Affine>& worlds,
                       const kta::NodeTree& tree)
    : sceneNodes_(tree.Size(), scene::kNone), fileNodes_(scene.nodes.size(), kta::kNoNode) {
    std::unordered_map<std::string_view, std::deque<std::size_t>> byName;
    for (std::size_t i = 0; i < scene.nodes.size(); ++i) {
        byName[NameInFile(scene.nodes[i])].push_back(i);
    }
    const auto parentName = [&](std::size_t i) {
        const int parent = scene.nodes[i].parent;
        return parent == scene::kNone ? std::string_view()
                                      : NameInFile(scene.nodes[static_cast<std::size_t>(parent)]);
    };
    for (std::size_t i = 0; i < tree.Size(); ++i) {
        const KTANode& record = tree.Record(i);
        const auto found = byName.find(kta::TextOf(record.nodeName));
        if (found == byName.end() || found->second.empty()) {
            continue;
        }
        std::deque<std::size_t>& candidates = found->second;
        const auto end = candidates.begin() +
                         static_cast<std::ptrdiff_t>(std::min(candidates.size(), kMostCandidates));
        const auto rank = [&](std::size_t candidate) {
            return std::pair(parentName(candidate) != kta::TextOf(record.parentName),
                             Distance(worlds[candidate], tree.BindWorld(i)));
        };
        const auto best = candidates.size() == 1
                              ? candidates.begin()
                              : std::ranges::min_element(candidates.begin(), end, {}, rank);
        sceneNodes_[i] = static_cast<int>(*best);
        fileNodes_[*best] = i;
        candidates.erase(best);
    }
}

}  // namespace maxhost::app
