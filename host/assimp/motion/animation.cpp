#include "host/assimp/motion/animation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <optional>
#include <utility>

#include "host/assimp/maths.h"
#include "host/assimp/motion/curves.h"
#include "host/assimp/motion/key_fit.h"
#include "host/assimp/text.h"

namespace maxhost::import {
namespace {

// How far a pose may stray in the world.
constexpr double kMostAngle = 0.1 * 3.14159265358979323846 / 180;
constexpr double kMostOfDiagonal = 0.001;

// Left for what rounding to float costs.
constexpr double kSafety = 0.9;

// ---------------------------------------------------------------- motions

class VectorMotion final : public Motion {
  public:
    explicit VectorMotion(std::function<Vector(double)> at) : at_(std::move(at)) {}

    Sample At(double time, const Vector&) const override { return {time, at_(time), {}}; }
    Sample Again(const Sample& sample, const Vector&) const override { return sample; }
    double Error(const Vector& value, const Sample& sample) const override {
        return (value - sample.value).Length();
    }
    double ErrorAt(const Vector& value, double time) const override {
        return (value - at_(time)).Length();
    }

  private:
    std::function<Vector(double)> at_;
};

class RotationMotion final : public Motion {
  public:
    RotationMotion(std::function<Quaternion(double)> at, double poleAngle)
        : at_(std::move(at)), poleAngle_(poleAngle) {}

    Sample At(double time, const Vector& near) const override {
        return Near(time, at_(time), near);
    }
    Sample Again(const Sample& sample, const Vector& near) const override {
        return Near(sample.time, sample.rotation, near);
    }
    double Error(const Vector& value, const Sample& sample) const override {
        return AngleBetween(RotationOfEuler(value), sample.rotation);
    }
    double ErrorAt(const Vector& value, double time) const override {
        return AngleBetween(RotationOfEuler(value), at_(time));
    }

  private:
    Sample Near(double time, const Quaternion& rotation, const Vector& near) const {
        return {time, EulerNear(rotation, near, poleAngle_), rotation};
    }

    std::function<Quaternion(double)> at_;
    double poleAngle_;
};

// ---------------------------------------------------------------- tracks

// One of a node's position, rotation (as Euler angles) and scale.
struct Track {
    std::vector<FittedKey> keys;  // none: constant
    Vector value;
};

struct Tolerances {
    double position = 0, angle = 0, scale = 0;
};

class SceneWriter {
  public:
    std::size_t NotFinite() const { return notFinite_; }

    scene::Transform TransformOf(const Track& position, const Track& rotation, const Track& scale) {
        scene::PrsTransform prs;
        prs.position = ThreeAxesOf(position);
        prs.rotation = ThreeAxesOf(rotation);
        prs.scale = ScaleOf(scale);
        return {{}, {}, std::move(prs)};
    }

  private:
    float Rounded(double number) { return FiniteFloat(number + 0.0, notFinite_); }  // never -0

    scene::Vec3 Rounded(const Vector& v) { return {Rounded(v.x), Rounded(v.y), Rounded(v.z)}; }

    scene::ThreeAxisController ThreeAxesOf(const Track& track) {
        scene::ThreeAxes three;
        for (unsigned axis = 0; axis < 3; ++axis) {
            scene::BezierFloat curve;
            for (const FittedKey& key : track.keys) {
                curve.keys.push_back({key.time, Rounded(key.value[axis]), key.inType, key.outType,
                                      Rounded(key.inTangent[axis]), Rounded(key.outTangent[axis])});
            }
            curve.value = track.keys.empty() ? Rounded(track.value[axis]) : 0;
            three.axes[axis] = scene::FloatController{{}, {}, std::move(curve)};
        }
        return {{}, {}, {}, std::move(three)};
    }

    scene::ThreeAxisController ScaleOf(const Track& track) {
        scene::BezierScale curve;
        for (const FittedKey& key : track.keys) {
            curve.keys.push_back({key.time, Rounded(key.value), key.inType, key.outType,
                                  Rounded(key.inTangent), Rounded(key.outTangent)});
        }
        if (track.keys.empty()) {
            curve.value = Rounded(track.value);
        }
        return {{}, {}, {}, std::move(curve)};
    }

    std::size_t notFinite_ = 0;
};

// ---------------------------------------------------------------- one node

class TrackMaker {
  public:
    TrackMaker(const AnimatedChain& chain, const Tolerances& tolerances, int frame)
        : chain_(chain), tolerances_(tolerances), frame_(frame) {}

    // Position, rotation and scale.
    std::array<Track, 3> Make() {
        if (const auto channel = chain_.AsChannel()) {
            return {TrackOf(channel->position, tolerances_.position), TrackOf(channel->rotation),
                    TrackOf(channel->scale, tolerances_.scale)};
        }
        return FromPoses();
    }

    // Of the poses that have no keys of their own.
    double Shear() const { return shear_; }

  private:
    // A motion that strays by less than this part of the tolerance is none.
    static constexpr double kStill = 1e-3;

    double PoleAngle() const {
        constexpr double kShareOfTolerance = 0.125;
        return kShareOfTolerance * tolerances_.angle;
    }

    static Track TrackOf(const Curve<Vector>& curve, double tolerance) {
        if (curve.IsConstant(kStill * tolerance)) {
            return {{}, curve.keys.front().value};
        }
        return {KeysOf(curve, tolerance), {}};
    }

    Track TrackOf(const Curve<Quaternion>& curve) const {
        std::vector<double> times;
        for (const CurveKey<Quaternion>& key : curve.keys) {
            times.push_back(key.time);
        }
        std::size_t behind = 0;  // times mostly ascend
        const RotationMotion motion(
            [&curve, &behind](double time) { return curve.At(time, behind); }, PoleAngle());
        return TrackOf(motion, times, tolerances_.angle, curve.interpolation,
                       curve.IsConstant(kStill * tolerances_.angle));
    }

    Track TrackOf(const Motion& motion, const std::vector<double>& times, double tolerance,
                  Interpolation interpolation, bool isConstant) const {
        if (isConstant) {
            return {{}, motion.At(times.front(), Vector()).value};
        }
        return {FitKeys(motion, times, {kSafety * tolerance, frame_, interpolation}), {}};
    }

    std::array<Track, 3> FromPoses() {
        const std::vector<double> times = chain_.Times();
        const auto position = [this](double time) { return chain_.PoseAt(time).position; };
        const auto rotation = [this](double time) {
            const Pose pose = chain_.PoseAt(time);
            shear_ = std::max(shear_, pose.shear);
            return pose.rotation;
        };
        const auto scale = [this](double time) { return chain_.PoseAt(time).scale; };
        const auto track = [&](const Motion& motion, double tolerance) {
            return TrackOf(motion, times, tolerance, chain_.CommonInterpolation(),
                           IsStill(motion, times, kStill * tolerance));
        };
        return {track(VectorMotion(position), tolerances_.position),
                track(RotationMotion(rotation, PoleAngle()), tolerances_.angle),
                track(VectorMotion(scale), tolerances_.scale)};
    }

    // At the keys and between them.
    static bool IsStill(const Motion& motion, const std::vector<double>& times, double tolerance) {
        constexpr int kParts = 4;
        const Vector first = motion.At(times.front(), Vector()).value;
        for (std::size_t i = 1; i < times.size(); ++i) {
            for (int part = 1; part <= kParts; ++part) {
                const double t =
                    times[i - 1] + (times[i] - times[i - 1]) * part / static_cast<double>(kParts);
                if (motion.Error(first, motion.At(t, first)) > tolerance) {
                    return false;
                }
            }
        }
        return true;
    }

    const AnimatedChain& chain_;
    const Tolerances tolerances_;
    const int frame_;
    double shear_ = 0;
};

// ---------------------------------------------------------------- the scene

const scene::Matrix& StartOf(const scene::Node& node) {
    return std::get<scene::MatrixTransform>(node.transform->kind).matrix;
}

const scene::Mesh* MeshOf(const scene::Node& node) {
    return node.object ? node.object->mesh.get() : nullptr;
}

Vector ToVector(const scene::Vec3& v) {
    return {v[0], v[1], v[2]};
}

// Of the nodes' places and vertices at tick 0.
double DiagonalOf(const std::vector<scene::Node>& nodes) {
    constexpr double kNone = std::numeric_limits<double>::infinity();
    Vector least(kNone), most(-kNone);
    const auto add = [&](const Vector& p) {
        least = {std::min(least.x, p.x), std::min(least.y, p.y), std::min(least.z, p.z)};
        most = {std::max(most.x, p.x), std::max(most.y, p.y), std::max(most.z, p.z)};
    };
    std::vector<Matrix4> worlds;
    for (const scene::Node& node : nodes) {
        const Matrix4 local = ColumnMatrix(StartOf(node));
        worlds.push_back(node.parent == scene::kNone
                             ? local
                             : worlds[static_cast<std::size_t>(node.parent)] * local);
        add(worlds.back() * Vector());
        if (const scene::Mesh* const mesh = MeshOf(node)) {
            for (const scene::Vec3& vertex : mesh->vertices) {
                add(worlds.back() * ToVector(vertex));
            }
        }
    }
    const double diagonal = (most - least).Length();
    return std::isfinite(diagonal) ? diagonal : 0;
}

class Animator {
  public:
    Animator(const Channels& channels, const SourceTree& tree, const std::vector<NodeFrame>& frames,
             const scene::Time& time, std::vector<scene::Node>& nodes, ImportWarnings& warnings)
        : channels_(channels),
          tree_(tree),
          frames_(frames),
          frame_(time.ticksPerFrame),
          nodes_(nodes),
          warnings_(warnings),
          diagonal_(DiagonalOf(nodes)) {}

    void Animate() {
        for (std::size_t i = 0; i < tree_.nodes.size(); ++i) {
            chains_.push_back(ChainOf(i));
        }
        Measure();
        LimitFrames();
        SceneWriter writer;
        for (std::size_t i = 0; i < chains_.size(); ++i) {
            if (chains_[i].Moves()) {
                Animate(i, writer);
            }
        }
        warnings_.SetNode(scene::kNone);
        warnings_.Add(LossCode::animationNotFinite, "", writer.NotFinite());
    }

  private:
    struct Extent {
        double scale = 1;  // of a length at the node, in the world, at most
        double reach = 0;  // from the node, in the world, of anything that moves with it
        int above = 0;     // components that move, of the node and all above it
        int below = 0;     // on the longest way down, the node's not counted
    };

    AnimatedChain ChainOf(std::size_t i) const {
        constexpr double kStillness = 1e-6;  // of the scene's diagonal
        AnimatedChain chain;
        chain.Append(frames_[i].before);
        AppendLocal(chain, tree_.nodes[i], channels_, tree_.turn, kStillness * diagonal_);
        chain.Append(frames_[i].after);
        return chain;
    }

    // ---- tolerances: what a node's pose is off by moves all below it, and all of it adds up

    static constexpr int kComponents = 3;  // position, rotation, scale

    void Measure() {
        extents_.resize(chains_.size());
        for (std::size_t i = 0; i < chains_.size(); ++i) {
            const int parent = nodes_[i].parent;
            const Extent above =
                parent == scene::kNone ? Extent() : extents_[static_cast<std::size_t>(parent)];
            extents_[i].scale = above.scale * chains_[i].MostScale();
            extents_[i].above = above.above + (chains_[i].Moves() ? kComponents : 0);
            extents_[i].reach = extents_[i].scale * MeshReach(nodes_[i]);
        }
        for (std::size_t i = chains_.size(); i-- > 0;) {
            const int parent = nodes_[i].parent;
            if (parent != scene::kNone) {
                Extent& above = extents_[static_cast<std::size_t>(parent)];
                const int own = chains_[i].Moves() ? kComponents : 0;
                above.below = std::max(above.below, own + extents_[i].below);
                above.reach = std::max(above.reach,
                                       above.scale * chains_[i].MostOffset() + extents_[i].reach);
            }
        }
    }

    static double MeshReach(const scene::Node& node) {
        double reach = 0;
        if (const scene::Mesh* const mesh = MeshOf(node)) {
            for (const scene::Vec3& vertex : mesh->vertices) {
                reach = std::max(reach, ToVector(vertex).Length());
            }
        }
        return reach;
    }

    // A scene of one point has no diagonal; its motion has.
    double Diagonal(std::size_t i) const {
        return diagonal_ > 0 ? diagonal_ : std::max(chains_[i].MostOffset(), 1e-6);
    }

    Tolerances TolerancesOf(std::size_t i) const {
        const Extent& extent = extents_[i];
        const double share = 1.0 / (extent.above + extent.below);
        const double angle = kComponents * share * kMostAngle;
        const double distance = share * kMostOfDiagonal * Diagonal(i);
        const int parent = nodes_[i].parent;
        const double scaleAbove =
            parent == scene::kNone ? 1 : extents_[static_cast<std::size_t>(parent)].scale;
        const auto over = [](double length, double size, double most) {
            return size > 0 ? std::min(length / size, most) : most;
        };
        constexpr double kMostScaleError = 1e-3;
        const double ownScale = scaleAbove > 0 ? extent.scale / scaleAbove : 1;
        return {over(distance, scaleAbove, distance * 1e6), over(distance, extent.reach, angle),
                ownScale * over(distance, extent.reach, kMostScaleError)};
    }

    // ---- keys in between

    // Looks at the frames only where that is no more work than a file of its size is worth.
    void LimitFrames() {
        constexpr double kMostSamples = 1e7;
        constexpr double kMostSamplesAKey = 8;
        double samples = 0, keys = 0;
        for (const AnimatedChain& chain : chains_) {
            if (chain.Moves()) {
                const std::vector<double> times = chain.Times();
                samples += 2 * (times.back() - times.front()) / frame_;
                keys += static_cast<double>(times.size());
            }
        }
        if (samples > kMostSamples + kMostSamplesAKey * keys) {
            frame_ = 0;
            warnings_.SetNode(scene::kNone);
            warnings_.Add(LossCode::keysTooMany, "");
        }
    }

    void Animate(std::size_t i, SceneWriter& writer) {
        constexpr double kSheared = 1e-3;
        warnings_.SetNode(static_cast<int>(i));
        TrackMaker maker(chains_[i], TolerancesOf(i), frame_);
        const auto [position, rotation, scale] = maker.Make();
        nodes_[i].transform = writer.TransformOf(position, rotation, scale);
        warnings_.AddOf(LossCode::shearInAnimation, "node", Quoted(nodes_[i].name),
                        maker.Shear() > kSheared ? 1 : 0);
    }

    const Channels& channels_;
    const SourceTree& tree_;
    const std::vector<NodeFrame>& frames_;
    int frame_;
    std::vector<scene::Node>& nodes_;
    ImportWarnings& warnings_;
    const double diagonal_;
    std::vector<AnimatedChain> chains_;
    std::vector<Extent> extents_;
};

}  // namespace

void AnimateNodes(const Channels& channels, const SourceTree& tree,
                  const std::vector<NodeFrame>& frames, const scene::Time& time,
                  std::vector<scene::Node>& nodes, ImportWarnings& warnings) {
    if (!channels.empty()) {
        Animator(channels, tree, frames, time, nodes, warnings).Animate();
    }
}

}  // namespace maxhost::import
