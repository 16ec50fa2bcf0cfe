// One glyph of the CJK font drawn into a cell of one-bit rows.
#pragma once

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include <ft2build.h>
#include FT_FREETYPE_H

namespace fontmaker {

class GlyphRenderer {
public:
    // Opens the font file; good() tells whether that worked.
    explicit GlyphRenderer(const char* font_file);
    ~GlyphRenderer();
    GlyphRenderer(const GlyphRenderer&) = delete;
    GlyphRenderer& operator=(const GlyphRenderer&) = delete;

    bool good() const { return face_ != nullptr; }

    // Draws `code` with a height of `size` pixels, centred across a cell
    // `width` pixels wide; rows of `row_bytes` bytes, top bit leftmost. Pixels
    // outside the cell are dropped; a character the font lacks stays blank.
    // Glyphs drawn once are kept, so text that repeats characters is cheap.
    void draw(char32_t code, int size, int width, std::span<std::uint8_t> cell, std::size_t row_bytes);

private:
    // The first `size` rows of a cell, as `render` draws them on a blank one.
    const std::vector<std::uint8_t>& cached(char32_t code, int size, int width, std::size_t row_bytes);
    void render(char32_t code, int size, int width, std::span<std::uint8_t> cell, std::size_t row_bytes);

    std::unordered_map<std::uint64_t, std::vector<std::uint8_t>> glyphs_;
    std::size_t cached_bytes_ = 0;
    FT_Library library_ = nullptr;
    FT_Face face_ = nullptr;
    int size_ = 0;
};

}  // namespace fontmaker
