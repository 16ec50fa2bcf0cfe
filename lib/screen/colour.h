// Colours of the screen: the 5-6-5 colour word (blue in the top bits, red in the
// bottom ones, sent high byte first) and the "r,g,b" colour string of callers.
#pragma once

#include <cstdint>
#include <optional>

namespace qz::screen {

using ColourWord = std::uint16_t;

constexpr ColourWord rgb_to_565(std::uint8_t blue, std::uint8_t green, std::uint8_t red) {
    return static_cast<ColourWord>(((blue >> 3) << 11) | ((green >> 2) << 5) | (red >> 3));
}

// Three decimal numbers 0..255, red, green, blue, separated by runs of commas;
// each read like the standard text-to-integer conversion. Nothing for any other
// count of numbers, a number out of range or a text of more than 15 characters.
std::optional<ColourWord> parse_color_string(const char* text);

}  // namespace qz::screen
