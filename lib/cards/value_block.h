// Value blocks of the sector cards: a 32-bit value kept three times (once
// inverted) with the block's own number, which the card increments, decrements,
// transfers and restores.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "cards/rf_memory.h"

namespace qz::cards::rf {

using Block = std::array<std::uint8_t, block_size>;

inline constexpr int status_value_unreadable = -49;
inline constexpr int status_value_overflow = -50;
inline constexpr int status_value_underflow = -51;
// The largest value an increment may leave.
inline constexpr std::uint32_t max_value = 0x7FFFFFFF;

// The block holding `value`, least significant byte first, at `block`.
Block value_block(std::uint32_t value, std::uint8_t block);

// The value of `bytes` when they have the value block format: the inverted copy
// differs from the value, the second copy equals it, the address bytes agree.
std::optional<std::uint32_t> block_value(std::span<const std::uint8_t, block_size> bytes);

// Reads `block` into `value`: status_value_unreadable when the read fails,
// refused when the block has no value block format.
int read_value(int icdev, std::uint8_t block, std::uint32_t& value);

enum class Change { increment, decrement };

// Reads the value, refuses an increment past max_value (status_value_overflow) or
// a decrement below zero (status_value_underflow) with nothing sent, else sends the
// change and transfers it back to `block`.
int change_value(int icdev, std::uint8_t block, Change change, std::uint32_t amount);

}  // namespace qz::cards::rf
