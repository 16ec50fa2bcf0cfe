#include "sim/models/cards/atr.h"

#include <bit>
#include <cstddef>

namespace qz::sim {

std::optional<unsigned> atr_protocol(std::span<const std::uint8_t> atr) {
    constexpr std::uint8_t direct_convention = 0x3B;
    constexpr std::uint8_t inverse_convention = 0x3F;
    if (atr.size() < 2 || (atr[0] != direct_convention && atr[0] != inverse_convention)) return std::nullopt;

    const std::size_t historical = atr[1] & 0x0F;
    unsigned present = atr[1] >> 4;  // which of TAi, TBi, TCi, TDi follow
    std::size_t position = 2;
    std::optional<unsigned> first;
    bool check_byte = false;  // any protocol but T=0 announced: a TCK ends the ATR
    while (true) {
        position += static_cast<std::size_t>(std::popcount(present & 0x07u));
        if ((present & 0x08u) == 0) break;
        if (position >= atr.size()) return std::nullopt;
        const std::uint8_t td = atr[position++];
        const unsigned protocol = td & 0x0Fu;
        if (!first) first = protocol;
        check_byte = check_byte || protocol != 0;
        present = td >> 4;
    }
    if (atr.size() != position + historical + (check_byte ? 1 : 0)) return std::nullopt;
    return first.value_or(0);
}

}  // namespace qz::sim
