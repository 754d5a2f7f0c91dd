#include "kta/preview.h"

#include <algorithm>
#include <limits>
#include <numbers>

#include "kta/raster.h"

namespace kta {
namespace {

constexpr double kMargin = 0.05;             // of the picture, on each side
constexpr double kGrid = 256;                // steps a sample on which corners stand
constexpr int kMostBandSamples = 8'000'000;  // what a band may hold in memory

// The viewer's axes in the scene's.
struct Axes {
    Vector3 right;
    Vector3 up;
    Vector3 towards;

    Vector3 Apply(const Vector3& v) const { return {Dot(v, right), Dot(v, up), Dot(v, towards)}; }
};

Axes ViewAxes(const PreviewView& view) {
    const double azimuth = view.azimuth * std::numbers::pi / 180;
    const double elevation = view.elevation * std::numbers::pi / 180;
    const double sa = std::sin(azimuth);
    const double ca = std::cos(azimuth);
    const double se = std::sin(elevation);
    const double ce = std::cos(elevation);
    return {{ca, 0, sa}, {-sa * se, ce, ca * se}, {sa * ce, se, -ca * ce}};
}

// Turns the corners into the viewer's axes.
void Turn(PreviewScene& scene, const PreviewView& view) {
    const Axes axes = ViewAxes(view);
    for (PreviewCorner& corner : scene.corners) {
        corner.position = axes.Apply(corner.position);
        corner.normal = axes.Apply(corner.normal);
    }
}

struct Box {
    Vector3 low;
    Vector3 high;
};

// Of what is drawn; the scene has a triangle.
Box BoundingBox(const PreviewScene& scene) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    Box box = {{kInfinity, kInfinity, kInfinity}, {-kInfinity, -kInfinity, -kInfinity}};
    for (const PreviewTriangle& triangle : scene.triangles) {
        for (const std::uint32_t corner : triangle.corners) {
            const Vector3& p = scene.corners[corner].position;
            for (std::size_t i = 0; i < 3; ++i) {
                box.low[i] = std::min(box.low[i], p[i]);
                box.high[i] = std::max(box.high[i], p[i]);
            }
        }
    }
    return box;
}

double OnGrid(double value) {
    return std::round(value * kGrid) / kGrid;
}

// Puts the corners, which are in the viewer's axes, where they are drawn.
void Frame(PreviewScene& scene, const PreviewView& view) {
    const Box box = BoundingBox(scene);
    const double width = static_cast<double>(view.width) * kSamples;
    const double height = static_cast<double>(view.height) * kSamples;
    const Vector3 centre = (box.low + box.high) * 0.5;
    const Vector3 extent = box.high - box.low;
    const double scale = (1 - 2 * kMargin) * std::min(width / extent[0], height / extent[1]);
    const double factor = std::isfinite(scale) ? scale : 1;
    for (PreviewCorner& corner : scene.corners) {
        const Vector3 p = (corner.position - centre) * factor;
        corner.position = {OnGrid(width / 2 + p[0]), OnGrid(height / 2 - p[1]), p[2]};
    }
}

}  // namespace

std::optional<Picture> DrawPreview(const File& file, const PreviewView& view) {
    PreviewScene scene = CollectScene(file, view.withCollision);
    if (scene.triangles.empty()) {
        return std::nullopt;
    }
    Turn(scene, view);
    Frame(scene, view);
    Picture picture;
    picture.width = view.width;
    picture.height = view.height;
    picture.pixels.resize(static_cast<std::size_t>(view.width) *
                          static_cast<std::size_t>(view.height));
    const int rows = std::max(1, kMostBandSamples / (view.width * kSamples * kSamples));
    for (int row = 0; row < view.height; row += rows) {
        Band band(view.width, row, std::min(rows, view.height - row));
        for (const PreviewTriangle& triangle : scene.triangles) {
            band.Draw(scene.corners[triangle.corners[0]], scene.corners[triangle.corners[1]],
                      scene.corners[triangle.corners[2]], scene.looks[triangle.look]);
        }
        band.Resolve(picture);
    }
    return picture;
}

}  // namespace kta
