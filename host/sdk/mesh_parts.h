// What a mesh keeps behind the SDK's header.
#pragma once

#include <mesh.h>

#include <array>
#include <memory>
#include <vector>

struct MeshMapChannel {
    std::vector<UVVert> vertices;
    std::vector<TVFace> faces;
};

class MeshParts {
  public:
    std::array<std::unique_ptr<MeshMapChannel>, MAX_MESHMAPS> maps;  // null: not supported

    std::vector<RVertex> renderVertices;  // none before normals are asked for
    std::vector<RNormal> sharedNormals;   // where the render vertices' `ern` point to
    std::vector<Point3> faceNormals;
    bool normalsBuilt = false;

    // Null outside the range of channels.
    MeshMapChannel* Map(int channel) const {
        return channel >= 0 && channel < MAX_MESHMAPS ? maps[channel].get() : nullptr;
    }

    void DropNormals() {
        renderVertices.clear();
        sharedNormals.clear();
        faceNormals.clear();
        normalsBuilt = false;
    }
};
