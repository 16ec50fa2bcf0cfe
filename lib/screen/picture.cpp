#include "screen/picture.h"

#include <algorithm>

#include "screen/colour.h"

namespace qz::screen {
namespace {

constexpr float light_threshold = 128.0f;

float brightness(const std::uint8_t* rgb) { return 0.299f * rgb[0] + 0.587f * rgb[1] + 0.114f * rgb[2]; }

bool black(const platform::Image& image, int x, int y) { return brightness(image.pixel(x, y)) == 0.0f; }

struct Corner {
    int x = -1;
    int y = -1;
    bool found() const { return x >= 0; }
};

}  // namespace

int fitted_width(const platform::Image& image) { return std::min(image.width, screen_width); }
int fitted_height(const platform::Image& image) { return std::min(image.height, screen_height); }

platform::PixelBytes pack_colour_words(const platform::Image& image) {
    const std::size_t pixels = image.rgb.size() / 3;
    platform::PixelBytes words(pixels * 2);
    if (words.empty()) return words;
    const std::uint8_t* rgb = image.rgb.data();
    std::uint8_t* out = words.data();
    for (std::size_t i = 0; i < pixels; ++i, rgb += 3, out += 2) {
        const ColourWord word = rgb_to_565(rgb[2], rgb[1], rgb[0]);
        out[0] = static_cast<std::uint8_t>(word >> 8);
        out[1] = static_cast<std::uint8_t>(word);
    }
    return words;
}

// The rows walk inward from both ends at once, and within each pair of rows the
// columns do; each corner is taken at the first black pixel its walk meets.
std::optional<MonochromeBox> find_black_box(const platform::Image& image) {
    Corner top_left, top_right, bottom_left, bottom_right;
    const auto take = [&](Corner& corner, int x, int y) {
        if (!corner.found() && black(image, x, y)) corner = {x, y};
    };
    const auto all_found = [&] {
        return top_left.found() && top_right.found() && bottom_left.found() && bottom_right.found();
    };
    for (int top = 0, bottom = image.height - 1; top < image.height && bottom > 0 && !all_found(); ++top, --bottom)
        for (int left = 0, right = image.width - 1; left < image.width && right > 0 && !all_found(); ++left, --right) {
            take(top_left, left, top);
            take(top_right, right, top);
            take(bottom_left, left, bottom);
            take(bottom_right, right, bottom);
        }
    if (!all_found()) return std::nullopt;
    const int left = std::min(top_left.x, bottom_left.x);
    const int right = std::max(top_right.x, bottom_right.x);
    const int top = std::min(top_left.y, top_right.y);
    const int bottom = std::max(bottom_left.y, bottom_right.y);
    return MonochromeBox{left, top, right + 1 - left, bottom + 1 - top};
}

std::vector<std::uint8_t> pack_monochrome_bits(const platform::Image& image, const MonochromeBox& box) {
    const std::size_t count = static_cast<std::size_t>(box.width) * static_cast<std::size_t>(box.height);
    std::vector<std::uint8_t> bits((count + 7) / 8);
    std::size_t index = 0;
    for (int y = box.top; y < box.top + box.height; ++y)
        for (int x = box.left; x < box.left + box.width; ++x, ++index)
            if (brightness(image.pixel(x, y)) >= light_threshold)
                bits[index / 8] |= static_cast<std::uint8_t>(0x80 >> (index % 8));
    return bits;
}

}  // namespace qz::screen
