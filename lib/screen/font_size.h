// The font sizes the screen draws: multiples of 4, never an odd multiple of 32.
#pragma once

namespace qz::screen {

// A value not a multiple of 4 goes up to the next one, below 12 down to the last.
constexpr int round4(int value) {
    if (value % 4 == 0) return value;
    const int quarter = value / 4;
    return quarter >= 3 ? quarter * 4 + 4 : quarter * 4;
}

constexpr bool odd_multiple_of_32(int value) { return value % 64 == 32; }

// A size that would round up to an odd multiple of 32 ends 4 below it; one that
// is such a multiple ends 4 above it.
constexpr int round_font_size(int size) {
    const int rounded = size % 4 != 0 ? round4(size) : 0;
    if (odd_multiple_of_32(size)) size += 4;
    if (odd_multiple_of_32(rounded)) return rounded - 4;
    return round4(size);
}

// The glyph bitmaps' row width in bits: the size raised to a multiple of 8.
constexpr int padded_size(int size) { return (size + 7) / 8 * 8; }

}  // namespace qz::screen
