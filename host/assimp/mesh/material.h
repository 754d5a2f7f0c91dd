// Assimp's materials as standard materials of 3ds Max.
#pragma once

#include <assimp/scene.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "host/assimp/embedded_textures.h"
#include "host/assimp/texture_search.h"
#include "host/assimp/tree/tree.h"
#include "host/assimp/warnings.h"
#include "host/scene/scene.h"

namespace maxhost::import {

// Makes materials when a node first needs them. Keeps references to what it is made with.
class MaterialFactory {
  public:
    MaterialFactory(const aiScene& source, SourceFormat format, const EmbeddedTextures& textures,
                    TextureSearch& search, scene::Scene& scene, ImportWarnings& warnings)
        : source_(source),
          format_(format),
          textures_(textures),
          search_(search),
          scene_(scene),
          warnings_(warnings) {}

    // The position in the scene's materials of what stands for these materials of the Assimp
    // scene: kNone for none, the material itself for one, and for several a multi/sub-object
    // material (called `name` where it is new) whose slots they are.
    int For(const std::vector<unsigned>& materials, const std::string& name);

    // To be called when all nodes have theirs.
    void WarnOfUnused();
    void WarnOfMissingTextures();

  private:
    int Standard(unsigned index);

    const aiScene& source_;
    const SourceFormat format_;
    const EmbeddedTextures& textures_;
    TextureSearch& search_;
    scene::Scene& scene_;
    ImportWarnings& warnings_;
    std::map<std::vector<unsigned>, int> made_;
    std::set<unsigned> used_;
};

}  // namespace maxhost::import
