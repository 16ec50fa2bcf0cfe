#include "glyph_renderer.h"

#include <algorithm>

namespace fontmaker {
namespace {

constexpr int ink_threshold = 128;  // of a grey level 0..255
// The collection's third face carries hand-drawn bitmaps for the small sizes,
// which one bit a pixel shows far better than a cut-off outline.
constexpr FT_Long sharp_face = 2;
constexpr std::size_t cache_limit = 8u << 20;  // bytes of cached glyphs before the cache starts afresh

bool ink_at(const FT_Bitmap& bitmap, int row, int column) {
    const unsigned char* line = bitmap.buffer + row * bitmap.pitch;
    if (bitmap.pixel_mode == FT_PIXEL_MODE_MONO) return (line[column / 8] >> (7 - column % 8)) & 1;
    return line[column] >= ink_threshold;
}

}  // namespace

GlyphRenderer::GlyphRenderer(const char* font_file) {
    if (FT_Init_FreeType(&library_) != 0) {
        library_ = nullptr;
        return;
    }
    if (FT_New_Face(library_, font_file, sharp_face, &face_) != 0) face_ = nullptr;
}

GlyphRenderer::~GlyphRenderer() {
    if (face_ != nullptr) FT_Done_Face(face_);
    if (library_ != nullptr) FT_Done_FreeType(library_);
}

void GlyphRenderer::draw(char32_t code, int size, int width, std::span<std::uint8_t> cell, std::size_t row_bytes) {
    const std::vector<std::uint8_t>& glyph = cached(code, size, width, row_bytes);
    const std::size_t count = std::min(glyph.size(), cell.size());
    for (std::size_t at = 0; at < count; ++at) cell[at] |= glyph[at];
}

const std::vector<std::uint8_t>& GlyphRenderer::cached(char32_t code, int size, int width, std::size_t row_bytes) {
    // size and width are below 256, the row length follows from the size
    const std::uint64_t key = (std::uint64_t{code} << 16) | (static_cast<std::uint64_t>(size & 0xFF) << 8) |
                              static_cast<std::uint64_t>(width & 0xFF);
    if (const auto found = glyphs_.find(key); found != glyphs_.end()) return found->second;
    std::vector<std::uint8_t> glyph(static_cast<std::size_t>(size) * row_bytes);
    render(code, size, width, glyph, row_bytes);
    if (cached_bytes_ + glyph.size() > cache_limit) {
        glyphs_.clear();
        cached_bytes_ = 0;
    }
    cached_bytes_ += glyph.size();
    return glyphs_.emplace(key, std::move(glyph)).first->second;
}

void GlyphRenderer::render(char32_t code, int size, int width, std::span<std::uint8_t> cell, std::size_t row_bytes) {
    if (size != size_) {
        if (FT_Set_Pixel_Sizes(face_, 0, static_cast<FT_UInt>(size)) != 0) return;
        size_ = size;
    }
    const FT_UInt index = FT_Get_Char_Index(face_, code);
    if (index == 0 || FT_Load_Glyph(face_, index, FT_LOAD_RENDER) != 0) return;
    const FT_GlyphSlot slot = face_->glyph;
    const FT_Bitmap& bitmap = slot->bitmap;

    // Baseline where the font's ascent over its whole height puts it in the cell.
    const long ascent = face_->size->metrics.ascender;
    const long height = ascent - face_->size->metrics.descender;
    const int baseline = height > 0 ? static_cast<int>(ascent * size / height) : size;
    const int top = baseline - slot->bitmap_top;
    const int left = (width - static_cast<int>(slot->advance.x >> 6)) / 2 + slot->bitmap_left;

    for (int row = 0; row < static_cast<int>(bitmap.rows); ++row) {
        const int y = top + row;
        if (y < 0 || y >= size) continue;
        for (int column = 0; column < static_cast<int>(bitmap.width); ++column) {
            const int x = left + column;
            if (x < 0 || x >= width || !ink_at(bitmap, row, column)) continue;
            cell[static_cast<std::size_t>(y) * row_bytes + static_cast<std::size_t>(x / 8)] |=
                static_cast<std::uint8_t>(0x80 >> (x % 8));
        }
    }
}

}  // namespace fontmaker
