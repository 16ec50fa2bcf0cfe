// The system's font engine under the component: GBK characters to code points,
// and glyph images of a font that covers GB2312. One implementation a system
// (FreeType with iconv, or GDI), chosen by the build.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace fontmaker {

class FontEngine {
public:
    FontEngine();
    ~FontEngine();
    FontEngine(const FontEngine&) = delete;
    FontEngine& operator=(const FontEngine&) = delete;

    // Whether the font could be opened; nothing is drawn otherwise.
    bool good() const;

    // The code point of one character of one or two bytes; nothing if GBK has none.
    std::optional<char32_t> decode(std::string_view character);

    // Draws `code` with an em height of `size` pixels into a blank cell `width`
    // pixels wide (see glyph_image.h); a character the font lacks stays blank.
    void render(char32_t code, int size, int width, std::span<std::uint8_t> cell, std::size_t row_bytes);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace fontmaker
