// Pictures and the files that hold them: PNG, and animated PNG as browsers and viewers play it
// (Portable Network Graphics, third edition, W3C 2023).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace kta {

using Rgb = std::array<std::uint8_t, 3>;

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<Rgb> pixels;  // row by row from the top left

    const Rgb& At(int x, int y) const {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
};

// With opacity. Rows from the top left, red in a pixel's lowest byte and opacity in the highest.
struct Image {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;
};

// Of that size, in one colour.
Picture PlainPicture(int width, int height, const Rgb& colour);

// Puts `part`, which fits, into the picture, its top left corner there.
void Paste(Picture& picture, const Picture& part, int left, int top);

// A whole PNG file of 8-bit colours. The same picture gives the same bytes. Throws std::bad_alloc.
std::vector<std::uint8_t> EncodePng(const Picture& picture);
std::vector<std::uint8_t> EncodePng(const Image& image);

class RowCompressor;

// The same file, made while the rows come.
class PngWriter {
  public:
    PngWriter(int width, int height);
    ~PngWriter();

    // The next row or rows, each of the picture's width.
    void Append(std::span<const Rgb> pixels);
    // The file, when all rows are there.
    std::vector<std::uint8_t> Finish();

  private:
    int width_;
    int height_;
    std::unique_ptr<RowCompressor> compressor_;
};

// Seconds that a picture of an animation is shown for.
struct FrameDelay {
    std::uint16_t numerator = 1;
    std::uint16_t denominator = 10;
};

// An animated PNG that starts again when it ends. All pictures are of the first one's size; of the
// further ones the rectangle that differs from the picture before is kept. Where animations are
// not played, the first picture shows.
class AnimatedPngWriter {
  public:
    explicit AnimatedPngWriter(const FrameDelay& delay) : delay_(delay) {}

    void Append(Picture picture);
    // The file; there is a picture.
    std::vector<std::uint8_t> Finish() const;

  private:
    FrameDelay delay_;
    Picture last_;
    std::uint32_t frames_ = 0;
    std::uint32_t sequenceNumber_ = 0;  // of the next fcTL or fdAT chunk
    std::vector<std::uint8_t> chunks_;  // of the frames
};

}  // namespace kta
