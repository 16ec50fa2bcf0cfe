// The terminal's answer to a card's Processing Options Data Object List.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace qz::bank {

// For each tag that the PDOL names (one byte, or two when the first has its low
// five bits set), appends the terminal's fixed value for it; a tag the terminal
// has no value for adds nothing. The length that the card asks for is not read:
// a value always has the terminal's own length. Returns the answer's length, or
// nothing when it would not fit `answer` (which is then partly written).
std::optional<std::size_t> BuildPdolAnswer(std::span<const std::uint8_t> pdol, std::span<std::uint8_t> answer);

}  // namespace qz::bank
