// Text conversion into GBK, the form of every text that the library hands out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace qz::platform {

// Converts UCS-2 little-endian code units, up to the first zero unit or the end of
// `ucs2le`, into GBK in `out`, and stops before the first character that would not
// fit whole. A code unit without a GBK form becomes '?'. Writes no terminator and
// returns the number of bytes written.
std::size_t ucs2le_to_gbk(std::span<const std::uint8_t> ucs2le, std::span<char> out);

}  // namespace qz::platform
