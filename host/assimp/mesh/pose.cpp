#include "host/assimp/mesh/pose.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace maxhost::import {
namespace {

// The node or mesh that the motion of morph targets is named after: Assimp's importers give it the
// node's name or the mesh's; of FBX files the node's with "*" and the mesh's number behind it.
std::string_view SubjectOf(const aiMeshMorphAnim& motion) {
    const std::string_view name = motion.mName.C_Str();
    return name.substr(0, name.rfind('*'));
}

void Blend(std::vector<double>& weights, const aiMeshMorphKey& key, double share) {
    for (unsigned i = 0; i < key.mNumValuesAndWeights; ++i) {
        if (key.mValues[i] < weights.size()) {
            weights[key.mValues[i]] += share * key.mWeights[i];
        }
    }
}

// Sets the weights that the motion moves to what they are at time 0.
void SetAtStart(std::vector<double>& weights, const aiMeshMorphAnim& motion) {
    const aiMeshMorphKey* const keys = motion.mKeys;
    const aiMeshMorphKey* const end = keys + motion.mNumKeys;
    const aiMeshMorphKey* const next =
        std::find_if(keys, end, [](const aiMeshMorphKey& key) { return key.mTime >= 0; });
    const aiMeshMorphKey* const right = next == end ? end - 1 : next;
    const aiMeshMorphKey* const left = next == end || next == keys ? right : next - 1;
    for (const aiMeshMorphKey* const key : {left, right}) {
        for (unsigned i = 0; i < key->mNumValuesAndWeights; ++i) {
            if (key->mValues[i] < weights.size()) {
                weights[key->mValues[i]] = 0;
            }
        }
    }
    const double share = left == right ? 1 : -left->mTime / (right->mTime - left->mTime);
    Blend(weights, *right, share);
    if (left != right) {
        Blend(weights, *left, 1 - share);
    }
}

}  // namespace

StartPose::StartPose(const SourceTree& tree, SourceFormat format, std::vector<Matrix4> locals,
                     const aiAnimation* clip)
    : tree_(tree), format_(format), locals_(std::move(locals)) {
    worlds_.reserve(tree.nodes.size());
    for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
        const int parent = tree.nodes[i].parent;
        worlds_.push_back(parent == scene::kNone
                              ? locals_[i]
                              : worlds_[static_cast<std::size_t>(parent)] * locals_[i]);
    }
    for (unsigned i = 0; clip && i < clip->mNumMorphMeshChannels; ++i) {
        const aiMeshMorphAnim& motion = *clip->mMorphMeshChannels[i];
        if (motion.mNumKeys > 0) {
            morphs_.try_emplace(motion.mName.C_Str(), &motion);
            morphs_.try_emplace(SubjectOf(motion), &motion);
        }
    }
}

const aiMeshMorphAnim* StartPose::MotionOf(std::size_t node, const aiMesh& piece) const {
    for (const aiString* const name : {&tree_.nodes[node].node->mName, &piece.mName}) {
        const auto found = morphs_.find(name->C_Str());
        if (found != morphs_.end()) {
            return found->second;
        }
    }
    return nullptr;
}

MorphWeights StartPose::MorphWeightsOf(std::size_t node, const aiMesh& piece) const {
    MorphWeights weights;
    for (unsigned i = 0; i < piece.mNumAnimMeshes; ++i) {
        weights.values.push_back(piece.mAnimMeshes[i]->mWeight);
    }
    const aiMeshMorphAnim* const motion = MotionOf(node, piece);
    if (format_ == SourceFormat::fbx) {
        // Assimp puts 1 in place of whatever percentage a shape has.
        weights.areLost = !motion && std::any_of(weights.values.begin(), weights.values.end(),
                                                 [](double weight) { return weight != 0; });
        weights.values.assign(weights.values.size(), 0);
    }
    if (motion) {
        SetAtStart(weights.values, *motion);
    }
    for (double& weight : weights.values) {
        weight = std::isfinite(weight) ? weight : 0;
    }
    return weights;
}

}  // namespace maxhost::import
