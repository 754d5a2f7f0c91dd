#include "kta/gltf/nodes.h"

#include <algorithm>

#include "kta/dump.h"
#include "kta/gltf/decompose.h"

namespace kta::gltf {
namespace {

// ---------------------------------------------------------------- places

// Those of a scale along the map's own axes.
std::optional<Vector3> ScaleOf(const Affine& a) {
    constexpr double kShare = 1e-5;
    const double longest = std::max({Length(a.axes[0]), Length(a.axes[1]), Length(a.axes[2])});
    const Vector3 scale = {a.axes[0][0], a.axes[1][1], a.axes[2][2]};
    for (std::size_t i = 0; i < 3; ++i) {
        Vector3 off = a.axes[i];
        off[i] = 0;
        if (Length(off) > kShare * longest) {
            return std::nullopt;
        }
    }
    return Length(a.translation) <= kShare * longest ? std::optional(scale) : std::nullopt;
}

Vector3 ByComponents(const Vector3& a, const Vector3& b) {
    return {a[0] * b[0], a[1] * b[1], a[2] * b[2]};
}

void SetOffset(NodePlace& place, const Affine& offset) {
    place.offset = offset;
    place.hasOffset = true;
}

NodePlace PlaceOfMoving(const NodeMotion& motion, const Affine& above, double size) {
    NodePlace place{motion.AtTickZero()};
    const Affine link = above * motion.link;
    if (!IsNearlyIdentity(link, size)) {
        place.carriers = Factors(link);
    }
    if (!IsNearlyIdentity(motion.offset, Length(place.transform.translation))) {
        if (const std::optional<Vector3> scale = ScaleOf(motion.offset)) {
            place.scaleFactor = *scale;
            place.transform.scale = ByComponents(place.transform.scale, *scale);
        } else {
            SetOffset(place, motion.offset);
        }
    }
    return place;
}

Transform Recorded(const KTANode& record) {
    const auto& t = record.translation;
    const auto& q = record.rotation;
    const auto& s = record.scale;
    return {{t[0], t[1], t[2]}, Normalized(Quaternion{q[0], q[1], q[2], q[3]}), {s[0], s[1], s[2]}};
}

// The record's own numbers, where they say what the bind pose does: a local transform that was got
// from world transforms has their rounding.
NodePlace PlaceOfStill(const KTANode& record, const Affine& local, double size) {
    const Transform recorded = Recorded(record);
    const std::optional<Affine> inverse = Inverse(recorded.ToAffine());
    if (inverse && IsNearlyIdentity(*inverse * local, size)) {
        return {recorded};
    }
    const Decomposition parts = Decompose(local);
    NodePlace place{parts.transform};
    if (!IsNearlyIdentity(parts.rest, 0)) {
        SetOffset(place, parts.rest);
    }
    return place;
}

// A node without extent has no other transform than its record's.
NodePlace PlaceOfFlat(const KTANode& record, const Affine& above, double size) {
    NodePlace place{Recorded(record)};
    if (!IsNearlyIdentity(above, size)) {
        place.carriers = Factors(above);
    }
    return place;
}

// ---------------------------------------------------------------- objects

Json NodeJson(const std::string& name, const Transform& transform) {
    const Vector3 none{};
    Json node = {{"name", name}};
    if (transform.translation != none) {
        node["translation"] = JsonOf(Exchanged(transform.translation));
    }
    if (transform.rotation != Quaternion{0, 0, 0, 1}) {
        node["rotation"] = JsonOf(Exchanged(transform.rotation));
    }
    if (transform.scale != Vector3{1, 1, 1}) {
        node["scale"] = JsonOf(transform.scale);
    }
    return node;
}

// The root above each node.
std::vector<std::size_t> RootsOf(const NodeTree& tree) {
    std::vector<std::size_t> roots(tree.Size());
    for (const std::size_t i : tree.ParentsFirst()) {
        roots[i] = tree.Parent(i) == kNoNode ? i : roots[tree.Parent(i)];
    }
    return roots;
}

bool HaveCommonRoots(const NodeTree& tree, const std::vector<Joints>& skins) {
    const std::vector<std::size_t> roots = RootsOf(tree);
    return std::all_of(skins.begin(), skins.end(), [&roots](const Joints& joints) {
        return std::all_of(joints.begin(), joints.end(), [&](std::size_t joint) {
            return roots[joint] == roots[joints.front()];
        });
    });
}

}  // namespace

std::vector<NodePlace> PlaceNodes(const NodeTree& tree) {
    std::vector<NodePlace> places(tree.Size());
    for (const std::size_t i : tree.ParentsFirst()) {
        const std::size_t parent = tree.Parent(i);
        const Affine above = parent == kNoNode ? Affine() : places[parent].offset;
        const Affine& local = tree.BindLocal(i);
        const double size = Length(tree.BindWorld(i).translation) + Length(local.translation) +
                            (parent == kNoNode ? 0 : Length(tree.BindWorld(parent).translation));
        if (const NodeMotion* motion = tree.MotionOf(i)) {
            places[i] = PlaceOfMoving(*motion, above, size);
        } else if (HasVolume(local)) {
            places[i] = PlaceOfStill(tree.Record(i), above * local, size);
        } else {
            places[i] = PlaceOfFlat(tree.Record(i), above, size);
        }
    }
    return places;
}

std::vector<std::size_t> AddNodes(const NodeTree& tree, const std::vector<NodePlace>& places,
                                  const std::vector<Joints>& skins, Document& document) {
    for (std::size_t i = 0; i < tree.Size(); ++i) {
        document.Add("nodes",
                     NodeJson(ToUtf8(TextOf(tree.Record(i).nodeName)), places[i].transform));
    }
    const auto addChild = [&document](std::size_t parent, std::size_t child) {
        document.At("nodes", parent)["children"].push_back(child);
    };
    std::vector<std::size_t> roots;
    for (std::size_t i = 0; i < tree.Size(); ++i) {
        std::size_t top = i;
        for (std::size_t k = places[i].carriers.size(); k-- > 0;) {
            const std::string name = ToUtf8(TextOf(tree.Record(i).nodeName)) + " carrier";
            const std::size_t carrier =
                document.Add("nodes", NodeJson(name, places[i].carriers[k]));
            addChild(carrier, top);
            top = carrier;
        }
        if (tree.Parent(i) == kNoNode) {
            roots.push_back(top);
        } else {
            addChild(tree.Parent(i), top);
        }
    }
    if (!HaveCommonRoots(tree, skins)) {
        roots = {document.Add("nodes", {{"name", "Scene Root"}, {"children", roots}})};
    }
    return roots;
}

}  // namespace kta::gltf
