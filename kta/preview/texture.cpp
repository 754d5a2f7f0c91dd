#include "kta/preview/texture.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <memory>

namespace {

// What one part of the image that is being read may take.
thread_local std::size_t mostAllocation = 0;

void* Allocated(std::size_t size) {
    return size <= mostAllocation ? std::malloc(size) : nullptr;
}

void* Reallocated(void* old, std::size_t size) {
    return size <= mostAllocation ? std::realloc(old, size) : nullptr;
}

}  // namespace

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_NO_STDIO
#define STBI_ONLY_BMP
#define STBI_ONLY_JPEG
#define STBI_ONLY_PNG
#define STBI_ONLY_TGA
#define STBI_MALLOC(size) Allocated(size)
#define STBI_REALLOC(old, size) Reallocated(old, size)
#define STBI_FREE(memory) std::free(memory)
#include <stb/stb_image.h>

namespace kta {
namespace {

constexpr int kMostKeptSide = 4096;  // of larger images a smaller copy is kept
constexpr int kMostScans = 100;      // of a JPEG, each of which may go over the whole image

constexpr std::uint32_t Channel(std::uint32_t pixel, int channel) {
    return pixel >> (8 * channel) & 0xff;
}

// Whether a JPEG's table of Huffman codes, wherever one may begin, has more codes than there are
// symbols, for which the library has no room.
bool HasTooManyCodes(std::span<const std::uint8_t> bytes) {
    const auto at = [bytes](std::size_t i) { return i < bytes.size() ? std::size_t{bytes[i]} : 0; };
    for (std::size_t i = 0; i + 1 < bytes.size(); ++i) {
        if (bytes[i] != 0xff || bytes[i + 1] != 0xc4) {
            continue;
        }
        const std::size_t end = i + 2 + (at(i + 2) << 8 | at(i + 3));
        for (std::size_t table = i + 4; table < end;) {
            std::size_t codes = 0;
            for (std::size_t length = 1; length <= 16; ++length) {
                codes += at(table + length);
            }
            if (codes > 256) {
                return true;
            }
            table += 17 + codes;
        }
    }
    return false;
}

// Each scan of a JPEG begins with this marker, which its other data never holds.
bool HasTooManyScans(std::span<const std::uint8_t> bytes) {
    int scans = 0;
    for (std::size_t i = 0; i + 1 < bytes.size() && scans <= kMostScans; ++i) {
        scans += bytes[i] == 0xff && bytes[i + 1] == 0xda ? 1 : 0;
    }
    return scans > kMostScans;
}

// As much as the largest image that is shown takes, and for a small one little more than it takes,
// however much its bytes unpack to.
std::size_t MostAllocation(std::size_t bytes, int width, int height) {
    constexpr std::size_t kMost = std::size_t{288} << 20;
    constexpr std::size_t kBytesAPixel = 10;  // of four channels of 16 bits, and filters
    return std::min(kMost, (std::size_t{1} << 20) + 2 * bytes +
                               kBytesAPixel * static_cast<std::size_t>(width) *
                                   static_cast<std::size_t>(height));
}

DecodedImage Failed(std::string error) {
    return {std::nullopt, std::move(error)};
}

// A place's remainder in [0, 1). std::floor is a call where the processor's newer instructions may
// not be used, and is needed for each of a picture's pixels.
double Remainder(double place) {
    constexpr double kWhole = 4503599627370496.0;  // from 2^52 on, all numbers are whole
    if (!(std::abs(place) < kWhole)) {
        return 0;
    }
    const auto towardsZero = static_cast<double>(static_cast<std::int64_t>(place));
    return place - (towardsZero > place ? towardsZero - 1 : towardsZero);
}

// Two of a pixel's channels, red and blue or those above them, to be summed in one number.
constexpr std::uint64_t TwoChannels(std::uint32_t pixel) {
    return (pixel & 0xff) | std::uint64_t{pixel & 0xff0000} << 16;
}

// Two neighbouring pixels of a row or column, which repeats, and how near the second is, of 256.
struct Neighbours {
    std::size_t first;
    std::size_t second;
    std::uint32_t share;

    // Round a place; pixels' centres lie at n + 0.5.
    Neighbours(double place, int size) {
        const double after = Remainder(place) * size + 0.5;  // the second one's number, and more
        const int number = static_cast<int>(after);
        second = static_cast<std::size_t>(number < size ? number : 0);
        first = static_cast<std::size_t>(number > 0 ? number - 1 : size - 1);
        share = static_cast<std::uint32_t>((after - number) * 256);
    }
};

}  // namespace

Texture::Texture(int width, int height, std::vector<std::uint32_t> pixels) {
    copies_.push_back({width, height, std::move(pixels)});
    if (std::max(width, height) > kMostKeptSide) {
        copies_.front() = Halved(copies_.front());
    }
    while (copies_.back().width > 1 || copies_.back().height > 1) {
        copies_.push_back(Halved(copies_.back()));
    }
}

// Each pixel is the average of two by two; of an odd side the last one is left out.
Texture::Copy Texture::Halved(const Copy& copy) {
    Copy halved = {std::max(1, copy.width / 2), std::max(1, copy.height / 2), {}};
    halved.pixels.reserve(static_cast<std::size_t>(halved.width) *
                          static_cast<std::size_t>(halved.height));
    const int right = copy.width > 1 ? 1 : 0;
    const int below = copy.height > 1 ? copy.width : 0;
    for (int y = 0; y < halved.height; ++y) {
        const std::uint32_t* four =
            &copy.pixels[static_cast<std::size_t>(2 * y) * static_cast<std::size_t>(copy.width)];
        for (int x = 0; x < halved.width; ++x, four += 2) {
            std::uint32_t pixel = 0;
            for (int channel = 0; channel < 4; ++channel) {
                const std::uint32_t sum =
                    Channel(four[0], channel) + Channel(four[right], channel) +
                    Channel(four[below], channel) + Channel(four[below + right], channel);
                pixel |= (sum + 2) / 4 << (8 * channel);
            }
            halved.pixels.push_back(pixel);
        }
    }
    return halved;
}

double Texture::PixelsApart(std::size_t copy, const std::array<double, 2>& step) const {
    return std::hypot(step[0] * copies_[copy].width, step[1] * copies_[copy].height);
}

std::size_t Texture::CopyFor(const std::array<double, 2>& across,
                             const std::array<double, 2>& down) const {
    double step = std::max(PixelsApart(0, across), PixelsApart(0, down));
    std::size_t copy = 0;
    for (; step > 1.5 && copy + 1 < copies_.size(); step /= 2) {
        ++copy;
    }
    return copy;
}

Texture::Colour Texture::At(std::size_t copy, double x, double y) const {
    const Copy& shown = copies_[copy];
    const Neighbours columns(x, shown.width);
    const Neighbours rows(y, shown.height);
    const auto width = static_cast<std::size_t>(shown.width);
    const std::uint32_t* const above = &shown.pixels[rows.first * width];
    const std::uint32_t* const below = &shown.pixels[rows.second * width];
    const std::uint32_t right = columns.share, down = rows.share;
    std::uint64_t redAndBlue = 0, greenAndOpacity = 0;
    const auto add = [&](std::uint32_t pixel, std::uint64_t share) {
        redAndBlue += share * TwoChannels(pixel);
        greenAndOpacity += share * TwoChannels(pixel >> 8);
    };
    add(above[columns.first], (256 - right) * (256 - down));
    add(above[columns.second], right * (256 - down));
    add(below[columns.first], (256 - right) * down);
    add(below[columns.second], right * down);
    constexpr double kWhole = 1.0 / (65536.0 * 255.0);
    const auto channel = [](std::uint64_t two, int shift) {
        return static_cast<std::uint32_t>(two >> shift) * kWhole;
    };
    return {channel(redAndBlue, 0), channel(greenAndOpacity, 0), channel(redAndBlue, 32),
            channel(greenAndOpacity, 32)};
}

std::size_t Texture::Bytes() const {
    std::size_t pixels = 0;
    for (const Copy& copy : copies_) {
        pixels += copy.pixels.size();
    }
    return pixels * sizeof(std::uint32_t);
}

DecodedImage DecodeImage(std::span<const std::uint8_t> bytes) {
    const auto* const data = bytes.data();
    const int size = static_cast<int>(bytes.size());
    int width = 0, height = 0, channels = 0;
    mostAllocation = MostAllocation(bytes.size(), 0, 0);
    if (bytes.size() > kMostImageBytes) {
        return Failed("has more than 256 MiB");
    }
    const bool mayBeJpeg = !bytes.empty() && bytes[0] == 0xff;
    if (mayBeJpeg && HasTooManyCodes(bytes)) {
        return Failed("is a faulty image (bad codes)");
    }
    if (stbi_info_from_memory(data, size, &width, &height, &channels) == 0) {
        return Failed("is no PNG, JPEG, BMP or TGA image");
    }
    if (width < 1 || height < 1 || width > kMostImageSide || height > kMostImageSide) {
        return Failed("has " + std::to_string(width) + " x " + std::to_string(height) +
                      " pixels, expected up to " + std::to_string(kMostImageSide) + " a side");
    }
    if (mayBeJpeg && HasTooManyScans(bytes)) {
        return Failed("has more than " + std::to_string(kMostScans) + " scans");
    }
    mostAllocation = MostAllocation(bytes.size(), width, height);
    const std::unique_ptr<stbi_uc, decltype(&std::free)> pixels(
        stbi_load_from_memory(data, size, &width, &height, &channels, 4), std::free);
    if (!pixels) {
        return Failed(std::string("is a faulty image (") + stbi_failure_reason() + ")");
    }
    std::vector<std::uint32_t> packed(static_cast<std::size_t>(width) *
                                      static_cast<std::size_t>(height));
    const stbi_uc* at = pixels.get();
    for (std::uint32_t& pixel : packed) {
        pixel = at[0] | std::uint32_t{at[1]} << 8 | std::uint32_t{at[2]} << 16 |
                std::uint32_t{at[3]} << 24;
        at += 4;
    }
    return {Image{width, height, std::move(packed)}, ""};
}

DecodedImage DecodeImageFile(const std::filesystem::path& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return Failed("is no file");
    }
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error || size > kMostImageBytes) {
        return Failed(error ? "cannot be read (" + error.message() + ")" : "has more than 256 MiB");
    }
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
    std::ifstream stream(path, std::ios::binary);
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
    if (stream.gcount() != static_cast<std::streamsize>(size)) {
        return Failed("cannot be read");
    }
    return DecodeImage(bytes);
}

namespace {

ImageReading ToTexture(DecodedImage decoded) {
    if (!decoded.image) {
        return {std::nullopt, std::move(decoded.error)};
    }
    Image& image = *decoded.image;
    return {Texture(image.width, image.height, std::move(image.pixels)), ""};
}

}  // namespace

ImageReading ReadImage(std::span<const std::uint8_t> bytes) {
    return ToTexture(DecodeImage(bytes));
}

ImageReading ReadImageFile(const std::filesystem::path& path) {
    return ToTexture(DecodeImageFile(path));
}

std::vector<std::uint8_t> ImageFileAsPng(const std::filesystem::path& path) {
    const DecodedImage decoded = DecodeImageFile(path);
    return decoded.image ? EncodePng(*decoded.image) : std::vector<std::uint8_t>();
}

}  // namespace kta
