// How the CPU card exports take and give data: bytes as they are, or hex text
// (the _hex twins).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace qz::cards {

enum class Form { bytes, hex };

// Writes `data` to a caller's buffer: the bytes, or their upper-case hex text and
// a terminator. Returns the count the caller is told: bytes, or characters.
std::size_t hand_over(Form form, std::span<const std::uint8_t> data, void* out);

// The count hand_over reports for `size` bytes.
constexpr std::size_t handed_over_count(Form form, std::size_t size) { return form == Form::hex ? 2 * size : size; }

// The bytes of a terminated hex text, two digits a byte, a last odd digit dropped;
// nothing when a digit pair holds another character.
std::optional<std::vector<std::uint8_t>> bytes_of_hex(const char* text);

}  // namespace qz::cards
