// A picture of an actor file.
#pragma once

#include "kta/raster.h"
#include "kta/reader.h"

namespace kta {

constexpr int kGreatestPictureSide = 8192;

struct PreviewView {
    int width = 800;  // pixels, up to kGreatestPictureSide; so is the height
    int height = 600;
    // Where the viewer stands, in degrees: seen from above, counter-clockwise round the scene from
    // 3ds Max's front view, and up from the ground.
    double azimuth = 35;
    double elevation = 25;
    bool withCollision = false;
};

struct Preview {
    std::size_t triangles = 0;       // that there are to show
    std::optional<Picture> picture;  // none when none of them covers a part of it
};

// The meshes in their materials' diffuse and self-illumination colours, without textures and
// opacity, as parallel projection shows them; they fill the picture but for a margin. Linear in
// the triangles and in the samples that they cover.
Preview DrawPreview(const File& file, const PreviewView& view);

}  // namespace kta
