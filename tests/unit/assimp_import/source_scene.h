// Assimp scenes made by hand, as an importer would leave them.
#pragma once

#include <assimp/scene.h>

#include <memory>
#include <string>
#include <vector>

#include "host/assimp/import.h"

constexpr char kFbx[] = "Autodesk FBX Importer";
constexpr char kCollada[] = "Collada Importer";
constexpr char kGltf[] = "glTF2 Importer";
constexpr char kAse[] = "ASE Importer";
constexpr char k3ds[] = "Discreet 3DS Importer";
constexpr char kBvh[] = "BVH Importer (MoCap)";

class SourceScene {
  public:
    // The root bears a name that no importer gives, so that it becomes a node.
    explicit SourceScene(const std::string& importer, const std::string& rootName = "Root");

    aiNode* Root() { return scene_->mRootNode; }
    aiNode* AddNode(aiNode* parent, const std::string& name);

    // Faces of three and more corners each; returns the mesh's position.
    unsigned AddMesh(const std::string& name, const std::vector<aiVector3D>& vertices,
                     const std::vector<std::vector<unsigned>>& faces, unsigned material = 0);
    unsigned AddTriangle(const std::string& name, unsigned material = 0);
    aiMesh& Mesh(unsigned index) { return *scene_->mMeshes[index]; }
    static void Show(aiNode* node, const std::vector<unsigned>& meshes);
    void AddBone(unsigned mesh, const std::string& name,
                 const std::vector<aiVertexWeight>& weights = {},
                 const aiMatrix4x4& offset = aiMatrix4x4());
    aiAnimMesh& AddMorphTarget(unsigned mesh, const std::string& name,
                               const std::vector<aiVector3D>& vertices, float weight = 0);
    void AddTextureCoordinates(unsigned mesh, unsigned set, const std::vector<aiVector3D>& values);

    aiMaterial& AddMaterial(const std::string& name);
    void AddCamera(const std::string& name);
    void AddLight(const std::string& name, aiLightSourceType type);
    aiAnimation& AddAnimation(const std::string& name, double duration, double ticksPerSecond,
                              const std::vector<std::string>& channels = {});

    template <typename T>
    void Set(const std::string& key, const T& value) {
        scene_->mMetaData->Add(key, value);
    }

    aiScene& Scene() { return *scene_; }
    maxhost::import::ImportedScene Convert(const std::string& path = "no/such/file.x");

  private:
    std::unique_ptr<aiScene> scene_ = std::make_unique<aiScene>();
};

// A translation, in Assimp's column form.
aiMatrix4x4 Moved(float x, float y, float z);

// The local matrix of a node of a converted scene, at tick 0 where it has keys.
maxhost::scene::Matrix MatrixOf(const maxhost::scene::Node& node);

// At any tick.
maxhost::scene::Matrix MatrixAt(const maxhost::scene::Node& node, int tick);

std::vector<std::string> NamesOf(const maxhost::scene::Scene& scene);
