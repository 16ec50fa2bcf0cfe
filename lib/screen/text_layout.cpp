#include "screen/text_layout.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <vector>

#include "link/status.h"
#include "screen/font_size.h"
#include "screen/screen_commands.h"
#include "screen/text_rows.h"

namespace qz::screen {
namespace {

constexpr std::size_t glyph_buffer_size = 0x200000;
constexpr std::size_t max_rows = 30;
constexpr std::size_t max_row_glyphs = 1024;

// Breaks one rendered row into lines from `y` on; gives the status and moves `y`
// below the last line sent.
class RowBreaker {
public:
    RowBreaker(const TextRequest& request, const LineSink& send, int& y) : request_(request), send_(send), y_(y) {}

    int run(std::span<const std::uint8_t> classes, std::span<const std::uint8_t> bitmap, int bit_length,
            int font_height) {
        font_height_ = font_height;
        classes_ = classes;
        bitmap_ = bitmap;
        const int avail = screen_width - request_.x;
        const int total = std::accumulate(classes.begin(), classes.end(), 0,
                                          [&](int sum, std::uint8_t width_class) { return sum + width_of(width_class); });
        if (total < avail) return send_line(0, classes.size(), static_cast<std::size_t>(bit_length));

        const std::size_t stride = glyph_stride();
        int sum = 0;
        std::size_t first = 0;
        for (std::size_t k = 0; k < classes.size(); ++k) {
            if (y_ + font_height_ > screen_height) return 0;
            sum += width_of(classes[k]);
            if (sum < avail && k + 1 != classes.size()) continue;
            if (sum > avail && k > first) --k;  // that glyph opens the next line
            const std::size_t count = k - first + 1;
            if (const int result = send_line(first, count, count * stride); result != 0) return result;
            sum = 0;
            first = k + 1;
            if (!request_.wrap) return 0;
        }
        return 0;
    }

    std::size_t glyph_stride() const {
        return static_cast<std::size_t>(request_.size) * static_cast<std::size_t>(padded_size(request_.size)) / 8;
    }

private:
    int width_of(std::uint8_t width_class) const { return font_height_ / width_class; }
    int send_line(std::size_t first, std::size_t count, std::size_t length) {
        const TextLine line{request_.x, y_, font_height_, classes_.subspan(first, count),
                            bitmap_.subspan(first * glyph_stride(), length)};
        const int result = send_(line);
        if (result == 0) y_ += font_height_;
        return result;
    }

    const TextRequest& request_;
    const LineSink& send_;
    int& y_;
    int font_height_ = 0;
    std::span<const std::uint8_t> classes_;
    std::span<const std::uint8_t> bitmap_;
};

}  // namespace

int lay_out_text(const TextRequest& request, const LineSink& send, std::string_view library) {
    const std::vector<std::string> rows = split_text_rows(request.text);
    if (rows.size() > max_rows) return link::status_bad_argument;
    // Zeroed pages from the system: the 2 MiB cost only what the rows touch.
    const std::unique_ptr<std::uint8_t, decltype(&std::free)> buffer(
        static_cast<std::uint8_t*>(std::calloc(glyph_buffer_size, 1)), &std::free);
    if (!buffer) return link::status_bad_argument;
    const std::span<std::uint8_t> glyphs(buffer.get(), glyph_buffer_size);
    std::size_t dirty = 0;  // bytes the component may have written
    int y = request.y;
    FontBits bits{.font_height = request.size};
    RowBreaker breaker(request, send, y);
    for (const std::string& row : rows) {
        if (y + bits.font_height > screen_height) break;
        const std::vector<std::uint8_t> classes = classify_glyphs(row);
        if (classes.size() > max_row_glyphs) return link::status_bad_argument;
        std::fill_n(glyphs.begin(), dirty, 0);
        const bool rendered = load_font_bits(row, request.size, glyphs, bits, library) != 0;
        if (!rendered || bits.text_count != static_cast<int>(classes.size()) || bits.bit_length < 0 ||
            static_cast<std::size_t>(bits.bit_length) > glyphs.size() || bits.font_height < 1)
            return link::status_bad_argument;
        dirty = std::min(glyphs.size(), std::max(static_cast<std::size_t>(bits.bit_length),
                                                 classes.size() * breaker.glyph_stride()));
        if (const int result = breaker.run(classes, glyphs, bits.bit_length, bits.font_height); result != 0)
            return result;
    }
    return 0;
}

}  // namespace qz::screen
