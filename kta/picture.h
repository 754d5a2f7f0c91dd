// Pictures in memory and as PNG.
#pragma once

#include <array>
#include <cstdint>
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

// A whole PNG file of 8-bit colours. The same picture gives the same bytes.
std::vector<std::uint8_t> EncodePng(const Picture& picture);

}  // namespace kta
