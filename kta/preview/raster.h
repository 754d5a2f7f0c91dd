// Shaded triangles into a picture: a z buffer, without a graphics processor.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "kta/preview/picture.h"
#include "kta/preview/texture.h"
#include "kta/vector.h"

namespace kta {

// ---------------------------------------------------------------- triangles

// How a material shows, in numbers that are not negative; the default is the exporter's "Extra
// material".
struct Look {
    Vector3 diffuse = {0.75, 0.75, 0.75};
    Vector3 selfIllumination{};
    const Texture* texture = nullptr;  // shows in the place of the diffuse colour
    double amount = 1;                 // how much of it, from 0 to 1
};

struct PreviewCorner {
    Vector3 position;
    Vector3 normal;  // of length 1, or (0, 0, 0)
    // In the texture: from its left edge, and down from its top; not finite where there is none.
    std::array<double, 2> inTexture{};
};

// Each pixel is the average of kSamples x kSamples samples.
constexpr int kSamples = 3;

constexpr Rgb kBackground = {88, 94, 102};

// The part of a colour that a surface shows without light; what light gives goes with the cosine
// of its angle to the normal.
constexpr double kAmbient = 0.3;

// Towards the light: from the viewer's upper left. Axes: right, up, towards the viewer.
constexpr Vector3 kLight = {-0.48, 0.64, 0.6};

// The colour of a surface with that normal, of length 1 and on the viewer's side.
Rgb Shade(const Look& look, const Vector3& normal);

class Facet;

// A band of a picture's rows. What is drawn is in samples: x to the right from the picture's left
// edge, y down from its top, and third the nearness to the viewer; normals are right, up, towards
// the viewer. Positions must be finite; only what lies in the band is drawn.
class Band {
  public:
    // Rows from `firstRow` on, without anything drawn.
    Band(int width, int firstRow, int numRows);

    // Both sides are shown. Where interpolated normals point to the far side they are turned
    // round; where there are none the triangle's own is taken. Of a textured triangle the samples
    // of a pixel have one colour, that of its average in the pixel.
    void Draw(const PreviewCorner& a, const PreviewCorner& b, const PreviewCorner& c,
              const Look& look);

    // Writes the band's pixels into the picture. Whether anything was drawn.
    bool Resolve(Picture& picture) const;

  private:
    struct Sample {
        float nearness;
        std::uint32_t colour;  // red in the lowest byte
    };

    // The colour of a pixel of the textured triangle that is being drawn in the present row.
    struct PixelShade {
        std::uint64_t facetRow = 0;
        std::uint32_t colour = 0;
    };

    // What of the line lies in the columns; the column behind the last that is drawn.
    int DrawLine(const Facet& facet, int y, int first, int end);
    std::uint32_t PixelColour(const Facet& facet, int x, int y, const Vector3& shares);
    Rgb Average(const Sample* firstOfThree) const;

    int columns_;
    int firstLine_;  // in samples, as is what follows
    int numLines_;
    // The columns of each pixel row that something was drawn in.
    std::vector<std::pair<int, int>> drawn_;
    std::vector<Sample> samples_;
    std::vector<PixelShade> shades_;  // of the last triangle in each of the pixel's columns
    std::uint64_t facetRow_ = 0;      // counts triangles and the pixel rows of each
};

}  // namespace kta
