// Pictures of an actor.
#pragma once

#include <functional>
#include <optional>

#include "kta/preview/scene.h"

namespace kta {

constexpr int kGreatestPictureSide = 8192;

// Where the viewer stands, in degrees: seen from above, counter-clockwise round the scene from
// 3ds Max's front view, and up from the ground.
struct PreviewDirection {
    double azimuth = 35;
    double elevation = 25;

    friend bool operator==(const PreviewDirection&, const PreviewDirection&) = default;
};

struct PreviewView {
    int width = 800;  // pixels, up to kGreatestPictureSide; so is the height
    int height = 600;
    PreviewDirection direction{};
    std::optional<double> seconds{};  // of the motion; at rest without
    int workers = 0;  // threads that draw, without difference to the picture; 0: one a processor
};

struct Preview {
    std::size_t triangles = 0;       // that there are to show
    std::optional<Picture> picture;  // none when none of them covers a part of it
};

// Is called with the unfinished picture whenever its rows before `end` are done.
using RowsDone = std::function<void(const Picture& picture, int end)>;

// The meshes in their materials' colours and textures, without opacity, as parallel projection
// shows them; they fill the picture but for a margin. Linear in the triangles and in the samples
// that they cover.
Preview DrawPreview(const PreviewModel& model, const PreviewView& view,
                    const RowsDone& rowsDone = {});

// ---------------------------------------------------------------- several pictures

struct PreviewShot {
    PreviewDirection direction;
    std::optional<double> seconds;
};

// Pictures of one size, which all show the model in one scale, in which the largest fills its
// picture, and round one place, the middle of all that there is to show. `take` is called with each
// shot's picture in their order. Returns the triangles that there are, and as `picture` the last
// that shows something.
Preview DrawSeries(const PreviewModel& model, std::span<const PreviewShot> shots, int width,
                   int height, const std::function<void(const Picture& picture)>& take);

}  // namespace kta
