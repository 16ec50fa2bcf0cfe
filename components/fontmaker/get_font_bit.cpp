// The component's one entry: the row's characters, one glyph each, back to back.
#include <mutex>
#include <string_view>

#include "font_bits.h"
#include "font_engine.h"
#include "glyph_cache.h"

namespace {

constexpr int max_size = 255;

// The font is opened on first use and kept: the component is never unloaded.
struct Fonts {
    std::mutex lock;
    fontmaker::FontEngine engine;
    fontmaker::GlyphCache cache;
};

Fonts& fonts() {
    static Fonts shared;
    return shared;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int getFontBit(const char* row, int size, unsigned char* buffer,
                                                                 int* bitLen, int* textCount, int* fontHeight) {
    if (row == nullptr || buffer == nullptr || bitLen == nullptr || textCount == nullptr || fontHeight == nullptr ||
        size < 1 || size > max_size)
        return 0;
    Fonts& shared = fonts();
    const std::lock_guard guard(shared.lock);
    if (!shared.engine.good()) return 0;

    const auto rows = static_cast<std::size_t>(size);
    const std::size_t row_bytes = (rows + 7) / 8;
    const std::size_t glyph_bytes = rows * row_bytes;
    const std::string_view text(row);
    std::size_t glyphs = 0;
    for (std::size_t at = 0; at < text.size(); ++glyphs) {
        const bool wide = (static_cast<unsigned char>(text[at]) & 0x80) != 0;
        const std::string_view character = text.substr(at, wide ? 2 : 1);
        at += character.size();
        const std::span cell(buffer + glyphs * glyph_bytes, glyph_bytes);
        const auto code = wide && character.size() == 1 ? std::nullopt : shared.engine.decode(character);
        if (code) shared.cache.draw(shared.engine, *code, size, wide ? size : size / 2, cell, row_bytes);
    }
    *bitLen = static_cast<int>(glyphs * glyph_bytes);
    *textCount = static_cast<int>(glyphs);
    *fontHeight = size;
    return 1;
}
