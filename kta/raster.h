// Shaded triangles into a picture's samples: a z buffer, without a graphics processor.
#pragma once

#include <vector>

#include "kta/picture.h"
#include "kta/preview_scene.h"

namespace kta {

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

// A band of a picture's rows. What is drawn is in samples: x to the right from the picture's left
// edge, y down from its top, and third the nearness to the viewer; normals are right, up, towards
// the viewer. Positions must be finite; only what lies in the band is drawn.
class Band {
  public:
    Band(int width, int firstRow, int numRows);

    // Both sides are shown. Where interpolated normals point to the far side they are turned
    // round; where there are none the triangle's own is taken.
    void Draw(const PreviewCorner& a, const PreviewCorner& b, const PreviewCorner& c,
              const Look& look);

    // Writes the band's pixels into the picture.
    void Resolve(Picture& picture) const;

  private:
    int columns_;
    int firstLine_;  // in samples, as is what follows
    int numLines_;
    std::vector<float> nearness_;
    std::vector<Rgb> samples_;
};

}  // namespace kta
