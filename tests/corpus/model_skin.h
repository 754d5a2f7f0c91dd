// The places of a model's vertices that bones or blend shapes move.
#pragma once

#include <assimp/scene.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "tests/corpus/model.h"

namespace corpus {

// World positions in the model's axes and exported unit of length, of one clip. A bone is the first
// node of its name in depth-first order. Where a vertex's weights do not sum to 1, their shares
// count; one without weights stands with its node.
class ModelSkin {
  public:
    ModelSkin(const aiScene& scene, unsigned clip);

    // All that follows is for this time.
    void MoveTo(double seconds);

    // One for each vertex of the piece, as `node` shows it.
    std::vector<Vector> Positions(const aiNode& node, const aiMesh& piece);
    // The same with one of the piece's blend shapes alone, at full weight; without any of them
    // where there is no such shape.
    std::vector<Vector> Positions(const aiNode& node, const aiMesh& piece, unsigned shape);
    // Directions of any length; empty where the piece has none.
    std::vector<Vector> Normals(const aiNode& node, const aiMesh& piece);
    // How far apart the bones of each vertex place it: 0 for a vertex with fewer than two.
    std::vector<double> Disagreement(const aiNode& node, const aiMesh& piece);

  private:
    std::vector<Vector> Moved(const aiNode& node, const aiMesh& piece,
                              const std::vector<Vector>& shape);
    // Calls `take` with a vertex, the weight and the matrix of a bone that moves it.
    template <typename Take>
    void ForWeights(const aiMesh& piece, Take take);
    const Matrix& World(const aiNode& node);
    const aiNode* FindBone(const aiBone& bone);

    const aiScene& scene_;
    const Clip clip_;
    double seconds_ = 0;
    std::unordered_map<const aiNode*, Matrix> worlds_;
    std::unordered_map<std::string, const aiNode*> bones_;
};

}  // namespace corpus
