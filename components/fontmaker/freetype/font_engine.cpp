// The font engine on systems with FreeType and iconv: the CJK font file the
// build found, GBK decoded by iconv.
#include "font_engine.h"

#include <array>
#include <iconv.h>

#include <ft2build.h>
#include FT_FREETYPE_H

#include "glyph_image.h"

namespace fontmaker {
namespace {

// The collection's third face carries hand-drawn bitmaps for the small sizes,
// which one bit a pixel shows far better than a cut-off outline.
constexpr FT_Long sharp_face = 2;
const auto no_converter = reinterpret_cast<iconv_t>(-1);

}  // namespace

struct FontEngine::State {
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    int size = 0;
    iconv_t converter = iconv_open("UTF-32LE", "GBK");

    State() {
        if (FT_Init_FreeType(&library) != 0) {
            library = nullptr;
            return;
        }
        if (FT_New_Face(library, QZ_32_CJK_FONT, sharp_face, &face) != 0) face = nullptr;
    }
    ~State() {
        if (face != nullptr) FT_Done_Face(face);
        if (library != nullptr) FT_Done_FreeType(library);
        if (converter != no_converter) iconv_close(converter);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;
};

FontEngine::FontEngine() : state_(std::make_unique<State>()) {}

FontEngine::~FontEngine() = default;

bool FontEngine::good() const { return state_->face != nullptr; }

std::optional<char32_t> FontEngine::decode(std::string_view character) {
    if (state_->converter == no_converter) return std::nullopt;
    std::array<char, 2> in{};
    std::array<unsigned char, 8> out{};
    character.copy(in.data(), in.size());
    char* in_at = in.data();
    std::size_t in_left = character.size();
    char* out_at = reinterpret_cast<char*>(out.data());
    std::size_t out_left = out.size();
    iconv(state_->converter, nullptr, nullptr, nullptr, nullptr);
    if (iconv(state_->converter, &in_at, &in_left, &out_at, &out_left) == static_cast<std::size_t>(-1) ||
        out_left != 4)
        return std::nullopt;
    return static_cast<char32_t>(out[0] | (out[1] << 8) | (out[2] << 16) | (out[3] << 24));
}

void FontEngine::render(char32_t code, int size, int width, std::span<std::uint8_t> cell, std::size_t row_bytes) {
    FT_Face face = state_->face;
    if (size != state_->size) {
        if (FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(size)) != 0) return;
        state_->size = size;
    }
    const FT_UInt index = FT_Get_Char_Index(face, code);
    if (index == 0 || FT_Load_Glyph(face, index, FT_LOAD_RENDER) != 0) return;
    const FT_GlyphSlot slot = face->glyph;
    const FT_Bitmap& bitmap = slot->bitmap;
    const GlyphImage image{.rows = bitmap.buffer,
                           .pitch = bitmap.pitch,
                           .one_bit = bitmap.pixel_mode == FT_PIXEL_MODE_MONO,
                           .height = static_cast<int>(bitmap.rows),
                           .width = static_cast<int>(bitmap.width),
                           .left = slot->bitmap_left,
                           .top = slot->bitmap_top,
                           .advance = static_cast<int>(slot->advance.x >> 6)};
    place_glyph(image, {face->size->metrics.ascender, -face->size->metrics.descender}, size, width, cell, row_bytes);
}

}  // namespace fontmaker
