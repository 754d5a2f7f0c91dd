#include "tests/corpus/model.h"

#include <assimp/commonMetaData.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace corpus {
namespace {

std::string_view FormatOf(const aiScene& scene, aiString& buffer) {
    const bool isKnown = scene.mMetaData && scene.mMetaData->Get(AI_METADATA_SOURCE_FORMAT, buffer);
    return isKnown ? std::string_view(buffer.C_Str()) : std::string_view();
}

// Where a time stands among keys: between `from` and `to`, or at `from` where they are equal.
struct Place {
    unsigned from, to;
    double share;
};

template <typename Key>
Place Find(const Key* keys, unsigned count, double time) {
    const Key* const after = std::upper_bound(
        keys, keys + count, time, [](double t, const Key& key) { return t < key.mTime; });
    const auto next = static_cast<unsigned>(after - keys);
    if (next == 0 || next == count) {
        const unsigned held = next == 0 ? 0 : count - 1;
        return {held, held, 0};
    }
    const double begin = keys[next - 1].mTime;
    return {next - 1, next, (time - begin) / (keys[next].mTime - begin)};
}

Vector At(const aiVectorKey* keys, unsigned count, double time, const Vector& without) {
    if (count == 0) {
        return without;
    }
    const Place place = Find(keys, count, time);
    const Vector from(keys[place.from].mValue.x, keys[place.from].mValue.y,
                      keys[place.from].mValue.z);
    const Vector to(keys[place.to].mValue.x, keys[place.to].mValue.y, keys[place.to].mValue.z);
    return from + (to - from) * place.share;
}

Rotation ToDouble(const aiQuaternion& q) {
    Rotation result(q.w, q.x, q.y, q.z);
    return result.Normalize();
}

Rotation At(const aiQuatKey* keys, unsigned count, double time) {
    if (count == 0) {
        return Rotation();
    }
    const Place place = Find(keys, count, time);
    Rotation result;
    Rotation::Interpolate(result, ToDouble(keys[place.from].mValue),
                          ToDouble(keys[place.to].mValue), place.share);
    return result.Normalize();
}

}  // namespace

Matrix Compose(const Vector& translation, const Rotation& rotation, const Vector& scale) {
    Matrix matrix(rotation.GetMatrix());
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            matrix[row][column] *= scale[column];
        }
        matrix[row][3] = translation[row];
    }
    return matrix;
}

View ViewOf(const aiScene& scene) {
    View view;
    std::int32_t up = 1, upSign = 1, right = 0, rightSign = 1;
    if (scene.mMetaData && scene.mMetaData->Get("UpAxis", up) && up >= 0 && up < 3) {
        scene.mMetaData->Get("UpAxisSign", upSign);
        scene.mMetaData->Get("CoordAxis", right);
        scene.mMetaData->Get("CoordAxisSign", rightSign);
        view.up = view.right = Vector();
        view.up[static_cast<unsigned>(up)] = upSign < 0 ? -1 : 1;
        view.right[static_cast<unsigned>(right)] = rightSign < 0 ? -1 : 1;
    }
    return view;
}

double RootScale(const aiScene& scene) {
    aiString buffer;
    if (FormatOf(scene, buffer) != "Collada Importer") {
        return 1;
    }
    const Matrix root(scene.mRootNode->mTransformation);
    return std::cbrt(std::abs(root.Determinant()));
}

Clip::Clip(const aiScene& scene, unsigned number) {
    if (number >= scene.mNumAnimations) {
        return;
    }
    clip_ = scene.mAnimations[number];
    aiString buffer;
    // A format that states no rate counts frames, of 3ds Max in its own.
    ticksPerSecond_ = clip_->mTicksPerSecond > 0                           ? clip_->mTicksPerSecond
                      : FormatOf(scene, buffer) == "Discreet 3DS Importer" ? 30
                                                                           : 25;
    for (unsigned i = 0; i < clip_->mNumChannels; ++i) {
        const aiNodeAnim* const channel = clip_->mChannels[i];
        if (const aiNode* const node = scene.mRootNode->FindNode(channel->mNodeName)) {
            channels_.emplace(node, channel);
        }
    }
}

double Clip::Seconds() const {
    return clip_ ? clip_->mDuration / ticksPerSecond_ : 0;
}

Matrix Clip::Local(const aiNode& node, double seconds) const {
    const auto found = channels_.find(&node);
    if (found == channels_.end()) {
        return Matrix(node.mTransformation);
    }
    const aiNodeAnim& channel = *found->second;
    const double time = seconds * ticksPerSecond_;
    const Rotation rotation = At(channel.mRotationKeys, channel.mNumRotationKeys, time);
    const Vector position =
        At(channel.mPositionKeys, channel.mNumPositionKeys, time, Vector(0, 0, 0));
    const Vector scale = At(channel.mScalingKeys, channel.mNumScalingKeys, time, Vector(1, 1, 1));
    return Compose(position, rotation, scale);
}

}  // namespace corpus
