// The answer to reset of a contact card, as far as a reader needs it to pick
// the transmission protocol.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace qz::sim {

// The first protocol the ATR offers (0 for T=0, 1 for T=1, ...; T=0 when no TD1
// names one), or nothing when the ATR is malformed: a wrong TS, or a length that
// disagrees with the interface bytes, historical bytes and TCK it announces.
std::optional<unsigned> atr_protocol(std::span<const std::uint8_t> atr);

}  // namespace qz::sim
