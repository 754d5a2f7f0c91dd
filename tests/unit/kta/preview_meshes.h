// Squares to draw, for the tests of pictures.
#pragma once

#include "kta/preview/preview.h"
#include "tests/unit/kta/sample.h"

namespace sample {

// A square of two triangles of side 2 across the front view, its middle at (x, up) and `depth` away
// from the viewer. Its texture coordinates go from (0, 0) at the upper left to (1, 1) at the lower
// right, as those of a whole image do in a file.
inline MeshFields TexturedSquare(float x = 0, float up = 0, float depth = 0,
                                 std::uint32_t material = 0) {
    MeshFields mesh;
    mesh.originalVertexCount = 4;
    mesh.mapChannelCount = 1;
    SubMeshFields& subMesh = mesh.subMeshes.emplace_back();
    subMesh.material = material;
    for (std::uint32_t i = 0; i < 4; ++i) {
        const auto right = static_cast<float>(i % 2);
        const auto down = static_cast<float>(i / 2);
        subMesh.vertices.push_back(
            {i, {x - 1 + 2 * right, up + 1 - 2 * down, depth}, {0, 0, -1}, {{right, down}}});
    }
    subMesh.faces = {{0, 1, 2}, {1, 3, 2}};
    return mesh;
}

// From the front, which leaves a margin of 5 pixels round what is drawn.
inline const kta::PreviewView kFrontView = {.width = 100, .height = 100, .direction = {0, 0}};

// The columns and rows that hold anything but the background: left, top, right, bottom.
inline std::array<int, 4> CoveredBy(const kta::Picture& picture) {
    std::array<int, 4> box = {picture.width, picture.height, -1, -1};
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            if (picture.At(x, y) != kta::kBackground) {
                box = {std::min(box[0], x), std::min(box[1], y), std::max(box[2], x),
                       std::max(box[3], y)};
            }
        }
    }
    return box;
}

}  // namespace sample
