// The imaging service: image files decoded to 8-bit red, green, blue pixels, and
// the stretch of a whole image to a given size.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qz::platform {

struct Image {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;  // 3 bytes a pixel, rows from the top, no padding

    const std::uint8_t* pixel(int x, int y) const {
        return rgb.data() + (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + x) * 3;
    }
};

// PNG, JPEG, BMP or GIF (its first frame); transparency is laid over white.
// Nothing when the file is missing, unreadable or no image of these kinds.
std::optional<Image> decode_image_file(const std::string& path);

// Scales the whole of `source` to `width` x `height` (both at least 1), each
// target pixel the area-weighted mean of the source pixels under it.
Image stretch_image(const Image& source, int width, int height);

}  // namespace qz::platform
