// The triangles of an actor file, put where they stand in the world.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "kta/reader.h"
#include "kta/vector3.h"

namespace kta {

// What a material looks like; the default is the exporter's "Extra material".
struct Look {
    Vector3 diffuse = {0.75, 0.75, 0.75};
    Vector3 selfIllumination{};
};

struct PreviewCorner {
    Vector3 position;
    Vector3 normal;  // of length 1, or (0, 0, 0)
};

struct PreviewTriangle {
    std::array<std::uint32_t, 3> corners{};
    std::uint32_t look = 0;
};

// In the file's axes: x, up, y.
struct PreviewScene {
    std::vector<PreviewCorner> corners;
    std::vector<PreviewTriangle> triangles;
    std::vector<Look> looks;
};

// A mesh stands where its node does; one that has skinning weights (which is in world space), whose
// node is not there, or has no place that can be told (a matrix without inverse), where its own
// numbers say. Triangles with a corner that is not
// finite are left out, as are collision meshes unless asked for. Throws std::length_error when
// there are more corners than 32 bits count.
PreviewScene CollectScene(const File& file, bool withCollision);

}  // namespace kta
