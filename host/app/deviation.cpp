#include "host/app/deviation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <variant>

#include "host/app/scene_skin.h"
#include "kta/deform.h"

namespace maxhost::app {
namespace {

using kta::operator-;

constexpr double kPi = 3.14159265358979323846;
constexpr double kMostShear = 1e-3;     // cosine between two axes of a node
constexpr double kMovingDegrees = 0.1;  // of a node's local transform, between two times
constexpr double kMovingShare = 1e-3;   // of the scene's size
// A scene counts as no smaller than this share of its distance from the origin: the rounding of
// 32-bit coordinates is then less than 0.01 % of its size.
constexpr double kLeastShare = 1e-3;

// ---------------------------------------------------------------- rotations

// The orthogonal factor of the polar decomposition, by Newton's iteration (Higham, "Computing the
// polar decomposition with applications", 1986). Of what has volume.
kta::Affine RotationPart(kta::Affine m) {
    m.translation = {};
    for (int i = 0; i < 40; ++i) {
        const std::optional<kta::Affine> inverse = kta::Inverse(m);
        if (!inverse) {
            return m;
        }
        double change = 0;
        for (std::size_t column = 0; column < 3; ++column) {
            for (std::size_t row = 0; row < 3; ++row) {
                const double next = (m.axes[column][row] + inverse->axes[row][column]) / 2;
                change = std::max(change, std::abs(next - m.axes[column][row]));
                m.axes[column][row] = next;
            }
        }
        if (change < 1e-12) {
            break;
        }
    }
    return m;
}

double DegreesBetween(const kta::Affine& a, const kta::Affine& b) {
    const kta::Affine first = RotationPart(a), second = RotationPart(b);
    double squares = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const kta::Vector3 difference = first.axes[i] - second.axes[i];
        squares += kta::Dot(difference, difference);
    }
    return 2 * std::asin(std::min(1.0, std::sqrt(squares / 8))) * 180 / kPi;
}

// To the bit, so that what is known of one is known of the other.
bool IsSame(const kta::Affine& a, const kta::Affine& b) {
    return a.axes == b.axes && a.translation == b.translation;
}

bool IsSheared(const kta::Affine& local) {
    for (std::size_t i = 0; i < 3; ++i) {
        const kta::Vector3 &a = local.axes[i], &b = local.axes[(i + 1) % 3];
        const double lengths = kta::Length(a) * kta::Length(b);
        if (lengths > 0 && std::abs(kta::Dot(a, b)) / lengths > kMostShear) {
            return true;
        }
    }
    return false;
}

// ---------------------------------------------------------------- the comparison

class Box {
  public:
    void Add(const kta::Vector3& p) {
        for (std::size_t i = 0; i < 3; ++i) {
            least_[i] = std::min(least_[i], p[i]);
            most_[i] = std::max(most_[i], p[i]);
        }
    }
    double Diagonal() const { return least_[0] <= most_[0] ? kta::Length(most_ - least_) : 0; }
    // From the origin, of the corner farthest from it.
    double Distance() const {
        kta::Vector3 corner{};
        for (std::size_t i = 0; i < 3 && least_[i] <= most_[i]; ++i) {
            corner[i] = std::max(std::abs(least_[i]), std::abs(most_[i]));
        }
        return kta::Length(corner);
    }

  private:
    static constexpr double kFar = std::numeric_limits<double>::infinity();
    kta::Vector3 least_ = {kFar, kFar, kFar};
    kta::Vector3 most_ = {-kFar, -kFar, -kFar};
};

class DeviationFinder {
  public:
    DeviationFinder(const scene::Scene& scene, const SceneWorlds& worlds, const SceneMatch& match,
                    const kta::NodeTree& tree, const kta::File& actor, const kta::File& motion)
        : scene_(scene),
          worlds_(worlds),
          match_(match),
          tree_(tree),
          motion_(motion),
          meshes_(kta::MeshesOf(actor)),
          atZero_(worlds.At(0)) {}

    Deviation Find() {
        Measure();
        for (const kta::ActorMesh& mesh : meshes_) {
            if (const scene::Mesh* const own = MeshOf(mesh)) {
                CompareVertices(mesh, *own);
                CompareMorphs(mesh);
            }
        }
        ComparePoses();
        CompareSkins();
        const Box& box = atRest_.Diagonal() > 0 ? atRest_ : overTime_;
        result_.size = std::max(box.Diagonal(), kLeastShare * box.Distance());
        AddStill();
        return std::move(result_);
    }

  private:
    // The scene's node of an actor mesh; its mesh must be there.
    int NodeOf(const kta::ActorMesh& mesh) const { return match_.SceneNodeOf(mesh.node); }
    const scene::Node& Node(int node) const { return scene_.nodes[static_cast<std::size_t>(node)]; }
    const kta::Affine& WorldAtZero(int node) const {
        return atZero_[static_cast<std::size_t>(node)];
    }
    const scene::Mesh* MeshOf(const kta::ActorMesh& mesh) const;
    void Measure();
    void CompareVertices(const kta::ActorMesh& mesh, const scene::Mesh& own);
    void CompareMorphs(const kta::ActorMesh& mesh);
    void CompareMorph(const kta::ActorMesh& mesh, const scene::MorphChannel& channel,
                      const kta::Morph& morph);
    std::vector<int> PoseTicks() const;
    void ComparePoses();
    void ComparePosesAt(int tick);
    void ComparePose(int node, const kta::Affine& found, const kta::Affine& expected, int tick);
    void MeasureStill(const std::vector<kta::Affine>& worlds);
    void AddStill();
    struct SkinPair {
        const kta::ActorMesh& mesh;
        int node;
        kta::Skin inFile;
        SceneSkin inScene;
    };
    void CompareSkins();
    void CompareSkin(const SkinPair& pair, const std::vector<kta::Affine>& fileWays,
                     const std::vector<kta::Affine>& ways, int tick);
    double FrameOf(int tick) const { return static_cast<double>(tick) / scene_.time.ticksPerFrame; }
    double SecondsOf(int tick) const {
        return static_cast<double>(tick) /
               (static_cast<double>(scene_.time.frameRate) * scene_.time.ticksPerFrame);
    }

    const scene::Scene& scene_;
    const SceneWorlds& worlds_;
    const SceneMatch& match_;
    const kta::NodeTree& tree_;
    const kta::File& motion_;
    const std::vector<kta::ActorMesh> meshes_;
    const std::vector<kta::Affine> atZero_;
    Box atRest_, overTime_;
    std::set<int> sheared_;
    std::vector<kta::Affine> before_, expectedBefore_;  // at the time before
    std::vector<double> moves_;  // by file node without tracks: how far it goes from where it was
    std::vector<bool> turns_;
    Deviation result_;
};

const scene::Mesh* DeviationFinder::MeshOf(const kta::ActorMesh& mesh) const {
    const int node = mesh.node == kta::kNoNode ? scene::kNone : NodeOf(mesh);
    return node != scene::kNone && Node(node).object ? Node(node).object->mesh.get() : nullptr;
}

void DeviationFinder::Measure() {
    for (std::size_t i = 0; i < tree_.Size(); ++i) {
        if (const int node = match_.SceneNodeOf(i); node != scene::kNone) {
            atRest_.Add(WorldAtZero(node).translation);
        }
    }
    for (const kta::ActorMesh& mesh : meshes_) {
        if (const scene::Mesh* const own = MeshOf(mesh)) {
            for (const scene::Vec3& vertex : own->vertices) {
                atRest_.Add(WorldAtZero(NodeOf(mesh)).Position(InFileAxes(vertex)));
            }
        }
    }
}

// ---------------------------------------------------------------- vertices and morph targets

void DeviationFinder::CompareVertices(const kta::ActorMesh& mesh, const scene::Mesh& own) {
    const int node = NodeOf(mesh);
    for (const kta::SubMesh& subMesh : mesh.mesh->subMeshes) {
        for (const KTAVertex& vertex : subMesh.vertices) {
            const auto number = static_cast<std::size_t>(vertex.originalVertex);
            const kta::Vector3 position = {vertex.position[0], vertex.position[1],
                                           vertex.position[2]};
            const kta::Vector3 found =
                mesh.weights ? position : tree_.BindWorld(mesh.node).Position(position);
            const double distance = number < own.vertices.size()
                                        ? kta::Length(found - WorldAtZero(node).Position(
                                                                  InFileAxes(own.vertices[number])))
                                        : std::numeric_limits<double>::quiet_NaN();
            ++result_.vertices;
            if (result_.vertex.IsWorse(distance)) {
                result_.vertex = {.value = distance, .node = node, .vertex = vertex.originalVertex};
            }
        }
    }
}

// The channels that have points, in their order, have a chunk each.
void DeviationFinder::CompareMorphs(const kta::ActorMesh& mesh) {
    const auto* const morpher = EnabledModifier<scene::Morpher>(Node(NodeOf(mesh)));
    if (!morpher) {
        return;
    }
    std::size_t next = 0;
    for (const scene::MorphChannel& channel : morpher->channels) {
        if (!channel.points.empty() && next < mesh.morphs.size()) {
            CompareMorph(mesh, channel, *mesh.morphs[next++]);
        }
    }
}

void DeviationFinder::CompareMorph(const kta::ActorMesh& mesh, const scene::MorphChannel& channel,
                                   const kta::Morph& morph) {
    const int node = NodeOf(mesh);
    const std::size_t count = std::min(channel.points.size(), morph.points.size());
    for (std::size_t i = 0; i < count; ++i) {
        const std::array<float, 3> point = kta::MorphPosition(morph, i);
        if (std::isnan(point[0])) {
            result_.flattened.push_back({node, channel.name});
            return;
        }
        const kta::Vector3 found =
            tree_.BindWorld(mesh.node).Position({point[0], point[1], point[2]});
        const double distance =
            kta::Length(found - WorldAtZero(node).Position(InFileAxes(channel.points[i])));
        ++result_.morphPoints;
        if (result_.morph.IsWorse(distance)) {
            result_.morph = {.value = distance,
                             .node = node,
                             .vertex = static_cast<int>(i),
                             .channel = channel.name};
        }
    }
}

// ---------------------------------------------------------------- poses

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

// Between sampled keys the files do not say where things are, so there the keys' own times count;
// else frames, and what is halfway between two.
std::vector<int> DeviationFinder::PoseTicks() const {
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
        return ticks;
    }
    const double half = std::max(1.0, scene_.time.ticksPerFrame / 2.0);
    const double steps =
        std::floor((static_cast<double>(scene_.time.end) - scene_.time.start) / half);
    const double stride = std::max(1.0, std::floor(steps / (4.0 * kMostPoseTimes)));
    for (double i = 0; i <= steps; i += stride) {
        ticks.push_back(static_cast<int>(scene_.time.start + i * half));
    }
    return ticks;
}

void DeviationFinder::ComparePoses() {
    std::vector<int> ticks = Thinned(PoseTicks(), kMostPoseTimes);
    ticks.insert(ticks.begin(), 0);
    for (const int tick : ticks) {
        ComparePosesAt(tick);
    }
    result_.times = ticks.size();
    result_.sheared.assign(sheared_.begin(), sheared_.end());
}

// What hangs below a node that the files cannot hold, or one that has no extent, is compared as if
// the node were right. What stands as it did the time before is known.
void DeviationFinder::ComparePosesAt(int tick) {
    std::vector<kta::Affine> expected = worlds_.At(tick);
    std::vector<kta::Affine> found(tree_.Size());
    for (const std::size_t i : tree_.ParentsFirst()) {
        const std::size_t parent = tree_.Parent(i);
        const kta::Affine above = parent == kta::kNoNode ? kta::Affine() : found[parent];
        const int node = match_.SceneNodeOf(i);
        found[i] = above * tree_.Local(i, SecondsOf(tick));
        if (node == scene::kNone) {
            continue;
        }
        const kta::Affine& right = expected[static_cast<std::size_t>(node)];
        overTime_.Add(right.translation);
        const std::optional<kta::Affine> down = kta::Inverse(above);
        if (!down) {
            found[i] = right;
        } else if (tree_.MotionOf(i) && IsSheared(*down * right)) {
            sheared_.insert(node);
            found[i] = right;
        } else if (before_.empty() || !IsSame(found[i], before_[i]) ||
                   !IsSame(right, expectedBefore_[static_cast<std::size_t>(node)])) {
            ComparePose(node, found[i], right, tick);
        }
        ++result_.poses;
    }
    MeasureStill(expected);
    before_ = std::move(found);
    expectedBefore_ = std::move(expected);
}

void DeviationFinder::ComparePose(int node, const kta::Affine& found, const kta::Affine& expected,
                                  int tick) {
    const double distance = kta::Length(found.translation - expected.translation);
    if (result_.pose.IsWorse(distance)) {
        result_.pose = {.value = distance, .node = node, .frame = FrameOf(tick)};
    }
    if (!kta::HasVolume(found) || !kta::HasVolume(expected)) {
        return;
    }
    const double degrees = DegreesBetween(found, expected);
    if (result_.angle.IsWorse(degrees)) {
        result_.angle = {.value = degrees, .node = node, .frame = FrameOf(tick)};
    }
}

// The parent is the scene's own: a node whose parent is not exported moves with it.
void DeviationFinder::MeasureStill(const std::vector<kta::Affine>& worlds) {
    moves_.resize(tree_.Size());
    turns_.resize(tree_.Size());
    for (std::size_t i = 0; i < tree_.Size(); ++i) {
        const int node = match_.SceneNodeOf(i);
        if (node == scene::kNone || tree_.MotionOf(i)) {
            continue;
        }
        const int parent = Node(node).parent;
        const auto stays = [&](int which) {
            const auto at = static_cast<std::size_t>(which);
            return which == scene::kNone || IsSame(worlds[at], atZero_[at]);
        };
        if (stays(node) && stays(parent)) {
            continue;
        }
        const auto local = [&](const std::vector<kta::Affine>& at) {
            const std::optional<kta::Affine> down =
                parent == scene::kNone ? kta::Affine()
                                       : kta::Inverse(at[static_cast<std::size_t>(parent)]);
            return (down ? *down : kta::Affine()) * at[static_cast<std::size_t>(node)];
        };
        const kta::Affine now = local(worlds), before = local(atZero_);
        moves_[i] = std::max(moves_[i], kta::Length(now.translation - before.translation));
        turns_[i] = turns_[i] || (kta::HasVolume(now) && kta::HasVolume(before) &&
                                  DegreesBetween(now, before) > kMovingDegrees);
    }
}

void DeviationFinder::AddStill() {
    for (std::size_t i = 0; i < tree_.Size(); ++i) {
        if (turns_[i] || (result_.size > 0 && moves_[i] > kMovingShare * result_.size)) {
            result_.still.push_back(match_.SceneNodeOf(i));
        }
    }
    std::ranges::sort(result_.still);
}

// ---------------------------------------------------------------- skins

void DeviationFinder::CompareSkins() {
    std::vector<SkinPair> skins;
    for (const kta::ActorMesh& mesh : meshes_) {
        const scene::Mesh* const own = mesh.weights ? MeshOf(mesh) : nullptr;
        if (own) {
            skins.push_back({mesh, NodeOf(mesh), kta::Skin(tree_, mesh),
                             SceneSkin(Node(NodeOf(mesh)), NodeOf(mesh), own->vertices.size())});
        }
    }
    if (skins.empty()) {
        return;
    }
    for (const int tick : Thinned(PoseTicks(), kMostSkinTimes)) {
        const std::vector<kta::Affine> fileWays = kta::WaysFromBind(tree_, SecondsOf(tick));
        const std::vector<kta::Affine> ways = WaysBetween(atZero_, worlds_.At(tick));
        for (const SkinPair& skin : skins) {
            CompareSkin(skin, fileWays, ways, tick);
        }
    }
}

void DeviationFinder::CompareSkin(const SkinPair& pair, const std::vector<kta::Affine>& fileWays,
                                  const std::vector<kta::Affine>& ways, int tick) {
    const std::vector<scene::Vec3>& vertices = Node(pair.node).object->mesh->vertices;
    const kta::Affine& world = WorldAtZero(pair.node);
    for (const kta::SubMesh& subMesh : pair.mesh.mesh->subMeshes) {
        for (const KTAVertex& vertex : subMesh.vertices) {
            const auto number = static_cast<std::size_t>(vertex.originalVertex);
            if (number >= vertices.size()) {
                continue;
            }
            const kta::Vector3 found =
                kta::SkinnedPosition(pair.inFile.Of(vertex.originalVertex), fileWays,
                                     {vertex.position[0], vertex.position[1], vertex.position[2]});
            const kta::Vector3 expected =
                pair.inScene.Position(number, ways, world.Position(InFileAxes(vertices[number])));
            const double distance = kta::Length(found - expected);
            ++result_.skinnedVertices;
            if (result_.skin.IsWorse(distance)) {
                result_.skin = {.value = distance,
                                .node = pair.node,
                                .vertex = vertex.originalVertex,
                                .bone = pair.inScene.MostOf(number),
                                .frame = FrameOf(tick)};
            }
        }
    }
}

}  // namespace

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
    return DeviationFinder(scene, worlds, match, tree, actor, motion).Find();
}

}  // namespace maxhost::app
