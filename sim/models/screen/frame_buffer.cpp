#include "sim/models/screen/frame_buffer.h"

#include "sim/models/screen/png_file.h"

namespace qz::sim {
namespace {

// A component of `bits` bits widened to 8 by repeating its top bits below.
std::uint8_t widen(unsigned value, int bits) {
    return static_cast<std::uint8_t>((value << (8 - bits)) | (value >> (2 * bits - 8)));
}

}  // namespace

void FrameBuffer::fill_rect(int x, int y, int width, int height, std::uint16_t word) {
    for (int row = y; row < y + height; ++row)
        for (int column = x; column < x + width; ++column) set(column, row, word);
}

std::vector<std::uint8_t> FrameBuffer::rgb() const {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(pixels_.size() * 3);
    for (const std::uint16_t word : pixels_) {
        bytes.push_back(widen(word & 0x1F, 5));
        bytes.push_back(widen((word >> 5) & 0x3F, 6));
        bytes.push_back(widen(word >> 11, 5));
    }
    return bytes;
}

bool FrameBuffer::save_png(const std::filesystem::path& path) const {
    return write_rgb_png(path, screen_width, screen_height, rgb());
}

}  // namespace qz::sim
