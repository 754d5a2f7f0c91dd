// Assimp scenes made by hand, as an importer would leave them, and the poses of any Assimp scene
// worked out the straightforward way.
#pragma once

#include <assimp/scene.h>

#include <cstddef>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/assimp/import.h"

constexpr char kFbx[] = "Autodesk FBX Importer";
constexpr char kCollada[] = "Collada Importer";
constexpr char kGltf[] = "glTF2 Importer";
constexpr char kAse[] = "ASE Importer";
constexpr char k3ds[] = "Discreet 3DS Importer";
constexpr char kBvh[] = "BVH Importer (MoCap)";
constexpr char kOther[] = "Some Importer";

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

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
    maxhost::import::ImportedScene Convert(const std::string& path = "no/such/file.x",
                                           const maxhost::import::ImportChoices& choices = {});

  private:
    std::unique_ptr<aiScene> scene_ = std::make_unique<aiScene>();
};

// A translation, in Assimp's column form.
aiMatrix4x4 Moved(float x, float y, float z);

using PositionKeys = std::vector<std::pair<double, aiVector3D>>;
using RotationKeys = std::vector<std::pair<double, aiQuaternion>>;

// A channel of a node that Assimp would give: one key for what does not move.
void SetKeys(aiNodeAnim& channel, const PositionKeys& position,
             const RotationKeys& rotation = {{0, aiQuaternion()}},
             const PositionKeys& scale = {{0, {1, 1, 1}}});

// By the right-hand rule.
aiQuaternion Turned(const aiVector3D& axis, double degrees);

// ---------------------------------------------------------------- poses

// The nodes' own transforms, in column form: of those that animation `clip` moves by keys of all
// kinds, what these give. Of like-named nodes, all have the first channel.
class SourceMotion {
  public:
    SourceMotion(const aiScene& scene, std::size_t clip);
    // In the unit of the clip's keys.
    aiMatrix4x4t<double> LocalAt(const aiNode& node, double time) const;

  private:
    std::map<std::string, const aiNodeAnim*> channels_;
};
