// The font engine on Windows: GDI's font for the GB2312 character set (the
// system picks its face), GBK decoded through code page 936.
#include "font_engine.h"

#include <windows.h>

#include <algorithm>
#include <memory>
#include <type_traits>
#include <vector>

#include "glyph_image.h"

namespace fontmaker {
namespace {

constexpr UINT gbk_code_page = 936;
constexpr int probe_size = 16;  // em height of the font that proves the character set is there
constexpr MAT2 identity{{0, 1}, {0, 0}, {0, 0}, {0, 1}};

struct DcDeleter {
    void operator()(HDC dc) const { DeleteDC(dc); }
};
struct FontDeleter {
    void operator()(HFONT font) const { DeleteObject(font); }
};
using UniqueDc = std::unique_ptr<std::remove_pointer_t<HDC>, DcDeleter>;
using UniqueFont = std::unique_ptr<std::remove_pointer_t<HFONT>, FontDeleter>;

// GGO_BITMAP rows start on 4-byte boundaries.
std::ptrdiff_t bitmap_pitch(UINT width) { return static_cast<std::ptrdiff_t>((width + 31) / 32 * 4); }

}  // namespace

struct FontEngine::State {
    // Declared first so that it goes after the device context that holds it.
    UniqueFont font;
    UniqueDc dc{CreateCompatibleDC(nullptr)};
    int size = 0;
    TEXTMETRICW metrics{};

    // Makes the font of em height `size` the context's own; false if the
    // system has none for the character set.
    bool select(int em) {
        if (em == size) return true;
        UniqueFont made(CreateFontW(-em, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, GB2312_CHARSET, OUT_DEFAULT_PRECIS,
                                    CLIP_DEFAULT_PRECIS, NONANTIALIASED_QUALITY, DEFAULT_PITCH | FF_DONTCARE, L""));
        if (!made || SelectObject(dc.get(), made.get()) == nullptr) return false;
        font = std::move(made);
        size = 0;
        if (GetTextCharset(dc.get()) != GB2312_CHARSET || !GetTextMetricsW(dc.get(), &metrics)) return false;
        size = em;
        return true;
    }
};

FontEngine::FontEngine() : state_(std::make_unique<State>()) {
    if (state_->dc && !state_->select(probe_size)) state_->dc.reset();
}

FontEngine::~FontEngine() = default;

bool FontEngine::good() const { return state_->dc != nullptr; }

std::optional<char32_t> FontEngine::decode(std::string_view character) {
    wchar_t unit = 0;
    if (MultiByteToWideChar(gbk_code_page, MB_ERR_INVALID_CHARS, character.data(), static_cast<int>(character.size()),
                            &unit, 1) != 1)
        return std::nullopt;
    return static_cast<char32_t>(unit);
}

void FontEngine::render(char32_t code, int size, int width, std::span<std::uint8_t> cell, std::size_t row_bytes) {
    State& state = *state_;
    if (!state.select(size)) return;
    const wchar_t unit = static_cast<wchar_t>(code);
    WORD index = 0;
    if (GetGlyphIndicesW(state.dc.get(), &unit, 1, &index, GGI_MARK_NONEXISTING_GLYPHS) != 1 || index == 0xFFFF)
        return;
    GLYPHMETRICS glyph{};
    const DWORD length =
        GetGlyphOutlineW(state.dc.get(), index, GGO_BITMAP | GGO_GLYPH_INDEX, &glyph, 0, nullptr, &identity);
    if (length == GDI_ERROR || length == 0 || glyph.gmBlackBoxX == 0) return;
    std::vector<std::uint8_t> bits(length);
    if (GetGlyphOutlineW(state.dc.get(), index, GGO_BITMAP | GGO_GLYPH_INDEX, &glyph, length, bits.data(), &identity) ==
        GDI_ERROR)
        return;
    const std::ptrdiff_t pitch = bitmap_pitch(glyph.gmBlackBoxX);
    const GlyphImage image{.rows = bits.data(),
                           .pitch = pitch,
                           .one_bit = true,
                           .height = static_cast<int>(std::min<std::size_t>(glyph.gmBlackBoxY, bits.size() / pitch)),
                           .width = static_cast<int>(glyph.gmBlackBoxX),
                           .left = static_cast<int>(glyph.gmptGlyphOrigin.x),
                           .top = static_cast<int>(glyph.gmptGlyphOrigin.y),
                           .advance = glyph.gmCellIncX};
    place_glyph(image, {state.metrics.tmAscent, state.metrics.tmDescent}, size, width, cell, row_bytes);
}

}  // namespace fontmaker
