// The imaging service: image files decoded to 8-bit red, green, blue pixels, and
// the stretch of a whole image to a given size.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/pixel_blocks.h"

namespace qz::platform {

struct Image {
    int width = 0;
    int height = 0;
    PixelBytes rgb;  // 3 bytes a pixel, rows from the top, no padding

    const std::uint8_t* pixel(int x, int y) const {
        return rgb.data() + (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + x) * 3;
    }
};

// PNG, JPEG, BMP or GIF (its first frame); transparency is laid over white.
// Nothing when the file is missing, unreadable, no image of these kinds, or
// when memory runs out.
std::optional<Image> decode_image_file(const std::string& path);

// Scales the whole of `source` to `width` x `height` (both at least 1), each
// target pixel the area-weighted mean of the source pixels under it. A source
// of that size already is handed back as it is. Nothing when memory runs out.
std::optional<Image> stretch_image(Image source, int width, int height);

}  // namespace qz::platform
