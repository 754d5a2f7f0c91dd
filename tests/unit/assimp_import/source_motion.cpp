#include "tests/unit/assimp_import/source_motion.h"

#include <algorithm>
#include <cmath>

namespace {

using Matrix4 = aiMatrix4x4t<double>;
using Vector3 = aiVector3t<double>;
using Quaternion = aiQuaterniont<double>;

template <typename Key>
const Key* Before(const Key* keys, unsigned count, double time) {
    const Key* const after = std::upper_bound(
        keys, keys + count, time, [](double t, const Key& key) { return t < key.mTime; });
    return after == keys ? keys : after - 1;
}

// 0 to 1 from `key` to the next one; 0 outside.
template <typename Key>
double PartOf(const Key* key, const Key* keys, unsigned count, double time) {
    const bool isBetween = key + 1 < keys + count && time > key->mTime;
    return isBetween ? (time - key->mTime) / (key[1].mTime - key->mTime) : 0;
}

Vector3 ValueAt(const aiVectorKey* keys, unsigned count, double time) {
    const aiVectorKey* const key = Before(keys, count, time);
    const double s = PartOf(key, keys, count, time);
    const aiVector3D& a = key->mValue;
    const aiVector3D& b = s > 0 ? key[1].mValue : a;
    return Vector3(a.x, a.y, a.z) * (1 - s) + Vector3(b.x, b.y, b.z) * s;
}

Quaternion ToDouble(const aiQuaternion& q) {
    Quaternion result(q.w, q.x, q.y, q.z);
    return result.Normalize();
}

// Turns about one axis by a part of the angle between the two.
Quaternion ValueAt(const aiQuatKey* keys, unsigned count, double time) {
    const aiQuatKey* const key = Before(keys, count, time);
    const double s = PartOf(key, keys, count, time);
    const Quaternion a = ToDouble(key->mValue);
    if (s == 0) {
        return a;
    }
    Quaternion inverse = a;
    inverse.Conjugate();
    Quaternion turn = inverse * ToDouble(key[1].mValue);
    if (turn.w < 0) {
        turn = Quaternion(-turn.w, -turn.x, -turn.y, -turn.z);
    }
    Vector3 axis(turn.x, turn.y, turn.z);
    const double sine = axis.Length();
    return sine == 0 ? a : a * Quaternion(axis / sine, 2 * std::atan2(sine, turn.w) * s);
}

Matrix4 MatrixOf(const aiNodeAnim& channel, double time) {
    Matrix4 translation, scaling;
    Matrix4::Translation(ValueAt(channel.mPositionKeys, channel.mNumPositionKeys, time),
                         translation);
    Matrix4::Scaling(ValueAt(channel.mScalingKeys, channel.mNumScalingKeys, time), scaling);
    const Matrix4 rotation(
        ValueAt(channel.mRotationKeys, channel.mNumRotationKeys, time).GetMatrix());
    return translation * rotation * scaling;
}

}  // namespace

SourceMotion::SourceMotion(const aiScene& scene, std::size_t clip) {
    for (unsigned i = 0; clip < scene.mNumAnimations && i < scene.mAnimations[clip]->mNumChannels;
         ++i) {
        const aiNodeAnim* const channel = scene.mAnimations[clip]->mChannels[i];
        channels_.emplace(channel->mNodeName.C_Str(), channel);
    }
}

Matrix4 SourceMotion::LocalAt(const aiNode& node, double time) const {
    const auto channel = channels_.find(node.mName.C_Str());
    const auto isWhole = [](const aiNodeAnim& keys) {
        return keys.mNumPositionKeys > 0 && keys.mNumRotationKeys > 0 && keys.mNumScalingKeys > 0;
    };
    return channel == channels_.end() || !isWhole(*channel->second)
               ? Matrix4(node.mTransformation)
               : MatrixOf(*channel->second, time);
}

SourcePose::SourcePose(const aiScene& scene, std::size_t clip, double time) {
    Add(SourceMotion(scene, clip), *scene.mRootNode, time);
}

// A parent is the one that the node names.
void SourcePose::Add(const SourceMotion& motion, const aiNode& node, double time) {
    const Matrix4 above = node.mParent ? WorldOf(*node.mParent) : Matrix4();
    const Matrix4& world = byNode_[&node] = above * motion.LocalAt(node, time);
    byName_.try_emplace(node.mName.C_Str(), &world);
    for (unsigned i = 0; i < node.mNumChildren; ++i) {
        Add(motion, *node.mChildren[i], time);
    }
}

std::vector<Matrix4> SourcePose::Ways(const aiNode& node, const aiMesh& mesh) const {
    std::vector<Matrix4> ways(mesh.mNumVertices, Matrix4() * 0.0);
    std::vector<double> sums(mesh.mNumVertices);
    for (unsigned i = 0; i < mesh.mNumBones; ++i) {
        const aiBone& bone = *mesh.mBones[i];
        const auto found = byName_.find(bone.mName.C_Str());
        for (unsigned k = 0; found != byName_.end() && k < bone.mNumWeights; ++k) {
            const auto& [vertex, weight] = bone.mWeights[k];
            const Matrix4 way = *found->second * Matrix4(bone.mOffsetMatrix);
            ways.at(vertex) = ways[vertex] + way * double{weight};
            sums[vertex] += weight;
        }
    }
    for (std::size_t i = 0; i < ways.size(); ++i) {
        ways[i] = sums[i] > 0 ? ways[i] * (1 / sums[i]) : WorldOf(node);
    }
    return ways;
}
