#include "tests/unit/host/assimp/source_scene.h"
#include "tests/unit/host/assimp/shown_scene.h"

#include <assimp/commonMetaData.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "host/assimp/import.h"

namespace {

// Appends to an array as Assimp keeps them.
template <typename T>
void Append(T**& items, unsigned& count, T* item) {
    T** const grown = new T*[count + 1];
    std::copy(items, items + count, grown);
    grown[count++] = item;
    delete[] items;
    items = grown;
}

void Copy(const PositionKeys& from, aiVectorKey*& to, unsigned& count) {
    count = static_cast<unsigned>(from.size());
    to = new aiVectorKey[from.size()];
    for (std::size_t i = 0; i < from.size(); ++i) {
        to[i] = aiVectorKey(from[i].first, from[i].second);
    }
}

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

Matrix4 ChannelMatrix(const aiNodeAnim& channel, double time) {
    Matrix4 translation, scaling;
    Matrix4::Translation(ValueAt(channel.mPositionKeys, channel.mNumPositionKeys, time),
                         translation);
    Matrix4::Scaling(ValueAt(channel.mScalingKeys, channel.mNumScalingKeys, time), scaling);
    const Matrix4 rotation(
        ValueAt(channel.mRotationKeys, channel.mNumRotationKeys, time).GetMatrix());
    return translation * rotation * scaling;
}

}  // namespace

SourceScene::SourceScene(const std::string& importer, const std::string& rootName) {
    scene_->mRootNode = new aiNode(rootName);
    scene_->mMetaData = new aiMetadata;
    scene_->mMetaData->Add(AI_METADATA_SOURCE_FORMAT, aiString(importer));
}

aiNode* SourceScene::AddNode(aiNode* parent, const std::string& name) {
    aiNode* node = new aiNode(name);
    node->mParent = parent;
    parent->addChildren(1, &node);
    return node;
}

unsigned SourceScene::AddMesh(const std::string& name, const std::vector<aiVector3D>& vertices,
                              const std::vector<std::vector<unsigned>>& faces, unsigned material) {
    aiMesh* const mesh = new aiMesh;
    mesh->mName = name;
    mesh->mMaterialIndex = material;
    mesh->mNumVertices = static_cast<unsigned>(vertices.size());
    mesh->mVertices = new aiVector3D[vertices.size()];
    std::copy(vertices.begin(), vertices.end(), mesh->mVertices);
    mesh->mNumFaces = static_cast<unsigned>(faces.size());
    mesh->mFaces = new aiFace[faces.size()];
    for (std::size_t i = 0; i < faces.size(); ++i) {
        mesh->mFaces[i].mNumIndices = static_cast<unsigned>(faces[i].size());
        mesh->mFaces[i].mIndices = new unsigned[faces[i].size()];
        std::copy(faces[i].begin(), faces[i].end(), mesh->mFaces[i].mIndices);
    }
    Append(scene_->mMeshes, scene_->mNumMeshes, mesh);
    return scene_->mNumMeshes - 1;
}

unsigned SourceScene::AddTriangle(const std::string& name, unsigned material) {
    return AddMesh(name, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}}, material);
}

void SourceScene::Show(aiNode* node, const std::vector<unsigned>& meshes) {
    node->mNumMeshes = static_cast<unsigned>(meshes.size());
    delete[] node->mMeshes;
    node->mMeshes = new unsigned[meshes.size()];
    std::copy(meshes.begin(), meshes.end(), node->mMeshes);
}

void SourceScene::AddBone(unsigned mesh, const std::string& name,
                          const std::vector<aiVertexWeight>& weights, const aiMatrix4x4& offset) {
    aiBone* const bone = new aiBone;
    bone->mName = name;
    bone->mOffsetMatrix = offset;
    bone->mNumWeights = static_cast<unsigned>(weights.size());
    bone->mWeights = new aiVertexWeight[weights.size()];
    std::copy(weights.begin(), weights.end(), bone->mWeights);
    Append(Mesh(mesh).mBones, Mesh(mesh).mNumBones, bone);
}

aiAnimMesh& SourceScene::AddMorphTarget(unsigned mesh, const std::string& name,
                                        const std::vector<aiVector3D>& vertices, float weight) {
    aiAnimMesh* const target = new aiAnimMesh;
    target->mName = name;
    target->mWeight = weight;
    target->mNumVertices = static_cast<unsigned>(vertices.size());
    target->mVertices = new aiVector3D[vertices.size()];
    std::copy(vertices.begin(), vertices.end(), target->mVertices);
    Append(Mesh(mesh).mAnimMeshes, Mesh(mesh).mNumAnimMeshes, target);
    return *target;
}

void SourceScene::AddTextureCoordinates(unsigned mesh, unsigned set,
                                        const std::vector<aiVector3D>& values) {
    Mesh(mesh).mNumUVComponents[set] = 2;
    Mesh(mesh).mTextureCoords[set] = new aiVector3D[values.size()];
    std::copy(values.begin(), values.end(), Mesh(mesh).mTextureCoords[set]);
}

aiMaterial& SourceScene::AddMaterial(const std::string& name) {
    aiMaterial* const material = new aiMaterial;
    const aiString text(name);
    material->AddProperty(&text, AI_MATKEY_NAME);
    Append(scene_->mMaterials, scene_->mNumMaterials, material);
    return *material;
}

void SourceScene::AddCamera(const std::string& name) {
    aiCamera* const camera = new aiCamera;
    camera->mName = name;
    Append(scene_->mCameras, scene_->mNumCameras, camera);
}

void SourceScene::AddLight(const std::string& name, aiLightSourceType type) {
    aiLight* const light = new aiLight;
    light->mName = name;
    light->mType = type;
    Append(scene_->mLights, scene_->mNumLights, light);
}

aiAnimation& SourceScene::AddAnimation(const std::string& name, double duration,
                                       double ticksPerSecond,
                                       const std::vector<std::string>& channels) {
    aiAnimation* const animation = new aiAnimation;
    animation->mName = name;
    animation->mDuration = duration;
    animation->mTicksPerSecond = ticksPerSecond;
    for (const std::string& node : channels) {
        aiNodeAnim* const channel = new aiNodeAnim;
        channel->mNodeName = node;
        Append(animation->mChannels, animation->mNumChannels, channel);
    }
    Append(scene_->mAnimations, scene_->mNumAnimations, animation);
    return *animation;
}

maxhost::import::ImportedScene SourceScene::Convert(const std::string& path,
                                                    const maxhost::import::ImportChoices& choices) {
    return maxhost::import::ConvertScene(*scene_, path, choices);
}

aiMatrix4x4 Moved(float x, float y, float z) {
    aiMatrix4x4 matrix;
    return aiMatrix4x4::Translation({x, y, z}, matrix);
}

void SetKeys(aiNodeAnim& channel, const PositionKeys& position, const RotationKeys& rotation,
             const PositionKeys& scale) {
    Copy(position, channel.mPositionKeys, channel.mNumPositionKeys);
    Copy(scale, channel.mScalingKeys, channel.mNumScalingKeys);
    channel.mNumRotationKeys = static_cast<unsigned>(rotation.size());
    channel.mRotationKeys = new aiQuatKey[rotation.size()];
    for (std::size_t i = 0; i < rotation.size(); ++i) {
        channel.mRotationKeys[i] = aiQuatKey(rotation[i].first, rotation[i].second);
    }
}

aiQuaternion Turned(const aiVector3D& axis, double degrees) {
    return aiQuaternion(axis, static_cast<float>(degrees * std::numbers::pi / 180));
}

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
               : ChannelMatrix(*channel->second, time);
}
