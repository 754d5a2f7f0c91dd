#include <algorithm>
#include <cmath>
#include <set>

#include "host/app/compared_scene.h"
#include "host/app/scene_skin.h"

namespace maxhost::app {
namespace {

using kta::operator-;

constexpr double kMostShear = 1e-3;     // cosine between two axes of a node
constexpr double kMovingDegrees = 0.1;  // of a node's local transform, between two times
constexpr double kMovingShare = 1e-3;   // of the scene's size

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

// ---------------------------------------------------------------- poses

class PoseComparison {
  public:
    PoseComparison(const ComparedScene& compared, Deviation& result)
        : compared_(compared), tree_(compared.Tree()), result_(result) {}

    void Run(const Box& atRest);

  private:
    void CompareAt(int tick);
    void ComparePose(int node, const kta::Affine& found, const kta::Affine& expected, int tick);
    void MeasureStill(const std::vector<kta::Affine>& worlds);
    void AddStill();

    const ComparedScene& compared_;
    const kta::NodeTree& tree_;
    Deviation& result_;
    Box overTime_;
    std::set<int> sheared_;
    std::vector<kta::Affine> before_, expectedBefore_;  // at the time before
    std::vector<double> moves_;  // by file node without tracks: how far it goes from where it was
    std::vector<bool> turns_;
};

void PoseComparison::Run(const Box& atRest) {
    std::vector<int> ticks = compared_.Ticks(kMostPoseTimes);
    ticks.insert(ticks.begin(), 0);
    for (const int tick : ticks) {
        CompareAt(tick);
    }
    result_.times = ticks.size();
    result_.sheared.assign(sheared_.begin(), sheared_.end());
    result_.size = (atRest.Diagonal() > 0 ? atRest : overTime_).Size();
    AddStill();
}

// What hangs below a node that the files cannot hold, or one that has no extent, is compared as if
// the node were right. What stands as it did the time before is known.
void PoseComparison::CompareAt(int tick) {
    std::vector<kta::Affine> expected = compared_.WorldsAt(tick);
    std::vector<kta::Affine> found(tree_.Size());
    for (const std::size_t i : tree_.ParentsFirst()) {
        const std::size_t parent = tree_.Parent(i);
        const kta::Affine above = parent == kta::kNoNode ? kta::Affine() : found[parent];
        const int node = compared_.Match().SceneNodeOf(i);
        found[i] = above * tree_.Local(i, compared_.SecondsOf(tick));
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

void PoseComparison::ComparePose(int node, const kta::Affine& found, const kta::Affine& expected,
                                 int tick) {
    const double distance = kta::Length(found.translation - expected.translation);
    if (result_.pose.IsWorse(distance)) {
        result_.pose = {.value = distance, .node = node, .frame = compared_.FrameOf(tick)};
    }
    if (!kta::HasVolume(found) || !kta::HasVolume(expected)) {
        return;
    }
    const double degrees = DegreesBetween(found, expected);
    if (result_.angle.IsWorse(degrees)) {
        result_.angle = {.value = degrees, .node = node, .frame = compared_.FrameOf(tick)};
    }
}

// The parent is the scene's own: a node whose parent is not exported moves with it.
void PoseComparison::MeasureStill(const std::vector<kta::Affine>& worlds) {
    moves_.resize(tree_.Size());
    turns_.resize(tree_.Size());
    for (std::size_t i = 0; i < tree_.Size(); ++i) {
        const int node = compared_.Match().SceneNodeOf(i);
        if (node == scene::kNone || tree_.MotionOf(i)) {
            continue;
        }
        const int parent = compared_.Node(node).parent;
        const auto stays = [&](int which) {
            const auto at = static_cast<std::size_t>(which);
            return which == scene::kNone || IsSame(worlds[at], compared_.WorldsAtZero()[at]);
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
        const kta::Affine now = local(worlds), before = local(compared_.WorldsAtZero());
        moves_[i] = std::max(moves_[i], kta::Length(now.translation - before.translation));
        turns_[i] = turns_[i] || (kta::HasVolume(now) && kta::HasVolume(before) &&
                                  DegreesBetween(now, before) > kMovingDegrees);
    }
}

void PoseComparison::AddStill() {
    for (std::size_t i = 0; i < tree_.Size(); ++i) {
        if (turns_[i] || (result_.size > 0 && moves_[i] > kMovingShare * result_.size)) {
            result_.still.push_back(compared_.Match().SceneNodeOf(i));
        }
    }
    std::ranges::sort(result_.still);
}

// ---------------------------------------------------------------- skins

struct SkinPair {
    const kta::ActorMesh& mesh;
    int node;
    kta::Skin inFile;
    SceneSkin inScene;
};

void CompareSkin(const ComparedScene& compared, const SkinPair& pair,
                 const std::vector<kta::Affine>& fileWays, const std::vector<kta::Affine>& ways,
                 int tick, Deviation& result) {
    const std::vector<scene::Vec3>& vertices = compared.Node(pair.node).object->mesh->vertices;
    const kta::Affine& world = compared.WorldAtZero(pair.node);
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
            ++result.skinnedVertices;
            if (result.skin.IsWorse(distance)) {
                result.skin = {.value = distance,
                               .node = pair.node,
                               .vertex = vertex.originalVertex,
                               .bone = pair.inScene.MostOf(number),
                               .frame = compared.FrameOf(tick)};
            }
        }
    }
}

}  // namespace

void ComparePoses(const ComparedScene& compared, const Box& atRest, Deviation& deviation) {
    PoseComparison(compared, deviation).Run(atRest);
}

void CompareSkins(const ComparedScene& compared, Deviation& deviation) {
    std::vector<SkinPair> skins;
    for (const kta::ActorMesh& mesh : compared.Meshes()) {
        const scene::Mesh* const own = mesh.weights ? compared.MeshOf(mesh) : nullptr;
        if (own) {
            skins.push_back({mesh, compared.NodeOf(mesh), kta::Skin(compared.Tree(), mesh),
                             SceneSkin(compared.Node(compared.NodeOf(mesh)), compared.NodeOf(mesh),
                                       own->vertices.size())});
        }
    }
    if (skins.empty()) {
        return;
    }
    for (const int tick : compared.Ticks(kMostSkinTimes)) {
        const std::vector<kta::Affine> fileWays =
            kta::WaysFromBind(compared.Tree(), compared.SecondsOf(tick));
        const std::vector<kta::Affine> ways =
            WaysBetween(compared.WorldsAtZero(), compared.WorldsAt(tick));
        for (const SkinPair& skin : skins) {
            CompareSkin(compared, skin, fileWays, ways, tick, deviation);
        }
    }
}

}  // namespace maxhost::app
