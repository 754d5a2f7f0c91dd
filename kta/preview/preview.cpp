#include "kta/preview/preview.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <future>
#include <limits>
#include <mutex>
#include <numbers>
#include <thread>

namespace kta {
namespace {

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

Axes ViewAxes(const PreviewDirection& direction) {
    const double azimuth = direction.azimuth * std::numbers::pi / 180;
    const double elevation = direction.elevation * std::numbers::pi / 180;
    const double sa = std::sin(azimuth);
    const double ca = std::cos(azimuth);
    const double se = std::sin(elevation);
    const double ce = std::cos(elevation);
    return {{ca, 0, sa}, {-sa * se, ce, ca * se}, {sa * ce, se, -ca * ce}};
}

// Turns the corners into the viewer's axes.
void Turn(PreviewScene& scene, const Axes& axes) {
    for (PreviewCorner& corner : scene.corners) {
        corner.position = axes.Apply(corner.position);
        corner.normal = axes.Apply(corner.normal);
    }
}

struct Box {
    Vector3 low = Vector3{1, 1, 1} * std::numeric_limits<double>::infinity();
    Vector3 high = Vector3{1, 1, 1} * -std::numeric_limits<double>::infinity();

    // Takes in what is drawn.
    void Add(const PreviewScene& scene) {
        for (const PreviewTriangle& triangle : scene.triangles) {
            for (const std::uint32_t corner : triangle.corners) {
                Add(scene.corners[corner].position);
            }
        }
    }
    void Add(const Vector3& p) {
        for (std::size_t i = 0; i < 3; ++i) {
            low[i] = std::min(low[i], p[i]);
            high[i] = std::max(high[i], p[i]);
        }
    }
    Vector3 Centre() const { return (low + high) * 0.5; }
};

double OnGrid(double value) {
    return std::round(value * kGrid) / kGrid;
}

// What stands in the middle of the picture, in the viewer's axes, and how many samples a unit is.
struct Framing {
    Vector3 centre;
    double scale;
};

// Samples a unit with which what extends so far fills the picture.
double FillingScale(const Vector3& extent, int width, int height) {
    return (1 - 2 * kMargin) * std::min(static_cast<double>(width) * kSamples / extent[0],
                                        static_cast<double>(height) * kSamples / extent[1]);
}

// Puts the corners, which are in the viewer's axes, where they are drawn.
void Frame(PreviewScene& scene, const Framing& framing, int width, int height) {
    const double middle[] = {static_cast<double>(width) * kSamples / 2,
                             static_cast<double>(height) * kSamples / 2};
    const double factor = std::isfinite(framing.scale) ? framing.scale : 1;
    double farthest = 0;
    for (PreviewCorner& corner : scene.corners) {
        const Vector3 p = (corner.position - framing.centre) * factor;
        corner.position = {OnGrid(middle[0] + p[0]), OnGrid(middle[1] - p[1]), p[2]};
        farthest = std::max(farthest, std::isfinite(p[2]) ? std::abs(p[2]) : 0);
    }
    for (std::size_t i = scene.firstInFront; i < scene.corners.size(); ++i) {
        scene.corners[i].position[2] += 3 * farthest;
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

// The bands of a picture, which several threads draw and one takes from the top down.
class Bands {
  public:
    Bands(const PreviewScene& scene, Picture& picture)
        : scene_(scene),
          picture_(picture),
          rows_(std::max(1, kMostBandSamples / (picture.width * kSamples * kSamples))),
          isDone_(static_cast<std::size_t>((picture.height + rows_ - 1) / rows_)) {}

    // Draws one band after the other until there is none left. Whether anything was drawn.
    bool Work() {
        TriangleQueue queue(scene_);
        bool isDrawn = false;
        try {
            for (std::size_t band; (band = next_++) < isDone_.size();) {
                isDrawn = Draw(queue, static_cast<int>(band) * rows_) || isDrawn;
                SetDone(band);
            }
        } catch (...) {
            SetFailed();
            throw;
        }
        return isDrawn;
    }

    // Returns early when a thread has failed.
    void Take(const RowsDone& rowsDone) {
        for (std::size_t band = 0; band < isDone_.size(); ++band) {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [&] { return isDone_[band] || hasFailed_; });
            if (hasFailed_) {
                return;
            }
            lock.unlock();
            rowsDone(picture_, std::min(static_cast<int>(band + 1) * rows_, picture_.height));
        }
    }

  private:
    bool Draw(TriangleQueue& queue, int row) {
        const int end = std::min(row + rows_, picture_.height);
        Band band(picture_.width, row, end - row);
        for (const PreviewTriangle* triangle : queue.In(row * kSamples, end * kSamples)) {
            band.Draw(scene_.corners[triangle->corners[0]], scene_.corners[triangle->corners[1]],
                      scene_.corners[triangle->corners[2]], scene_.looks[triangle->look]);
        }
        return band.Resolve(picture_);
    }

    void SetDone(std::size_t band) {
        const std::lock_guard lock(mutex_);
        isDone_[band] = true;
        changed_.notify_one();
    }

    void SetFailed() {
        const std::lock_guard lock(mutex_);
        hasFailed_ = true;
        changed_.notify_one();
    }

    const PreviewScene& scene_;
    Picture& picture_;
    int rows_;  // a band
    std::atomic<std::size_t> next_ = 0;
    std::mutex mutex_;  // of what follows
    std::condition_variable changed_;
    std::vector<bool> isDone_;
    bool hasFailed_ = false;
};

// What is drawn, framed: a picture of it, if it shows anything.
std::optional<Picture> DrawFramed(const PreviewScene& scene, int width, int height, int workers,
                                  const RowsDone& rowsDone) {
    Picture picture = PlainPicture(width, height, kBackground);
    Bands bands(scene, picture);
    if (workers == 0) {
        workers =
            std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, kMostWorkers);
    }
    std::vector<std::future<bool>> parts;
    for (int worker = 0; worker < workers; ++worker) {
        parts.push_back(std::async(std::launch::async, [&bands] { return bands.Work(); }));
    }
    if (rowsDone) {
        bands.Take(rowsDone);
    }
    bool isDrawn = false;
    for (std::future<bool>& part : parts) {
        isDrawn = part.get() || isDrawn;
    }
    return isDrawn ? std::optional(std::move(picture)) : std::nullopt;
}

}  // namespace

Preview DrawPreview(const PreviewModel& model, const PreviewView& view, const RowsDone& rowsDone) {
    PreviewScene scene = model.At(view.seconds);
    Preview preview;
    preview.triangles = scene.triangles.size();
    if (scene.triangles.empty()) {
        return preview;
    }
    Turn(scene, ViewAxes(view.direction));
    Box box;
    box.Add(scene);
    Frame(scene, {box.Centre(), FillingScale(box.high - box.low, view.width, view.height)},
          view.width, view.height);
    preview.picture = DrawFramed(scene, view.width, view.height, view.workers, rowsDone);
    return preview;
}

// ---------------------------------------------------------------- several pictures

namespace {

// The scene at the times of shots one after the other, collected anew only when the time changes.
class SceneOfShots {
  public:
    explicit SceneOfShots(const PreviewModel& model) : model_(model) {}

    const PreviewScene& At(const PreviewShot& shot) {
        if (!scene_ || seconds_ != shot.seconds) {
            seconds_ = shot.seconds;
            scene_ = model_.At(seconds_);
        }
        return *scene_;
    }

  private:
    const PreviewModel& model_;
    std::optional<double> seconds_;
    std::optional<PreviewScene> scene_;
};

// How far what is drawn reaches to the sides and up and down from a place, twice.
Vector3 ExtentAround(const PreviewScene& scene, const Vector3& centre, const Axes& axes) {
    Box box;
    for (const PreviewTriangle& triangle : scene.triangles) {
        for (const std::uint32_t corner : triangle.corners) {
            box.Add(axes.Apply(scene.corners[corner].position - centre));
        }
    }
    Vector3 extent{};
    for (std::size_t i = 0; i < 3; ++i) {
        extent[i] = 2 * std::max(-box.low[i], box.high[i]);
    }
    return extent;
}

}  // namespace

Preview DrawSeries(const PreviewModel& model, std::span<const PreviewShot> shots, int width,
                   int height, const std::function<void(const Picture& picture)>& take) {
    SceneOfShots scenes(model);
    Preview preview;
    Box box;
    for (const PreviewShot& shot : shots) {
        const PreviewScene& scene = scenes.At(shot);
        preview.triangles = std::max(preview.triangles, scene.triangles.size());
        box.Add(scene);
    }
    double scale = std::numeric_limits<double>::infinity();
    for (const PreviewShot& shot : shots) {
        const PreviewScene& scene = scenes.At(shot);
        if (!scene.triangles.empty()) {
            const Vector3 extent = ExtentAround(scene, box.Centre(), ViewAxes(shot.direction));
            scale = std::min(scale, FillingScale(extent, width, height));
        }
    }
    for (const PreviewShot& shot : shots) {
        PreviewScene scene = scenes.At(shot);
        const Axes axes = ViewAxes(shot.direction);
        Turn(scene, axes);
        Frame(scene, {axes.Apply(box.Centre()), scale}, width, height);
        auto picture = DrawFramed(scene, width, height, 0, {});
        take(picture ? *picture : PlainPicture(width, height, kBackground));
        if (picture) {
            preview.picture = std::move(picture);
        }
    }
    return preview;
}

}  // namespace kta
