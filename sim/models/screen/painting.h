// How the screen turns the content of a transfer into pixels.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "sim/models/screen/frame_buffer.h"

namespace qz::sim {

struct Area {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

struct TextLine {
    int x = 0;
    int y = 0;
    int glyph_height = 0;  // S
    std::uint16_t foreground = 0;
    std::uint16_t background = 0;
    std::vector<std::uint8_t> width_classes;  // 1 full width, 2 half width
};

// Bytes of one glyph of height S: S rows of S rounded up to whole bytes.
std::size_t glyph_bytes(int glyph_height);

// Glyph by glyph from x to the right; pixels past the screen's edges are dropped.
void paint_text(FrameBuffer& screen, const TextLine& line, std::span<const std::uint8_t> bits);
// Colour words, high byte first, row by row.
void paint_picture(FrameBuffer& screen, const Area& area, std::span<const std::uint8_t> words);
// One bit a pixel, top bit first, running on over row ends: 1 white, 0 black.
void paint_monochrome(FrameBuffer& screen, const Area& area, std::span<const std::uint8_t> bits);

}  // namespace qz::sim
