#include "cards/card_output.h"

#include <algorithm>
#include <cstring>

#include "reader/hex.h"

namespace qz::cards {

std::size_t hand_over(Form form, std::span<const std::uint8_t> data, void* out) {
    if (form == Form::bytes) {
        std::copy(data.begin(), data.end(), static_cast<std::uint8_t*>(out));
        return data.size();
    }
    const std::size_t digits = 2 * data.size();
    char* text = static_cast<char*>(out);
    reader::to_hex(data, {text, digits});
    text[digits] = '\0';
    return digits;
}

std::optional<std::vector<std::uint8_t>> bytes_of_hex(const char* text) {
    const std::span digits(text, std::strlen(text));
    std::vector<std::uint8_t> bytes(digits.size() / 2);
    if (reader::from_hex(digits, bytes) != bytes.size()) return std::nullopt;
    return bytes;
}

}  // namespace qz::cards
