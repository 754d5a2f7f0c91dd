#include "kta/pose.h"

#include <cstring>
#include <unordered_map>

namespace kta {
namespace {

// ---------------------------------------------------------------- records

Vector3 ToVector(const float (&values)[3]) {
    return {values[0], values[1], values[2]};
}

// What is not finite is taken as nothing.
template <typename Record>
Transform PoseOf(const Record& record) {
    const Vector3 translation = ToVector(record.translation);
    const Vector3 scale = ToVector(record.scale);
    const auto& q = record.rotation;
    return {IsFinite(translation) ? translation : Vector3{},
            Normalized(Quaternion{q[0], q[1], q[2], q[3]}),
            IsFinite(scale) ? scale : Vector3{1, 1, 1}};
}

// The inverse of the node's world transform as it is stored, by rows for row vectors.
Affine StoredInverse(const KTANode& record) {
    Affine stored;
    for (std::size_t i = 0; i < 3; ++i) {
        const auto& row = record.inverseWorldMatrix[i];
        stored.axes[i] = {row[0], row[1], row[2]};
    }
    const auto& last = record.inverseWorldMatrix[3];
    stored.translation = {last[0], last[1], last[2]};
    return stored;
}

// ---------------------------------------------------------------- comparing

// How far apart the translations may be, and the axes as a share of their length, to be the same
// transform: what is left of numbers of single precision that were inverted and multiplied.
struct Tolerance {
    double translation = 1e-5;
    double axes = 1e-4;
};

bool HasSameTranslation(const Affine& a, const Affine& b, const Tolerance& tolerance) {
    return Length(a.translation - b.translation) <= tolerance.translation;
}

bool IsSame(const Affine& a, const Affine& b, const Tolerance& tolerance) {
    double longest = 0;
    double apart = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        longest = std::max({longest, Length(a.axes[i]), Length(b.axes[i])});
        apart = std::max(apart, Length(a.axes[i] - b.axes[i]));
    }
    return apart <= tolerance.axes * longest && HasSameTranslation(a, b, tolerance);
}

double ShortestAxis(const Affine& a) {
    return std::min({Length(a.axes[0]), Length(a.axes[1]), Length(a.axes[2])});
}

// For local transforms that were got from the world transforms of a node and of its parent, whose
// rounding grows with their distance from the origin.
Tolerance OfLocals(const Affine& parent, const Affine& world, const Affine& local) {
    constexpr double kShare = 1e-5;
    const double far = Length(parent.translation) + Length(world.translation);
    const double scale = ShortestAxis(parent);
    Tolerance tolerance;
    tolerance.translation =
        kShare * (1e-3 + Length(local.translation) + (scale > 0 ? far / scale : 0));
    return tolerance;
}

}  // namespace

// ---------------------------------------------------------------- hierarchy

std::vector<std::size_t> ParentsByName(std::span<const KTANode* const> nodes) {
    std::unordered_map<std::string_view, std::size_t> byName;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        byName.emplace(TextOf(nodes[i]->nodeName), i);
    }
    std::vector<std::size_t> parents;
    for (const KTANode* node : nodes) {
        const std::string_view name = TextOf(node->parentName);
        const auto parent = byName.find(name);
        const bool none = name.empty() || parent == byName.end();
        parents.push_back(none ? kNoNode : parent->second);
    }
    return parents;
}

namespace {

using Candidates = std::unordered_map<std::string_view, std::vector<std::size_t>>;

constexpr std::size_t kMostCandidates = 1000;

// Cuts the link by which a circle would close. The states are per node: 0 not seen, 1 on the path
// that is followed, 2 known to lead to a root.
void CutCircles(std::vector<std::size_t>& parents) {
    std::vector<std::uint8_t> states(parents.size(), 0);
    std::vector<std::size_t> path;
    for (std::size_t start = 0; start < parents.size(); ++start) {
        std::size_t at = start;
        while (at != kNoNode && states[at] == 0) {
            states[at] = 1;
            path.push_back(at);
            at = parents[at];
        }
        if (at != kNoNode && states[at] == 1) {
            parents[path.back()] = kNoNode;
        }
        for (const std::size_t node : path) {
            states[node] = 2;
        }
        path.clear();
    }
}

}  // namespace

void NodeTree::FindParents() {
    std::vector<const KTANode*> records;
    Candidates byName;
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        records.push_back(nodes_[i].record);
        byName[TextOf(nodes_[i].record->nodeName)].push_back(i);
    }
    std::vector<std::size_t> parents = ParentsByName(records);
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        if (parents[i] == kNoNode || !nodes_[i].stored) {
            continue;
        }
        const std::vector<std::size_t>& candidates = byName[TextOf(records[i]->parentName)];
        if (candidates.size() == 1) {
            continue;
        }
        const Affine local = PoseOf(*records[i]).ToAffine();
        const Affine& world = *nodes_[i].stored;
        for (std::size_t k = 0; k < std::min(candidates.size(), kMostCandidates); ++k) {
            const std::optional<Affine>& parent = nodes_[candidates[k]].stored;
            if (candidates[k] != i && parent &&
                IsSame(*parent * local, world, OfLocals(Affine(), *parent, world))) {
                parents[i] = candidates[k];
                break;
            }
        }
    }
    CutCircles(parents);
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        nodes_[i].parent = parents[i];
    }
}

void NodeTree::SortParentsFirst() {
    std::vector<bool> isPlaced(nodes_.size());
    std::vector<std::size_t> path;
    for (std::size_t start = 0; start < nodes_.size(); ++start) {
        for (std::size_t at = start; at != kNoNode && !isPlaced[at]; at = nodes_[at].parent) {
            isPlaced[at] = true;
            path.push_back(at);
        }
        order_.insert(order_.end(), path.rbegin(), path.rend());
        path.clear();
    }
}

// ---------------------------------------------------------------- bind pose

void NodeTree::PlaceAll() {
    std::vector<bool> hasVolume(nodes_.size());  // and so have those above it
    for (const std::size_t i : order_) {
        Node& node = nodes_[i];
        const Affine local = PoseOf(*node.record).ToAffine();
        const bool isRoot = node.parent == kNoNode;
        const Affine parent = isRoot ? Affine() : nodes_[node.parent].bindWorld;
        hasVolume[i] = HasVolume(local) && (isRoot || hasVolume[node.parent]);
        if (node.stored && hasVolume[i]) {
            node.bindWorld = *node.stored;
            node.fromBindWorld = StoredInverse(*node.record);
            node.bindLocal =
                isRoot ? *node.stored : nodes_[node.parent].fromBindWorld * *node.stored;
        } else {
            node.bindLocal = IsFinite(local) ? local : Affine();
            node.bindWorld = parent * node.bindLocal;
            node.fromBindWorld = Inverse(node.bindWorld).value_or(Affine());
        }
    }
}

NodeTree::NodeTree(const File& actor, const File* motion) {
    for (const Chunk& chunk : actor.chunks) {
        if (const auto* record = chunk.As<KTANode>()) {
            Node node;
            node.record = record;
            node.stored = Inverse(StoredInverse(*record));
            nodes_.push_back(node);
        }
    }
    FindParents();
    SortParentsFirst();
    PlaceAll();
    if (motion != nullptr) {
        AddMotions(*motion);
    }
}

// ---------------------------------------------------------------- motion

namespace {

// The nodes that a motion part may mean, of which each is given once.
class PartNodes {
  public:
    void Add(std::size_t node, const KTANode& record) {
        byPose_[KeyOf(record)].nodes.push_back(node);
        byName_[std::string(TextOf(record.nodeName))].nodes.push_back(node);
        isTaken_.resize(node + 1);
    }

    std::size_t Take(const KTAMotionPart& part) {
        const std::size_t node = First(byPose_[KeyOf(part)]);
        const std::size_t found =
            node != kNoNode ? node : First(byName_[std::string(TextOf(part.nodeName))]);
        if (found != kNoNode) {
            isTaken_[found] = true;
        }
        return found;
    }

  private:
    struct Queue {
        std::vector<std::size_t> nodes{};
        std::size_t next = 0;
    };

    std::size_t First(Queue& queue) const {
        while (queue.next < queue.nodes.size() && isTaken_[queue.nodes[queue.next]]) {
            ++queue.next;
        }
        return queue.next < queue.nodes.size() ? queue.nodes[queue.next] : kNoNode;
    }

    // The scales are of different kinds: a part's are those of a polar decomposition.
    template <typename Record>
    static std::string KeyOf(const Record& record) {
        std::array<char, sizeof(record.translation) + sizeof(record.rotation)> pose{};
        std::memcpy(pose.data(), record.translation, sizeof(record.translation));
        std::memcpy(pose.data() + sizeof(record.translation), record.rotation,
                    sizeof(record.rotation));
        return std::string(TextOf(record.nodeName)) + '\0' + std::string(pose.data(), pose.size());
    }

    std::unordered_map<std::string, Queue> byPose_;
    std::unordered_map<std::string, Queue> byName_;
    std::vector<bool> isTaken_;
};

void AddTrack(const KeyTrack& track, NodeMotion& motion) {
    switch (track.head.trackLetter) {
        case 'P':
            motion.position = TrackOf(track);
            break;
        case 'S':
            motion.scale = TrackOf(track);
            break;
        default:
            motion.rotation = TrackOf(track);
    }
}

}  // namespace

Transform NodeMotion::At(double seconds) const {
    return {VectorAt(position, seconds, rest.translation),
            RotationAt(rotation, seconds, rest.rotation), VectorAt(scale, seconds, rest.scale)};
}

Transform NodeMotion::AtTickZero() const {
    Transform pose = rest;
    if (!position.IsSampled()) {
        pose.translation = VectorAt(position, 0, pose.translation);
    }
    if (!rotation.IsSampled()) {
        pose.rotation = RotationAt(rotation, 0, pose.rotation);
    }
    if (!scale.IsSampled()) {
        pose.scale = VectorAt(scale, 0, pose.scale);
    }
    return pose;
}

// By the record the node stands `local` to what its parent is in 3ds Max, and by the matrices
// bindLocal to what its parent is in the file. Where only the axes differ the record lacks a scale
// along other axes; where the places differ so do those two parents.
void NodeTree::Place(std::size_t i, NodeMotion& motion) const {
    const Node& node = nodes_[i];
    Affine local = PoseOf(*node.record).ToAffine();
    const Affine parent = node.parent == kNoNode ? Affine() : nodes_[node.parent].bindWorld;
    const Tolerance tolerance = OfLocals(parent, node.bindWorld, local);
    const bool parentIsMissing = node.parent == kNoNode && !TextOf(node.record->parentName).empty();
    if (!IsSame(local, node.bindLocal, tolerance)) {
        const std::optional<Affine> inverse = Inverse(local);
        if (!parentIsMissing && HasSameTranslation(local, node.bindLocal, tolerance)) {
            local = node.bindLocal;
        } else if (inverse) {
            motion.link = node.bindLocal * *inverse;
        }
    }
    const Affine told = motion.AtTickZero().ToAffine();
    if (const std::optional<Affine> inverse = Inverse(told);
        inverse && HasVolume(local) && !IsSame(told, local, tolerance)) {
        motion.offset = *inverse * local;
    }
}

void NodeTree::AddMotions(const File& motion) {
    PartNodes partNodes;
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        partNodes.Add(i, *nodes_[i].record);
    }
    std::vector<std::size_t> nodes;
    for (const Chunk& chunk : motion.chunks) {
        if (const auto* part = chunk.As<KTAMotionPart>()) {
            motions_.emplace_back().part = part;
            motions_.back().rest = PoseOf(*part);
        } else if (const auto* track = chunk.As<KeyTrack>();
                   track != nullptr && !motions_.empty()) {
            AddTrack(*track, motions_.back());
        }
    }
    bool hasTime = false;
    for (std::size_t i = 0; i < motions_.size(); ++i) {
        const std::size_t node = partNodes.Take(*motions_[i].part);
        if (node == kNoNode) {
            strayParts_.emplace_back(TextOf(motions_[i].part->nodeName));
            continue;
        }
        nodes_[node].motion = i;
        Place(node, motions_[i]);
        for (const Track* track :
             {&motions_[i].position, &motions_[i].rotation, &motions_[i].scale}) {
            if (track->IsSampled() || track->IsKeyframed()) {
                firstTime_ =
                    hasTime ? std::min(firstTime_, track->FirstTime()) : track->FirstTime();
                lastTime_ = hasTime ? std::max(lastTime_, track->LastTime()) : track->LastTime();
                hasTime = true;
            }
        }
    }
}

const NodeMotion* NodeTree::MotionOf(std::size_t node) const {
    const std::size_t motion = nodes_[node].motion;
    return motion == kNoNode ? nullptr : &motions_[motion];
}

Affine NodeTree::Local(std::size_t node, double seconds) const {
    const NodeMotion* motion = MotionOf(node);
    return motion == nullptr ? BindLocal(node)
                             : motion->link * motion->At(seconds).ToAffine() * motion->offset;
}

std::vector<Affine> NodeTree::Worlds(double seconds) const {
    std::vector<Affine> worlds(nodes_.size());
    for (const std::size_t i : order_) {
        const std::size_t parent = nodes_[i].parent;
        worlds[i] = parent == kNoNode ? Local(i, seconds) : worlds[parent] * Local(i, seconds);
    }
    return worlds;
}

}  // namespace kta
