#include "kta/preview/raster.h"

#include <algorithm>
#include <limits>

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

constexpr std::uint32_t Packed(const Rgb& colour) {
    return colour[0] | static_cast<std::uint32_t>(colour[1]) << 8 |
           static_cast<std::uint32_t>(colour[2]) << 16;
}

// The colour of a surface with that normal, of length 1 and on the viewer's side, packed.
inline std::uint32_t ShadePacked(const Vector3& diffuse, const Look& look, const Vector3& normal) {
    const double light = kAmbient + (1 - kAmbient) * std::max(0.0, Dot(normal, kLight));
    std::uint32_t colour = 0;
    for (std::size_t i = 3; i-- > 0;) {
        const double value = diffuse[i] * light + look.selfIllumination[i];
        colour = colour << 8 |
                 static_cast<std::uint32_t>(static_cast<int>(std::min(value, 1.0) * 255 + 0.5));
    }
    return colour;
}

// Of a triangle, where its corners' normals give that one, of any length up to 1.
inline std::uint32_t ShadeAt(const Vector3& diffuse, const Look& look, const Vector3& normal,
                             const Vector3& face) {
    const double square = Dot(normal, normal);
    const double factor = (Dot(normal, face) < 0 ? -1 : 1) / std::sqrt(square);
    return ShadePacked(diffuse, look, square > 0 ? normal * factor : face);
}

// A triangle's texture: its copy that is fine enough, and what shows at a place.
class TriangleTexture {
  public:
    TriangleTexture(const Look& look, const PreviewCorner& a, const PreviewCorner& b,
                    const PreviewCorner& c, double area)
        : look_(look), at_{a.inTexture, b.inTexture, c.inTexture} {
        bool finite = true;
        for (const auto& place : at_) {
            finite = finite && std::isfinite(place[0]) && std::isfinite(place[1]);
        }
        texture_ = finite ? look.texture : nullptr;
        if (texture_ == nullptr) {
            return;
        }
        const Vector3 &p = a.position, &q = b.position, &r = c.position;
        const Vector3 across = {q[1] - r[1], r[1] - p[1], p[1] - q[1]};
        const Vector3 down = {r[0] - q[0], p[0] - r[0], q[0] - p[0]};
        copy_ = texture_->CopyFor(At(across * (1 / area)), At(down * (1 / area)));
    }

    bool IsShown() const { return texture_ != nullptr; }

    // The diffuse colour at these shares of the three corners. Where the image is not opaque the
    // material's own shows.
    Vector3 Diffuse(const Vector3& shares) const {
        const auto [x, y] = At(shares);
        const Texture::Colour colour = texture_->At(copy_, x, y);
        const double amount = colour[3] * look_.amount;
        return Vector3{colour[0], colour[1], colour[2]} * amount + look_.diffuse * (1 - amount);
    }

  private:
    std::array<double, 2> At(const Vector3& shares) const {
        return {at_[0][0] * shares[0] + at_[1][0] * shares[1] + at_[2][0] * shares[2],
                at_[0][1] * shares[0] + at_[1][1] * shares[1] + at_[2][1] * shares[2]};
    }

    const Look& look_;
    std::array<std::array<double, 2>, 3> at_;
    const Texture* texture_ = nullptr;
    std::size_t copy_ = 0;
};

// Edge() along the line at y.
struct LineEdge {
    double atStart;
    double rise;
    double start;

    LineEdge(const Vector3& a, const Vector3& b, double y)
        : atStart((b[0] - a[0]) * (y - a[1])), rise(b[1] - a[1]), start(a[0]) {}
    double At(double x) const { return atStart - rise * (x - start); }
};

}  // namespace

Rgb Shade(const Look& look, const Vector3& normal) {
    const std::uint32_t colour = ShadePacked(look.diffuse, look, normal);
    return {static_cast<std::uint8_t>(colour), static_cast<std::uint8_t>(colour >> 8),
            static_cast<std::uint8_t>(colour >> 16)};
}

Band::Band(int width, int firstRow, int numRows)
    : columns_(width * kSamples),
      firstLine_(firstRow * kSamples),
      numLines_(numRows * kSamples),
      drawn_(static_cast<std::size_t>(numRows), {columns_, 0}),
      samples_(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(numLines_),
               {-std::numeric_limits<float>::infinity(), Packed(kBackground)}) {
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
    const bool isFlat = a.normal == b.normal && b.normal == c.normal;
    const std::uint32_t flatColour = ShadeAt(look.diffuse, look, a.normal, face);
    const TriangleTexture texture(look, a, b, c, area);
    for (int y = top; y < bottom; ++y) {
        const Span span = SpanOf(p, q, r, area, y + 0.5);
        const auto [first, end] = Between(span.low, span.high, left, right);
        const LineEdge qr(q, r, y + 0.5), rp(r, p, y + 0.5), pq(p, q, y + 0.5);
        Sample* const line = &samples_[static_cast<std::size_t>(y - firstLine_) *
                                       static_cast<std::size_t>(columns_)];
        int endDrawn = first;
        for (int x = first; x < end; ++x) {
            const double u = qr.At(x + 0.5) / area;
            const double v = rp.At(x + 0.5) / area;
            const double w = pq.At(x + 0.5) / area;
            if (u < 0 || v < 0 || w < 0) {
                continue;
            }
            const auto nearness = static_cast<float>(u * p[2] + v * q[2] + w * r[2]);
            if (nearness > line[x].nearness) {
                std::uint32_t colour = flatColour;
                if (texture.IsShown() || !isFlat) {
                    colour = ShadeAt(texture.IsShown() ? texture.Diffuse({u, v, w}) : look.diffuse,
                                     look, a.normal * u + b.normal * v + c.normal * w, face);
                }
                line[x] = {nearness, colour};
                endDrawn = x + 1;
            }
        }
        if (endDrawn > first) {
            auto& drawn = drawn_[static_cast<std::size_t>((y - firstLine_) / kSamples)];
            drawn = {std::min(drawn.first, first), std::max(drawn.second, endDrawn)};
        }
    }
}

// Red and blue are summed in one number, since their sums stay below 2^16.
Rgb Band::Average(const Sample* firstOfThree) const {
    constexpr std::uint32_t kCount = kSamples * kSamples;
    std::uint32_t redAndBlue = 0;
    std::uint32_t green = 0;
    for (int line = 0; line < kSamples; ++line, firstOfThree += columns_) {
        for (int i = 0; i < kSamples; ++i) {
            redAndBlue += firstOfThree[i].colour & 0xff00ff;
            green += firstOfThree[i].colour >> 8 & 0xff;
        }
    }
    const auto average = [](std::uint32_t sum) {
        return static_cast<std::uint8_t>((sum + kCount / 2) / kCount);
    };
    return {average(redAndBlue & 0xffff), average(green), average(redAndBlue >> 16)};
}

bool Band::Resolve(Picture& picture) const {
    bool isDrawn = false;
    for (std::size_t row = 0; row < drawn_.size(); ++row) {
        const auto [first, end] = drawn_[row];
        isDrawn = isDrawn || first < end;
        const std::size_t line = row * kSamples;
        const Sample* const samples = &samples_[line * static_cast<std::size_t>(columns_)];
        Rgb* const pixels =
            &picture.pixels[(static_cast<std::size_t>(firstLine_ / kSamples) + row) *
                            static_cast<std::size_t>(picture.width)];
        const int firstColumn = std::min(first / kSamples, picture.width);
        const int endColumn = std::max(firstColumn, (end + kSamples - 1) / kSamples);
        std::fill(pixels, pixels + firstColumn, kBackground);
        for (int column = firstColumn; column < endColumn; ++column) {
            pixels[column] = Average(samples + column * kSamples);
        }
        std::fill(pixels + endColumn, pixels + picture.width, kBackground);
    }
    return isDrawn;
}

}  // namespace kta
