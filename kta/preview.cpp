#include "kta/preview.h"

#include <future>
#include <limits>
#include <numbers>
#include <stdexcept>
#include <thread>
#include <unordered_set>

namespace kta {
namespace {

// ---------------------------------------------------------------- scene

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

Vector3 ToVector(const float (&values)[3]) {
    return {values[0], values[1], values[2]};
}

// The inverse of a matrix for row vectors: p * rows + translation.
struct Placement {
    std::array<Vector3, 3> inverseRows{};
    std::array<Vector3, 3> rows{};  // of the stored matrix
    Vector3 translation{};          // likewise

    Vector3 Position(const Vector3& local) const {
        const Vector3 p = local - translation;
        return inverseRows[0] * p[0] + inverseRows[1] * p[1] + inverseRows[2] * p[2];
    }
    // A normal goes with the transposed inverse of what moves positions.
    Vector3 Normal(const Vector3& local) const {
        return Normalized(Vector3{Dot(rows[0], local), Dot(rows[1], local), Dot(rows[2], local)});
    }
};

Placement Identity() {
    Placement placement;
    placement.rows = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    placement.inverseRows = placement.rows;
    return placement;
}

Placement PlacementOf(const KTANode& node) {
    Placement placement;
    for (std::size_t i = 0; i < 3; ++i) {
        const auto& row = node.inverseWorldMatrix[i];
        placement.rows[i] = {row[0], row[1], row[2]};
    }
    const auto& last = node.inverseWorldMatrix[3];
    placement.translation = {last[0], last[1], last[2]};
    const auto& rows = placement.rows;
    const std::array<Vector3, 3> columns = {Cross(rows[1], rows[2]), Cross(rows[2], rows[0]),
                                            Cross(rows[0], rows[1])};
    const double determinant = Dot(rows[0], columns[0]);
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            placement.inverseRows[i][k] = columns[k][i] / determinant;
        }
        if (!IsFinite(placement.inverseRows[i])) {
            return Identity();
        }
    }
    return IsFinite(placement.translation) ? placement : Identity();
}

Vector3 Clamped(const float (&colour)[3]) {
    Vector3 clamped{};
    for (std::size_t i = 0; i < 3; ++i) {
        clamped[i] = colour[i] > 0 ? std::min(1.0, double{colour[i]}) : 0;  // NaN: 0
    }
    return clamped;
}

// A mesh stands where its node does; one that has skinning weights (and so is in world space), or
// whose node is missing or has a matrix without inverse, where its own numbers say. Triangles with
// a corner that is not finite are left out, as are collision meshes unless asked for.
class Collector {
  public:
    Collector(const File& file, bool withCollision) {
        for (const Chunk& chunk : file.chunks) {
            if (const auto* node = chunk.As<KTANode>()) {
                nodes_.push_back(node);
            } else if (const auto* material = chunk.As<KTAMaterial>()) {
                scene_.looks.push_back(
                    {Clamped(material->diffuse), Clamped(material->selfIllumination)});
            } else if (const auto* weights = chunk.As<Weights>()) {
                skinnedNodes_.insert(weights->head.nodeNumber);
            }
        }
        scene_.looks.push_back({});
        for (const Chunk& chunk : file.chunks) {
            const auto* mesh = chunk.As<Mesh>();
            if (mesh != nullptr && (withCollision || mesh->head.isCollision == 0)) {
                Add(*mesh);
            }
        }
    }

    PreviewScene Take() { return std::move(scene_); }

  private:
    void Add(const Mesh& mesh) {
        const auto node = static_cast<std::size_t>(mesh.head.nodeNumber);
        const bool inObjectSpace = mesh.head.nodeNumber >= 0 && node < nodes_.size() &&
                                   !skinnedNodes_.contains(mesh.head.nodeNumber);
        const Placement placement = inObjectSpace ? PlacementOf(*nodes_[node]) : Identity();
        for (const SubMesh& subMesh : mesh.subMeshes) {
            Add(subMesh, placement);
        }
    }

    void Add(const SubMesh& subMesh, const Placement& placement) {
        const std::size_t first = scene_.corners.size();
        if (subMesh.vertices.size() > std::numeric_limits<std::uint32_t>::max() - first) {
            throw std::length_error("too many vertices for a picture");
        }
        for (const KTAVertex& vertex : subMesh.vertices) {
            scene_.corners.push_back({placement.Position(ToVector(vertex.position)),
                                      placement.Normal(ToVector(vertex.normal))});
        }
        // The last look is for numbers that no material has.
        const auto look =
            std::min(static_cast<std::size_t>(subMesh.materialNumber), scene_.looks.size() - 1);
        for (const auto& face : subMesh.faces) {
            PreviewTriangle triangle;
            triangle.look = static_cast<std::uint32_t>(look);
            bool finite = true;
            for (std::size_t i = 0; i < 3; ++i) {
                triangle.corners[i] = static_cast<std::uint32_t>(first) + face[i];
                finite = finite && IsFinite(scene_.corners[triangle.corners[i]].position);
            }
            if (finite) {
                scene_.triangles.push_back(triangle);
            }
        }
    }

    PreviewScene scene_;
    std::vector<const KTANode*> nodes_;
    std::unordered_set<std::int32_t> skinnedNodes_;
};

// ---------------------------------------------------------------- view

constexpr double kMargin = 0.05;  // of the picture, on each side
constexpr double kGrid = 256;     // steps a sample on which corners stand
constexpr int kMostWorkers = 8;
constexpr int kMostBandSamples = 200'000;  // of a band, which stays in the processor's cache

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

// The triangles that each band shows, for bands from the top down.
class TriangleQueue {
  public:
    explicit TriangleQueue(const PreviewScene& scene) : scene_(scene) {
        waiting_.reserve(scene.triangles.size());
        for (const PreviewTriangle& triangle : scene.triangles) {
            waiting_.push_back(&triangle);
        }
        std::stable_sort(waiting_.begin(), waiting_.end(),
                         [this](const auto* a, const auto* b) { return Top(*a) < Top(*b); });
    }

    // Those that reach into lines [first, end), which follow those of the last call, in the
    // scene's order, upon which it depends what is shown where several are equally near.
    const std::vector<const PreviewTriangle*>& In(double first, double end) {
        std::erase_if(drawn_, [&](const auto* triangle) { return Bottom(*triangle) < first; });
        const auto old = static_cast<std::ptrdiff_t>(drawn_.size());
        for (; next_ < waiting_.size() && Top(*waiting_[next_]) < end; ++next_) {
            drawn_.push_back(waiting_[next_]);
        }
        std::sort(drawn_.begin() + old, drawn_.end());
        std::inplace_merge(drawn_.begin(), drawn_.begin() + old, drawn_.end());
        return drawn_;
    }

  private:
    double Line(const PreviewTriangle& triangle, std::size_t corner) const {
        return scene_.corners[triangle.corners[corner]].position[1];
    }
    double Top(const PreviewTriangle& triangle) const {
        return std::min({Line(triangle, 0), Line(triangle, 1), Line(triangle, 2)});
    }
    double Bottom(const PreviewTriangle& triangle) const {
        return std::max({Line(triangle, 0), Line(triangle, 1), Line(triangle, 2)});
    }

    const PreviewScene& scene_;
    std::vector<const PreviewTriangle*> waiting_;  // from the top
    std::size_t next_ = 0;                         // of those
    std::vector<const PreviewTriangle*> drawn_;
};

// Draws each of the picture's bands whose number, divided by `workers`, leaves `worker`. Whether
// anything was drawn.
bool DrawBands(const PreviewScene& scene, Picture& picture, int worker, int workers) {
    TriangleQueue queue(scene);
    bool isDrawn = false;
    const int rows = std::max(1, kMostBandSamples / (picture.width * kSamples * kSamples));
    for (int row = worker * rows; row < picture.height; row += workers * rows) {
        const int end = std::min(row + rows, picture.height);
        Band band(picture.width, row, end - row);
        for (const PreviewTriangle* triangle : queue.In(row * kSamples, end * kSamples)) {
            band.Draw(scene.corners[triangle->corners[0]], scene.corners[triangle->corners[1]],
                      scene.corners[triangle->corners[2]], scene.looks[triangle->look]);
        }
        isDrawn = band.Resolve(picture) || isDrawn;
    }
    return isDrawn;
}

// Every processor draws some of the bands; how many there are makes no difference to the picture.
bool DrawBands(const PreviewScene& scene, Picture& picture) {
    const int workers =
        std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, kMostWorkers);
    std::vector<std::future<bool>> parts;
    for (int worker = 0; worker < workers; ++worker) {
        parts.push_back(std::async(std::launch::async, [&scene, &picture, worker, workers] {
            return DrawBands(scene, picture, worker, workers);
        }));
    }
    bool isDrawn = false;
    for (std::future<bool>& part : parts) {
        isDrawn = part.get() || isDrawn;
    }
    return isDrawn;
}

}  // namespace

Preview DrawPreview(const File& file, const PreviewView& view) {
    PreviewScene scene = Collector(file, view.withCollision).Take();
    Preview preview;
    preview.triangles = scene.triangles.size();
    if (scene.triangles.empty()) {
        return preview;
    }
    Turn(scene, view);
    Frame(scene, view);
    Picture picture;
    picture.width = view.width;
    picture.height = view.height;
    picture.pixels.resize(static_cast<std::size_t>(view.width) *
                          static_cast<std::size_t>(view.height));
    if (DrawBands(scene, picture)) {
        preview.picture = std::move(picture);
    }
    return preview;
}

}  // namespace kta
