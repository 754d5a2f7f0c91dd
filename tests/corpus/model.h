// A model as Assimp gives it to the importer and as a viewer would show it: nodes posed by a clip,
// the directions that the file calls right and up. Shares no code with the importer's conversion.
#pragma once

#include <assimp/anim.h>
#include <assimp/scene.h>

#include <string_view>
#include <unordered_map>

namespace corpus {

// Column vectors, as Assimp's own.
using Matrix = aiMatrix4x4t<double>;
using Vector = aiVector3t<double>;
using Rotation = aiQuaterniont<double>;

// Scales first, then turns, then moves. (Assimp's constructor of these three scales last.)
Matrix Compose(const Vector& translation, const Rotation& rotation, const Vector& scale);

// The directions that the file calls right and up.
struct View {
    Vector right{1, 0, 0}, up{0, 1, 0};

    Vector Away() const { return up ^ right; }
    // From the model's axes to an exported file's: right, up, away from the viewer.
    Vector InFile(const Vector& v) const { return {right * v, up * v, Away() * v}; }
};

View ViewOf(const aiScene& scene);

// A Collada file's root carries the unit of length, which the importer leaves alone; else 1.
double RootScale(const aiScene& scene);

// A clip of the scene. Where a node's name stands at several nodes, the first in depth-first order
// is the one that moves; before its first and after its last key a channel stays as it is there.
class Clip {
  public:
    // A number that the scene has no clip of: nothing moves.
    Clip(const aiScene& scene, unsigned number);

    bool Exists() const { return clip_ != nullptr; }
    double Seconds() const;
    bool Moves(const aiNode& node) const { return channels_.count(&node) > 0; }
    // The node's matrix relative to its parent.
    Matrix Local(const aiNode& node, double seconds) const;

  private:
    const aiAnimation* clip_ = nullptr;
    double ticksPerSecond_ = 25;
    std::unordered_map<const aiNode*, const aiNodeAnim*> channels_;
};

}  // namespace corpus
