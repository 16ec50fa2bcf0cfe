#include "sim/models/screen/painting.h"

namespace qz::sim {
namespace {

constexpr std::uint16_t black_word = 0x0000;

bool bit_at(std::span<const std::uint8_t> bits, std::size_t index) {
    return (bits[index / 8] >> (7 - index % 8)) & 1;
}

}  // namespace

std::size_t glyph_bytes(int glyph_height) {
    const auto rows = static_cast<std::size_t>(glyph_height);
    return rows * ((rows + 7) / 8);
}

void paint_text(FrameBuffer& screen, const TextLine& line, std::span<const std::uint8_t> bits) {
    const std::size_t row_bytes = (static_cast<std::size_t>(line.glyph_height) + 7) / 8;
    int left = line.x;
    for (std::size_t glyph = 0; glyph < line.width_classes.size(); ++glyph) {
        const int width = line.glyph_height / line.width_classes[glyph];
        const auto glyph_bits = bits.subspan(glyph * glyph_bytes(line.glyph_height), glyph_bytes(line.glyph_height));
        for (int row = 0; row < line.glyph_height; ++row)
            for (int column = 0; column < width; ++column) {
                const bool set = bit_at(glyph_bits, static_cast<std::size_t>(row) * row_bytes * 8 + column);
                screen.set(left + column, line.y + row, set ? line.foreground : line.background);
            }
        left += width;
    }
}

void paint_picture(FrameBuffer& screen, const Area& area, std::span<const std::uint8_t> words) {
    std::size_t offset = 0;
    for (int row = 0; row < area.height; ++row)
        for (int column = 0; column < area.width; ++column, offset += 2)
            screen.set(area.x + column, area.y + row, static_cast<std::uint16_t>((words[offset] << 8) | words[offset + 1]));
}

void paint_monochrome(FrameBuffer& screen, const Area& area, std::span<const std::uint8_t> bits) {
    std::size_t index = 0;
    for (int row = 0; row < area.height; ++row)
        for (int column = 0; column < area.width; ++column, ++index)
            screen.set(area.x + column, area.y + row, bit_at(bits, index) ? white_word : black_word);
}

}  // namespace qz::sim
