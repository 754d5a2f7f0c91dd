#include "host/app/deviation.h"

#include <algorithm>
#include <cmath>

#include "host/app/compared_scene.h"

namespace maxhost::app {
namespace {

using kta::operator-;

// A scene counts as no smaller than this share of its distance from the origin: the rounding of
// 32-bit coordinates is then less than 0.01 % of its size.
constexpr double kLeastShare = 1e-3;

// At most `most` of them, evenly, with the first and the last.
std::vector<int> Thinned(const std::vector<int>& ticks, std::size_t most) {
    if (ticks.size() <= most) {
        return ticks;
    }
    std::vector<int> thinned;
    for (std::size_t i = 0; i < most; ++i) {
        thinned.push_back(ticks[i * (ticks.size() - 1) / (most - 1)]);
    }
    return thinned;
}

// Of nodes and meshes as the scene has them at tick 0.
Box BoxAtRest(const ComparedScene& compared) {
    Box box;
    for (std::size_t i = 0; i < compared.Tree().Size(); ++i) {
        if (const int node = compared.Match().SceneNodeOf(i); node != scene::kNone) {
            box.Add(compared.WorldAtZero(node).translation);
        }
    }
    for (const kta::ActorMesh& mesh : compared.Meshes()) {
        if (const scene::Mesh* const own = compared.MeshOf(mesh)) {
            for (const scene::Vec3& vertex : own->vertices) {
                box.Add(compared.WorldAtZero(compared.NodeOf(mesh)).Position(InFileAxes(vertex)));
            }
        }
    }
    return box;
}

}  // namespace

// ---------------------------------------------------------------- boxes

void Box::Add(const kta::Vector3& p) {
    for (std::size_t i = 0; i < 3; ++i) {
        least_[i] = std::min(least_[i], p[i]);
        most_[i] = std::max(most_[i], p[i]);
    }
}

double Box::Diagonal() const {
    return least_[0] <= most_[0] ? kta::Length(most_ - least_) : 0;
}

double Box::Distance() const {
    kta::Vector3 corner{};
    for (std::size_t i = 0; i < 3 && least_[i] <= most_[i]; ++i) {
        corner[i] = std::max(std::abs(least_[i]), std::abs(most_[i]));
    }
    return kta::Length(corner);
}

double Box::Size() const {
    return std::max(Diagonal(), kLeastShare * Distance());
}

// ---------------------------------------------------------------- what is compared

ComparedScene::ComparedScene(const scene::Scene& scene, const SceneWorlds& worlds,
                             const SceneMatch& match, const kta::NodeTree& tree,
                             const kta::File& actor, const kta::File& motion)
    : scene_(scene),
      worlds_(worlds),
      match_(match),
      tree_(tree),
      motion_(motion),
      meshes_(kta::MeshesOf(actor)),
      atZero_(worlds.At(0)) {
}

const scene::Mesh* ComparedScene::MeshOf(const kta::ActorMesh& mesh) const {
    const int node = mesh.node == kta::kNoNode ? scene::kNone : NodeOf(mesh);
    return node != scene::kNone && Node(node).object ? Node(node).object->mesh.get() : nullptr;
}

std::vector<int> ComparedScene::SampledTicks() const {
    std::vector<int> ticks;
    for (const kta::Chunk& chunk : motion_.chunks) {
        const auto* const track = chunk.As<kta::KeyTrack>();
        if (!track || (track->vectorSamples.empty() && track->rotationSamples.empty())) {
            continue;
        }
        const auto add = [&](const auto& samples) {
            for (const auto& sample : samples) {
                ticks.push_back(static_cast<int>(
                    std::lround(static_cast<double>(sample.time) * scene_.time.frameRate *
                                scene_.time.ticksPerFrame)));
            }
        };
        add(track->vectorSamples);
        add(track->rotationSamples);
        break;
    }
    return ticks;
}

std::vector<int> ComparedScene::Ticks(std::size_t most) const {
    std::vector<int> ticks = SampledTicks();
    if (ticks.empty()) {
        const double half = std::max(1.0, scene_.time.ticksPerFrame / 2.0);
        const double steps =
            std::floor((static_cast<double>(scene_.time.end) - scene_.time.start) / half);
        const double stride = std::max(1.0, std::floor(steps / (4.0 * kMostPoseTimes)));
        for (double i = 0; i <= steps; i += stride) {
            ticks.push_back(static_cast<int>(scene_.time.start + i * half));
        }
    }
    return Thinned(ticks, most);
}

// ---------------------------------------------------------------- all

double Deviation::Worst() const {
    double worst = angle.value;
    for (const WorstCase* const one : {&vertex, &pose, &skin, &morph}) {
        const double percent = Percent(*one);
        worst = percent <= worst ? worst : percent;
    }
    return worst;
}

Deviation FindDeviation(const scene::Scene& scene, const SceneWorlds& worlds,
                        const SceneMatch& match, const kta::NodeTree& tree, const kta::File& actor,
                        const kta::File& motion) {
    const ComparedScene compared(scene, worlds, match, tree, actor, motion);
    Deviation deviation;
    CompareMeshes(compared, deviation);
    ComparePoses(compared, BoxAtRest(compared), deviation);
    CompareSkins(compared, deviation);
    return deviation;
}

}  // namespace maxhost::app
