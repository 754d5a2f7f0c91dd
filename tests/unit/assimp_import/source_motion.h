// An animation of an Assimp scene worked out the straightforward way.
#pragma once

#include <assimp/scene.h>

#include <cstddef>
#include <map>
#include <string>

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
