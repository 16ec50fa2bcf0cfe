// Debian's stb image decoder, for the formats the imaging service takes.
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_ONLY_BMP
#define STBI_ONLY_GIF
#define STBI_NO_LINEAR
#define STBI_NO_HDR
#define STBI_MAX_DIMENSIONS 16384
#include <stb/stb_image.h>

#include "platform/image.h"

#include <memory>

namespace qz::platform {

std::optional<Image> decode_image_file(const std::string& path) {
    int width = 0;
    int height = 0;
    int channels = 0;
    const std::unique_ptr<stbi_uc, void (*)(void*)> pixels(stbi_load(path.c_str(), &width, &height, &channels, 4),
                                                           stbi_image_free);
    if (!pixels || width < 1 || height < 1) return std::nullopt;
    Image image{width, height, {}};
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    image.rgb.resize(count * 3);
    for (std::size_t i = 0; i < count; ++i) {
        const stbi_uc* rgba = pixels.get() + i * 4;
        for (int c = 0; c < 3; ++c)  // over white: c * a + 255 * (255 - a), rounded
            image.rgb[i * 3 + c] = static_cast<std::uint8_t>((rgba[c] * rgba[3] + 255 * (255 - rgba[3]) + 127) / 255);
    }
    return image;
}

}  // namespace qz::platform
