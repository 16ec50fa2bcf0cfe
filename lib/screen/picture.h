// Pictures for the screen: an image file scaled to the size it has on the
// screen and packed as colour words, or cut to the box of its black pixels and
// packed one bit a pixel.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/image.h"
#include "screen/screen_commands.h"

namespace qz::screen {

// The image's own size, cut down to the screen's.
int fitted_width(const platform::Image& image);
int fitted_height(const platform::Image& image);

// Colour words, high byte first, row by row; empty when memory runs out.
platform::PixelBytes pack_colour_words(const platform::Image& image);

struct MonochromeBox {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
};

// The box resting on the highest and the lowest row that hold an exactly black
// pixel, between the leftmost and the rightmost black pixel of those two rows.
// Nothing when the search finds no such corners.
std::optional<MonochromeBox> find_black_box(const platform::Image& image);

// The box's pixels row by row, top bit first, no padding between rows: 1 where
// the brightness is 128 or more.
std::vector<std::uint8_t> pack_monochrome_bits(const platform::Image& image, const MonochromeBox& box);

}  // namespace qz::screen
