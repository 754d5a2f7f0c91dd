#include "kta/picture.h"

#include <cstdlib>
#include <memory>
#include <new>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb/stb_image_write.h>

namespace kta {

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
