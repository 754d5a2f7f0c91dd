#include "kta/preview/sheet.h"

#include <stb/stb_easy_font.h>

#include <algorithm>
#include <array>
#include <vector>

#include "kta/preview/raster.h"

namespace kta {
namespace {

constexpr Rgb kInk = {235, 238, 242};
constexpr int kInkScale = 2;  // pixels a dot of the font
constexpr int kInkMargin = 6;

// A corner of one of the rectangles of which the font's letters consist, as the library stores it.
struct FontCorner {
    float x, y, z;
    std::array<unsigned char, 4> colour;
};
static_assert(sizeof(FontCorner) == 16);

void Fill(Picture& picture, int left, int top, int right, int bottom) {
    for (int y = std::max(top, 0); y < std::min(bottom, picture.height); ++y) {
        for (int x = std::max(left, 0); x < std::min(right, picture.width); ++x) {
            picture.pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
                           static_cast<std::size_t>(x)] = kInk;
        }
    }
}

}  // namespace

SheetSize SquareSheet(int pictures) {
    SheetSize size;
    while (size.columns * size.columns < pictures) {
        ++size.columns;
    }
    size.rows = (pictures + size.columns - 1) / size.columns;
    return size;
}

void WriteLine(Picture& picture, const std::string& line) {
    constexpr std::size_t kMostLetters = 200;
    constexpr std::size_t kRectanglesALetter = 20;  // more than any letter has
    constexpr int kLineHeight = 9;
    std::string text = line.substr(0, kMostLetters);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    std::vector<FontCorner> corners(text.size() * kRectanglesALetter * 4);
    const int count = stb_easy_font_print(0, 0, text.data(), nullptr, corners.data(),
                                          static_cast<int>(corners.size() * sizeof(FontCorner)));
    const int top = picture.height - kInkMargin - kLineHeight * kInkScale;
    const auto place = [](float dots) { return static_cast<int>(dots) * kInkScale; };
    for (std::size_t i = 0; i < static_cast<std::size_t>(count) * 4; i += 4) {
        const FontCorner& first = corners[i];
        const FontCorner& opposite = corners[i + 2];
        Fill(picture, kInkMargin + place(first.x), top + place(first.y),
             kInkMargin + place(opposite.x), top + place(opposite.y));
    }
}

Sheet::Sheet(const SheetSize& size, int pictureWidth, int pictureHeight)
    : size_(size),
      whole_(PlainPicture(size.columns * pictureWidth, size.rows * pictureHeight, kBackground)) {
}

void Sheet::Add(const Picture& picture) {
    Paste(whole_, picture, next_ % size_.columns * picture.width,
          next_ / size_.columns * picture.height);
    ++next_;
}

}  // namespace kta
