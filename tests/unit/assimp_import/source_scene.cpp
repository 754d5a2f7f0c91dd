#include "tests/unit/assimp_import/source_scene.h"

#include <assimp/commonMetaData.h>
#include <max.h>

#include <algorithm>
#include <utility>
#include <variant>

#include "host/assimp/import.h"
#include "host/sdk/host.h"

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

maxhost::import::ImportedScene SourceScene::Convert(const std::string& path) {
    return maxhost::import::ConvertScene(*scene_, path);
}

aiMatrix4x4 Moved(float x, float y, float z) {
    aiMatrix4x4 matrix;
    return aiMatrix4x4::Translation({x, y, z}, matrix);
}

maxhost::scene::Matrix MatrixOf(const maxhost::scene::Node& node) {
    const maxhost::scene::Transform& transform = node.transform.value();
    if (const auto* constant = std::get_if<maxhost::scene::MatrixTransform>(&transform.kind)) {
        return constant->matrix;
    }
    return MatrixAt(node, 0);
}

maxhost::scene::Matrix MatrixAt(const maxhost::scene::Node& node, int tick) {
    maxhost::scene::Scene alone;
    alone.nodes.emplace_back();
    alone.nodes[0].name = "alone";
    alone.nodes[0].transform = node.transform;
    maxhost::Host::Instance().OpenScene(std::move(alone));
    const Matrix3 local = maxhost::Host::Instance().Nodes()[0]->GetNodeTM(tick);
    maxhost::Host::Instance().CloseScene();
    maxhost::scene::Matrix rows;
    for (int i = 0; i < 4; ++i) {
        const Point3 row = local.GetRow(i);
        rows[static_cast<std::size_t>(i)] = {row.x, row.y, row.z};
    }
    return rows;
}

std::vector<std::string> NamesOf(const maxhost::scene::Scene& scene) {
    std::vector<std::string> names;
    for (const maxhost::scene::Node& node : scene.nodes) {
        names.push_back(node.name);
    }
    return names;
}
