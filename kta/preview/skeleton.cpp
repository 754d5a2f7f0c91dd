#include "kta/preview/skeleton.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace kta {
namespace {

constexpr Vector3 kBoneColour = {0.95, 0.78, 0.25};
constexpr Vector3 kJointColour = {0.9, 0.35, 0.2};
constexpr double kJointSize = 0.008;    // of the scene's, from the middle to a corner
constexpr double kBoneWidth = 0.1;      // of the bone's length, likewise, up to kMostBoneWidth
constexpr double kMostBoneWidth = 1.5;  // joint sizes
constexpr double kThickest = 0.18;      // where on its way a bone is thickest

// Any direction that is at a right angle to that one.
Vector3 Across(const Vector3& direction) {
    const bool isUpright = std::abs(direction[1]) > 0.9;
    return Normalized(Cross(direction, isUpright ? Vector3{1, 0, 0} : Vector3{0, 1, 0}));
}

class Builder {
  public:
    explicit Builder(PreviewScene& scene) : scene_(scene) {}

    std::uint32_t AddLook(const Vector3& diffuse) {
        scene_.looks.push_back({diffuse, diffuse * 0.15});
        return static_cast<std::uint32_t>(scene_.looks.size() - 1);
    }

    // From one point to another, as wide as that where it is thickest.
    void AddOctahedron(const Vector3& from, const Vector3& to, double thickest, double width,
                       std::uint32_t look) {
        const std::size_t first = scene_.corners.size();
        if (first > std::numeric_limits<std::uint32_t>::max() - 6) {
            throw std::length_error("too many bones for a picture");
        }
        const Vector3 way = to - from;
        const Vector3 a = Across(Normalized(way));
        const Vector3 b = Cross(Normalized(way), a);
        const Vector3 middle = from + way * thickest;
        for (const Vector3& corner : {from, to, middle + a * width, middle + b * width,
                                      middle - a * width, middle - b * width}) {
            scene_.corners.push_back({corner, {}, {}});
        }
        for (std::uint32_t side = 0; side < 4; ++side) {
            for (const std::uint32_t end : {0u, 1u}) {
                const auto base = static_cast<std::uint32_t>(first);
                scene_.triangles.push_back(
                    {{base + end, base + 2 + side, base + 2 + (side + 1) % 4}, look});
            }
        }
    }

  private:
    PreviewScene& scene_;
};

// The greatest side of the box round the triangles and the bones.
double SizeOf(const PreviewScene& scene, std::span<const Vector3> joints) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    Vector3 low = {kInfinity, kInfinity, kInfinity};
    Vector3 high = low * -1;
    const auto add = [&](const Vector3& p) {
        for (std::size_t i = 0; i < 3 && IsFinite(p); ++i) {
            low[i] = std::min(low[i], p[i]);
            high[i] = std::max(high[i], p[i]);
        }
    };
    for (const PreviewTriangle& triangle : scene.triangles) {
        for (const std::uint32_t corner : triangle.corners) {
            add(scene.corners[corner].position);
        }
    }
    std::for_each(joints.begin(), joints.end(), add);
    const double size = std::max({high[0] - low[0], high[1] - low[1], high[2] - low[2]});
    return size > 0 && std::isfinite(size) ? size : 1;
}

}  // namespace

std::vector<std::size_t> BonesAbove(const NodeTree& nodes) {
    std::vector<std::size_t> above(nodes.Size(), kNoNode);
    for (const std::size_t node : nodes.ParentsFirst()) {
        const std::size_t parent = nodes.Parent(node);
        if (parent != kNoNode) {
            above[node] = nodes.Record(parent).isBone != 0 ? parent : above[parent];
        }
    }
    return above;
}

void AddSkeleton(const NodeTree& nodes, std::span<const Affine> worlds, PreviewScene& scene) {
    std::vector<std::size_t> bones;
    std::vector<Vector3> places(nodes.Size());
    std::vector<Vector3> joints;
    for (std::size_t node = 0; node < nodes.Size(); ++node) {
        places[node] =
            worlds.empty() ? nodes.BindWorld(node).translation : worlds[node].translation;
        if (nodes.Record(node).isBone != 0 && IsFinite(places[node])) {
            bones.push_back(node);
            joints.push_back(places[node]);
        }
    }
    const std::vector<std::size_t> above = BonesAbove(nodes);
    const double size = SizeOf(scene, joints) * kJointSize;
    Builder builder(scene);
    const std::uint32_t boneLook = builder.AddLook(kBoneColour);
    const std::uint32_t jointLook = builder.AddLook(kJointColour);
    for (const std::size_t bone : bones) {
        const Vector3& place = places[bone];
        builder.AddOctahedron(place - Vector3{0, size, 0}, place + Vector3{0, size, 0}, 0.5, size,
                              jointLook);
        if (above[bone] == kNoNode || !IsFinite(places[above[bone]])) {
            continue;
        }
        const Vector3& from = places[above[bone]];
        const double length = Length(place - from);
        if (length > 0 && std::isfinite(length)) {
            builder.AddOctahedron(from, place, kThickest,
                                  std::min(length * kBoneWidth, size * kMostBoneWidth), boneLook);
        }
    }
}

}  // namespace kta
