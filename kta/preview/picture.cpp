#include "kta/preview/picture.h"

#include <zlib.h>

#include <algorithm>
#include <new>
#include <optional>

namespace kta {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int kLevel = 6;              // of compression: a higher one takes longer for little
constexpr std::uint8_t kUpFilter = 2;  // the difference to the row above, mostly of its colour

// ---------------------------------------------------------------- chunks

void AppendU32(Bytes& bytes, std::uint32_t value) {
    for (const int shift : {24, 16, 8, 0}) {
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void AppendU16(Bytes& bytes, std::uint16_t value) {
    bytes.push_back(static_cast<std::uint8_t>(value >> 8));
    bytes.push_back(static_cast<std::uint8_t>(value));
}

void AppendChunk(Bytes& file, const char (&type)[5], const Bytes& data) {
    AppendU32(file, static_cast<std::uint32_t>(data.size()));
    const std::size_t start = file.size();
    file.insert(file.end(), type, type + 4);
    file.insert(file.end(), data.begin(), data.end());
    // crc32 takes 32-bit lengths on some systems, and no chunk is longer.
    AppendU32(file, static_cast<std::uint32_t>(
                        crc32(0, &file[start], static_cast<uInt>(file.size() - start))));
}

// The kinds of pixel, as the header numbers them.
enum ColourType : std::uint8_t { kRgb = 2, kRgba = 6 };

Bytes FileStart(int width, int height, ColourType colours = kRgb) {
    Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    Bytes header;
    AppendU32(header, static_cast<std::uint32_t>(width));
    AppendU32(header, static_cast<std::uint32_t>(height));
    header.insert(header.end(), {8, colours, 0, 0, 0});  // 8 bits, the usual ways, not interlaced
    AppendChunk(file, "IHDR", header);
    return file;
}

}  // namespace

// ---------------------------------------------------------------- pixels

// Filters and compresses rows as they come.
class RowCompressor {
  public:
    explicit RowCompressor(std::size_t width, std::size_t bytesPerPixel = sizeof(Rgb))
        : last_(width * bytesPerPixel, 0), filtered_(width * bytesPerPixel + 1, kUpFilter) {
        if (deflateInit(&stream_, kLevel) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~RowCompressor() { deflateEnd(&stream_); }
    RowCompressor(const RowCompressor&) = delete;
    RowCompressor& operator=(const RowCompressor&) = delete;

    void Append(const Rgb* row) {
        static_assert(sizeof(Rgb) == 3);
        Append(row->data());
    }
    void Append(const std::uint8_t* bytes) {
        for (std::size_t i = 0; i < last_.size(); ++i) {
            filtered_[i + 1] = static_cast<std::uint8_t>(bytes[i] - last_[i]);
        }
        std::copy(bytes, bytes + last_.size(), last_.begin());
        Compress(filtered_, Z_NO_FLUSH);
    }

    Bytes Finish() {
        Compress({}, Z_FINISH);
        return std::move(compressed_);
    }

  private:
    void Compress(std::span<std::uint8_t> bytes, int flush) {
        std::array<std::uint8_t, 1 << 16> room;
        stream_.next_in = bytes.data();
        stream_.avail_in = static_cast<uInt>(bytes.size());
        do {
            stream_.next_out = room.data();
            stream_.avail_out = static_cast<uInt>(room.size());
            deflate(&stream_, flush);
            compressed_.insert(compressed_.end(), room.data(), stream_.next_out);
        } while (stream_.avail_out == 0);
    }

    z_stream stream_{};
    Bytes last_;      // the row before
    Bytes filtered_;  // the filter's number and the row
    Bytes compressed_;
};

namespace {

// ---------------------------------------------------------------- frames

struct Rectangle {
    int left = 0;
    int top = 0;
    int right = 1;  // behind the last column, and so is `bottom`
    int bottom = 1;
};

// The smallest rectangle with all that differs between two pictures of a size; a pixel, where
// nothing does.
Rectangle Changed(const Picture& before, const Picture& after) {
    std::optional<Rectangle> changed;
    for (int y = 0; y < after.height; ++y) {
        const Rgb* const a = &before.At(0, y);
        const Rgb* const b = &after.At(0, y);
        const int left = static_cast<int>(std::mismatch(b, b + after.width, a).first - b);
        if (left == after.width) {
            continue;
        }
        int right = after.width;
        while (a[right - 1] == b[right - 1]) {
            --right;
        }
        if (!changed) {
            changed = {left, y, right, y + 1};
        }
        changed = {std::min(changed->left, left), changed->top, std::max(changed->right, right),
                   y + 1};
    }
    return changed.value_or(Rectangle{});
}

Bytes Compressed(const Picture& picture, const Rectangle& part) {
    RowCompressor compressor(static_cast<std::size_t>(part.right - part.left));
    for (int y = part.top; y < part.bottom; ++y) {
        compressor.Append(&picture.At(part.left, y));
    }
    return compressor.Finish();
}

Bytes FrameControl(std::uint32_t sequenceNumber, const Rectangle& part, const FrameDelay& delay) {
    Bytes control;
    AppendU32(control, sequenceNumber);
    for (const int value : {part.right - part.left, part.bottom - part.top, part.left, part.top}) {
        AppendU32(control, static_cast<std::uint32_t>(value));
    }
    AppendU16(control, delay.numerator);
    AppendU16(control, delay.denominator);
    control.insert(control.end(), {0, 0});  // stays, and stands in the place of what was there
    return control;
}

}  // namespace

// ---------------------------------------------------------------- pictures

Picture PlainPicture(int width, int height, const Rgb& colour) {
    return {width, height,
            std::vector<Rgb>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                             colour)};
}

void Paste(Picture& picture, const Picture& part, int left, int top) {
    for (int y = 0; y < part.height; ++y) {
        const Rgb* const row = &part.At(0, y);
        std::copy(row, row + part.width,
                  picture.pixels.begin() + std::ptrdiff_t{top + y} * picture.width + left);
    }
}

// ---------------------------------------------------------------- files

PngWriter::PngWriter(int width, int height)
    : width_(width),
      height_(height),
      compressor_(std::make_unique<RowCompressor>(static_cast<std::size_t>(width))) {
}

PngWriter::~PngWriter() = default;

void PngWriter::Append(std::span<const Rgb> pixels) {
    for (std::size_t first = 0; first < pixels.size(); first += static_cast<std::size_t>(width_)) {
        compressor_->Append(&pixels[first]);
    }
}

std::vector<std::uint8_t> PngWriter::Finish() {
    Bytes file = FileStart(width_, height_);
    AppendChunk(file, "IDAT", compressor_->Finish());
    AppendChunk(file, "IEND", {});
    return file;
}

std::vector<std::uint8_t> EncodePng(const Picture& picture) {
    PngWriter writer(picture.width, picture.height);
    writer.Append(picture.pixels);
    return writer.Finish();
}

std::vector<std::uint8_t> EncodePng(const Image& image) {
    const auto width = static_cast<std::size_t>(image.width);
    RowCompressor compressor(width, sizeof(std::uint32_t));
    Bytes row(width * sizeof(std::uint32_t));
    for (std::size_t first = 0; first < image.pixels.size(); first += width) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] = static_cast<std::uint8_t>(image.pixels[first + i / 4] >> (8 * (i % 4)));
        }
        compressor.Append(row.data());
    }
    Bytes file = FileStart(image.width, image.height, kRgba);
    AppendChunk(file, "IDAT", compressor.Finish());
    AppendChunk(file, "IEND", {});
    return file;
}

void AnimatedPngWriter::Append(Picture picture) {
    const bool isFirst = frames_++ == 0;
    const Rectangle part =
        isFirst ? Rectangle{0, 0, picture.width, picture.height} : Changed(last_, picture);
    AppendChunk(chunks_, "fcTL", FrameControl(sequenceNumber_++, part, delay_));
    const Bytes pixels = Compressed(picture, part);
    if (isFirst) {
        AppendChunk(chunks_, "IDAT", pixels);
    } else {
        Bytes numbered;
        AppendU32(numbered, sequenceNumber_++);
        numbered.insert(numbered.end(), pixels.begin(), pixels.end());
        AppendChunk(chunks_, "fdAT", numbered);
    }
    last_ = std::move(picture);
}

std::vector<std::uint8_t> AnimatedPngWriter::Finish() const {
    Bytes file = FileStart(last_.width, last_.height);
    Bytes control;
    AppendU32(control, frames_);
    AppendU32(control, 0);  // plays without end
    AppendChunk(file, "acTL", control);
    file.insert(file.end(), chunks_.begin(), chunks_.end());
    AppendChunk(file, "IEND", {});
    return file;
}

}  // namespace kta
