#include "kta/raster.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb/stb_image_write.h>

namespace kta {
namespace {

// Twice the area to the left of the way from a to b as seen from p. Corners stand on a grid of
// 1/256 sample, so the result is exact, and neighbouring triangles leave no gap.
double Edge(const Vector3& a, const Vector3& b, double x, double y) {
    return (b[0] - a[0]) * (y - a[1]) - (b[1] - a[1]) * (x - a[0]);
}

// The samples, whose centres lie at n + 0.5, between two positions, within [begin, end).
std::pair<int, int> Between(double low, double high, int begin, int end) {
    const double first = std::max(std::ceil(low - 0.5), static_cast<double>(begin));
    const double last = std::min(std::floor(high - 0.5), static_cast<double>(end) - 1);
    return first <= last ? std::pair(static_cast<int>(first), static_cast<int>(last) + 1)
                         : std::pair(0, 0);
}

struct Span {
    double low = -std::numeric_limits<double>::infinity();
    double high = std::numeric_limits<double>::infinity();
};

// Cuts off what of the line at y lies beyond the way from a to b; `side` is that of the inside.
void Narrow(Span& span, const Vector3& a, const Vector3& b, double side, double y) {
    const double rise = (b[1] - a[1]) * side;
    if (rise == 0) {
        return;
    }
    const double x = a[0] + (b[0] - a[0]) * (y - a[1]) / (b[1] - a[1]);
    if (rise > 0) {
        span.high = std::min(span.high, x);
    } else {
        span.low = std::max(span.low, x);
    }
}

// The part of the line at y in the triangle, and a sample more on each side: the division rounds.
Span SpanOf(const Vector3& p, const Vector3& q, const Vector3& r, double area, double y) {
    const double side = area > 0 ? 1 : -1;
    Span span;
    Narrow(span, p, q, side, y);
    Narrow(span, q, r, side, y);
    Narrow(span, r, p, side, y);
    return {span.low - 1, span.high + 1};
}

// Of length 1 and on the viewer's side.
Vector3 FaceNormal(const Vector3& a, const Vector3& b, const Vector3& c) {
    Vector3 normal = Normalized(Cross(b - a, c - a));
    normal[1] = -normal[1];  // y points down in samples
    return normal[2] < 0 ? normal * -1 : normal;
}

}  // namespace

Rgb Shade(const Look& look, const Vector3& normal) {
    const double light = kAmbient + (1 - kAmbient) * std::max(0.0, Dot(normal, kLight));
    Rgb colour{};
    for (std::size_t i = 0; i < 3; ++i) {
        const double value = look.diffuse[i] * light + look.selfIllumination[i];
        colour[i] = static_cast<std::uint8_t>(std::clamp(value, 0.0, 1.0) * 255 + 0.5);
    }
    return colour;
}

Band::Band(int width, int firstRow, int numRows)
    : columns_(width * kSamples),
      firstLine_(firstRow * kSamples),
      numLines_(numRows * kSamples),
      nearness_(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(numLines_),
                -std::numeric_limits<float>::infinity()),
      samples_(nearness_.size(), kBackground) {
}

void Band::Draw(const PreviewCorner& a, const PreviewCorner& b, const PreviewCorner& c,
                const Look& look) {
    const Vector3 &p = a.position, &q = b.position, &r = c.position;
    const double area = Edge(p, q, r[0], r[1]);
    const auto [left, right] =
        Between(std::min({p[0], q[0], r[0]}), std::max({p[0], q[0], r[0]}), 0, columns_);
    const auto [top, bottom] = Between(std::min({p[1], q[1], r[1]}), std::max({p[1], q[1], r[1]}),
                                       firstLine_, firstLine_ + numLines_);
    if (area == 0) {
        return;
    }
    const Vector3 face = FaceNormal(p, q, r);
    for (int y = top; y < bottom; ++y) {
        const Span span = SpanOf(p, q, r, area, y + 0.5);
        const auto [first, end] = Between(span.low, span.high, left, right);
        for (int x = first; x < end; ++x) {
            const double u = Edge(q, r, x + 0.5, y + 0.5) / area;
            const double v = Edge(r, p, x + 0.5, y + 0.5) / area;
            const double w = Edge(p, q, x + 0.5, y + 0.5) / area;
            if (u < 0 || v < 0 || w < 0) {
                continue;
            }
            const auto nearness = static_cast<float>(u * p[2] + v * q[2] + w * r[2]);
            if (Rgb* const sample = Nearer(x, y, nearness)) {
                Vector3 normal = Normalized(a.normal * u + b.normal * v + c.normal * w);
                normal = Dot(normal, face) < 0 ? normal * -1 : normal;
                *sample = Shade(look, normal == Vector3{} ? face : normal);
            }
        }
    }
}

Rgb* Band::Nearer(int x, int y, float nearness) {
    const std::size_t sample =
        static_cast<std::size_t>(y - firstLine_) * static_cast<std::size_t>(columns_) +
        static_cast<std::size_t>(x);
    if (!(nearness > nearness_[sample])) {
        return nullptr;
    }
    nearness_[sample] = nearness;
    return &samples_[sample];
}

void Band::Resolve(Picture& picture) const {
    constexpr int kCount = kSamples * kSamples;
    for (int row = 0; row < numLines_ / kSamples; ++row) {
        for (int column = 0; column < picture.width; ++column) {
            std::array<int, 3> sums{};
            for (int i = 0; i < kCount; ++i) {
                const int x = column * kSamples + i % kSamples;
                const int y = row * kSamples + i / kSamples;
                const Rgb& sample =
                    samples_[static_cast<std::size_t>(y) * static_cast<std::size_t>(columns_) +
                             static_cast<std::size_t>(x)];
                for (std::size_t k = 0; k < 3; ++k) {
                    sums[k] += sample[k];
                }
            }
            Rgb& pixel = picture.pixels[static_cast<std::size_t>(firstLine_ / kSamples + row) *
                                            static_cast<std::size_t>(picture.width) +
                                        static_cast<std::size_t>(column)];
            for (std::size_t k = 0; k < 3; ++k) {
                pixel[k] = static_cast<std::uint8_t>((sums[k] + kCount / 2) / kCount);
            }
        }
    }
}

std::vector<std::uint8_t> EncodePng(const Picture& picture) {
    static_assert(sizeof(Rgb) == 3);
    std::vector<std::uint8_t> bytes;
    const auto append = [](void* context, void* data, int size) {
        const auto* begin = static_cast<const std::uint8_t*>(data);
        auto* target = static_cast<std::vector<std::uint8_t>*>(context);
        target->insert(target->end(), begin, begin + size);
    };
    if (stbi_write_png_to_func(append, &bytes, picture.width, picture.height, 3,
                               picture.pixels.data(), picture.width * 3) == 0) {
        throw std::bad_alloc();
    }
    return bytes;
}

}  // namespace kta
