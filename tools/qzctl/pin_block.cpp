#include "pin_block.h"

#include <array>

namespace qzctl {

std::optional<std::string> format0_pin(std::span<const std::uint8_t, 8> block,
                                       std::span<const std::uint8_t, 8> account) {
    std::array<int, 16> nibble{};
    for (std::size_t i = 0; i < block.size(); ++i) {
        const int field = block[i] ^ account[i];
        nibble[2 * i] = field >> 4;
        nibble[2 * i + 1] = field & 0x0F;
    }
    const auto length = static_cast<std::size_t>(nibble[1]);
    if (nibble[0] != 0 || length < 4 || length > 12) return std::nullopt;
    std::string pin;
    for (std::size_t place = 2; place < nibble.size(); ++place) {
        const bool digit_place = place < 2 + length;
        if (digit_place && nibble[place] > 9) return std::nullopt;
        if (!digit_place && nibble[place] != 0x0F) return std::nullopt;
        if (digit_place) pin += static_cast<char>('0' + nibble[place]);
    }
    return pin;
}

}  // namespace qzctl
