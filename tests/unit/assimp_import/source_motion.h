// An animation of an Assimp scene worked out the straightforward way.
#pragma once

#include <assimp/scene.h>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

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

// Where the scene's nodes stand in the world at a time of animation `clip`, at rest where there is
// no such one. Bones are the first nodes of their names.
class SourcePose {
  public:
    SourcePose(const aiScene& scene, std::size_t clip, double time);

    const aiMatrix4x4t<double>& WorldOf(const aiNode& node) const { return byNode_.at(&node); }

    // What takes each vertex of the mesh from its space to the world: the mean of what its bones
    // do, or the node's own matrix.
    std::vector<aiMatrix4x4t<double>> Ways(const aiNode& node, const aiMesh& mesh) const;

  private:
    void Add(const SourceMotion& motion, const aiNode& node, double time);

    std::map<const aiNode*, aiMatrix4x4t<double>> byNode_;
    std::map<std::string, const aiMatrix4x4t<double>*> byName_;
};
