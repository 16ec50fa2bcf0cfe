#include "screen/colour.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>

namespace qz::screen {
namespace {

constexpr std::size_t max_color_text = 15;  // what the colour buffer of 16 bytes holds

// Value of a token as the standard conversion reads it: blanks, a sign, digits up
// to the first other character; no digits gives 0. Saturates far outside 0..255.
long token_value(const std::string& token) { return std::strtol(token.c_str(), nullptr, 10); }

}  // namespace

std::optional<ColourWord> parse_color_string(const char* text) {
    if (text == nullptr) return std::nullopt;
    const std::size_t length = strnlen(text, max_color_text + 1);
    if (length > max_color_text) return std::nullopt;

    std::array<std::uint8_t, 3> rgb{};
    std::size_t count = 0;
    std::size_t start = 0;
    const std::string colour(text, length);
    while (start < colour.size()) {
        const std::size_t end = std::min(colour.find(',', start), colour.size());
        if (end > start) {
            if (count == rgb.size()) return std::nullopt;
            const long value = token_value(colour.substr(start, end - start));
            if (value < 0 || value > 255) return std::nullopt;
            rgb[count++] = static_cast<std::uint8_t>(value);
        }
        start = end + 1;
    }
    if (count != rgb.size()) return std::nullopt;
    return rgb_to_565(rgb[2], rgb[1], rgb[0]);
}

}  // namespace qz::screen
