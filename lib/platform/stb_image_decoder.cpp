// Debian's stb image decoder, for the formats the imaging service takes. Its
// buffers come from the picture block cache, and its output becomes the image.
#include "platform/image.h"
#include "platform/pixel_blocks.h"

#include <utility>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_ONLY_BMP
#define STBI_ONLY_GIF
#define STBI_NO_LINEAR
#define STBI_NO_HDR
#define STBI_MAX_DIMENSIONS 16384
#define STBI_MALLOC(size) qz::platform::pixel_block_allocate(size)
#define STBI_REALLOC(block, size) qz::platform::pixel_block_reallocate(block, size)
#define STBI_FREE(block) qz::platform::pixel_block_release(block)
#include <stb/stb_image.h>

namespace qz::platform {

std::optional<Image> decode_image_file(const std::string& path) {
    int width = 0;
    int height = 0;
    int channels = 0;
    // The file's own channels: three-channel pictures (every JPEG) are taken as they come.
    stbi_uc* const decoded = stbi_load(path.c_str(), &width, &height, &channels, 0);
    if (decoded == nullptr) return std::nullopt;
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    PixelBytes pixels = PixelBytes::adopt(decoded, count * static_cast<std::size_t>(channels));
    if (width < 1 || height < 1 || channels < 1 || channels > 4) return std::nullopt;
    if (channels == 3) return Image{width, height, std::move(pixels)};

    Image image{width, height, PixelBytes(count * 3)};
    if (image.rgb.empty()) return std::nullopt;
    const bool grey = channels < 3;
    const bool alpha = channels % 2 == 0;
    const std::uint8_t* in = pixels.data();
    std::uint8_t* out = image.rgb.data();
    for (std::size_t i = 0; i < count; ++i, in += channels, out += 3) {
        const unsigned a = alpha ? in[channels - 1] : 255;
        for (int c = 0; c < 3; ++c) {  // over white: c * a + 255 * (255 - a), rounded
            const unsigned value = in[grey ? 0 : c];
            out[c] = static_cast<std::uint8_t>((value * a + 255 * (255 - a) + 127) / 255);
        }
    }
    return image;
}

}  // namespace qz::platform
