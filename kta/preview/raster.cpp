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

// Edge() times `side` at one sample after the other of a line. On the grid that is exact as well.
class EdgeAlongLine {
  public:
    EdgeAlongLine(const Vector3& a, const Vector3& b, double side, double x, double y)
        : value_(Edge(a, b, x, y) * side), rise_((b[1] - a[1]) * side) {}

    double Value() const { return value_; }
    void Step() { value_ -= rise_; }

  private:
    double value_;
    double rise_;
};

}  // namespace

// A triangle's texture: its copy that is fine enough, and what shows of it in a pixel.
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
        across_ = At(Vector3{q[1] - r[1], r[1] - p[1], p[1] - q[1]} * (1 / area));
        down_ = At(Vector3{r[0] - q[0], p[0] - r[0], q[0] - p[0]} * (1 / area));
        copy_ = texture_->CopyFor(across_, down_);
        isLarge_ = texture_->PixelsApart(copy_, across_) * kSamples <= 1 &&
                   texture_->PixelsApart(copy_, down_) * kSamples <= 1;
    }

    bool IsShown() const { return texture_ != nullptr; }

    // The diffuse colour of the pixel round the place that these shares of the three corners give.
    // Where the image is not opaque the material's own shows.
    Vector3 Diffuse(const Vector3& shares) const {
        const std::array<double, 2> middle = At(shares);
        if (isLarge_) {
            return Mixed(texture_->At(copy_, middle[0], middle[1]));
        }
        constexpr double kShare = 1.0 / (kSamples * kSamples);
        Vector3 sum{};
        for (int sample = 0; sample < kSamples * kSamples; ++sample) {
            const double right = sample % kSamples - (kSamples - 1) / 2.0;
            const double below = sample / kSamples - (kSamples - 1) / 2.0;
            sum = sum + Mixed(texture_->At(copy_, middle[0] + across_[0] * right + down_[0] * below,
                                           middle[1] + across_[1] * right + down_[1] * below));
        }
        return sum * kShare;
    }

  private:
    std::array<double, 2> At(const Vector3& shares) const {
        return {at_[0][0] * shares[0] + at_[1][0] * shares[1] + at_[2][0] * shares[2],
                at_[0][1] * shares[0] + at_[1][1] * shares[1] + at_[2][1] * shares[2]};
    }

    Vector3 Mixed(const Texture::Colour& colour) const {
        const double amount = colour[3] * look_.amount;
        return Vector3{colour[0], colour[1], colour[2]} * amount + look_.diffuse * (1 - amount);
    }

    const Look& look_;
    std::array<std::array<double, 2>, 3> at_;
    const Texture* texture_ = nullptr;
    std::array<double, 2> across_{};  // from a sample to the one at its right, and below it
    std::array<double, 2> down_{};
    std::size_t copy_ = 0;
    bool isLarge_ = false;  // the copy's pixels are larger than the picture's
};

// A triangle as it is drawn; its area must not be 0. Shares of its corners are numbers in
// proportion, none of them negative.
class Facet {
  public:
    Facet(const PreviewCorner& a, const PreviewCorner& b, const PreviewCorner& c, const Look& look,
          double area)
        : a_(a),
          b_(b),
          c_(c),
          look_(look),
          area_(area),
          face_(FaceNormal(a.position, b.position, c.position)),
          isFlat_(a.normal == b.normal && b.normal == c.normal),
          flatColour_(ShadeAt(look.diffuse, look, a.normal, face_)),
          texture_(look, a, b, c, area) {}

    const Vector3& P() const { return a_.position; }
    const Vector3& Q() const { return b_.position; }
    const Vector3& R() const { return c_.position; }
    double Area() const { return area_; }
    bool IsTextured() const { return texture_.IsShown(); }

    // Where it has no texture: at these shares.
    std::uint32_t ColourAt(const Vector3& shares) const {
        return isFlat_ ? flatColour_ : ShadeAt(look_.diffuse, look_, NormalAt(shares), face_);
    }

    // Where it has one: of the pixel, at its middle, or if that lies outside, at the shares, which
    // are those of a sample of it.
    std::uint32_t PixelColour(int column, int row, const Vector3& shares) const {
        const double x = (column + 0.5) * kSamples;
        const double y = (row + 0.5) * kSamples;
        const Vector3 middle =
            Vector3{Edge(Q(), R(), x, y), Edge(R(), P(), x, y), Edge(P(), Q(), x, y)} * (1 / area_);
        const bool isIn = middle[0] >= 0 && middle[1] >= 0 && middle[2] >= 0;
        const Vector3 at = isIn ? middle : shares * (1 / std::abs(area_));
        return ShadeAt(texture_.Diffuse(at), look_, NormalAt(at), face_);
    }

  private:
    Vector3 NormalAt(const Vector3& shares) const {
        return a_.normal * shares[0] + b_.normal * shares[1] + c_.normal * shares[2];
    }

    const PreviewCorner& a_;
    const PreviewCorner& b_;
    const PreviewCorner& c_;
    const Look& look_;
    double area_;
    Vector3 face_;
    bool isFlat_;
    std::uint32_t flatColour_;
    TriangleTexture texture_;
};

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
               {-std::numeric_limits<float>::infinity(), Packed(kBackground)}),
      shades_(static_cast<std::size_t>(width)) {
}

void Band::Draw(const PreviewCorner& a, const PreviewCorner& b, const PreviewCorner& c,
                const Look& look) {
    const Vector3 &p = a.position, &q = b.position, &r = c.position;
    const double area = Edge(p, q, r[0], r[1]);
    if (area == 0) {
        return;
    }
    const auto [left, right] =
        Between(std::min({p[0], q[0], r[0]}), std::max({p[0], q[0], r[0]}), 0, columns_);
    const auto [top, bottom] = Between(std::min({p[1], q[1], r[1]}), std::max({p[1], q[1], r[1]}),
                                       firstLine_, firstLine_ + numLines_);
    const Facet facet(a, b, c, look, area);
    for (int y = top; y < bottom; ++y) {
        if (y == top || y % kSamples == 0) {
            ++facetRow_;
        }
        const Span span = SpanOf(p, q, r, area, y + 0.5);
        const auto [first, end] = Between(span.low, span.high, left, right);
        const int endDrawn = DrawLine(facet, y, first, end);
        if (endDrawn > first) {
            auto& drawn = drawn_[static_cast<std::size_t>((y - firstLine_) / kSamples)];
            drawn = {std::min(drawn.first, first), std::max(drawn.second, endDrawn)};
        }
    }
}

int Band::DrawLine(const Facet& facet, int y, int first, int end) {
    const Vector3 &p = facet.P(), &q = facet.Q(), &r = facet.R();
    const double side = facet.Area() > 0 ? 1 : -1;
    const Vector3 nearnesses = Vector3{p[2], q[2], r[2]} * (side / facet.Area());
    EdgeAlongLine qr(q, r, side, first + 0.5, y + 0.5);
    EdgeAlongLine rp(r, p, side, first + 0.5, y + 0.5);
    EdgeAlongLine pq(p, q, side, first + 0.5, y + 0.5);
    Sample* const line =
        &samples_[static_cast<std::size_t>(y - firstLine_) * static_cast<std::size_t>(columns_)];
    const bool isTextured = facet.IsTextured();
    int endDrawn = first;
    for (int x = first; x < end; ++x, qr.Step(), rp.Step(), pq.Step()) {
        const Vector3 shares = {qr.Value(), rp.Value(), pq.Value()};
        if (shares[0] < 0 || shares[1] < 0 || shares[2] < 0) {
            continue;
        }
        const auto nearness = static_cast<float>(Dot(shares, nearnesses));
        if (nearness > line[x].nearness) {
            line[x] = {nearness,
                       isTextured ? PixelColour(facet, x, y, shares) : facet.ColourAt(shares)};
            endDrawn = x + 1;
        }
    }
    return endDrawn;
}

// A textured triangle's colour in the pixel of the sample, worked out at the first of its samples.
inline std::uint32_t Band::PixelColour(const Facet& facet, int x, int y, const Vector3& shares) {
    const int column = x / kSamples;
    PixelShade& shade = shades_[static_cast<std::size_t>(column)];
    if (shade.facetRow != facetRow_) {
        shade = {facetRow_, facet.PixelColour(column, y / kSamples, shares)};
    }
    return shade.colour;
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
