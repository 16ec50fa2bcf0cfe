// Conversions between bytes and hexadecimal text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace qz::reader {

// Writes two upper-case digits per byte, high nibble first, to the first
// 2 * bytes.size() characters of `text` (which holds at least that many). No terminator.
void to_hex(std::span<const std::uint8_t> bytes, std::span<char> text);

// Converts pairs of digits (either case), high nibble first, to bytes: as many as both
// spans allow, min(text.size() / 2, bytes.size()). Stops at the first pair that holds a
// character other than a digit; the bytes before it are written, none after. Returns
// the number of bytes written.
std::size_t from_hex(std::span<const char> text, std::span<std::uint8_t> bytes);

}  // namespace qz::reader
