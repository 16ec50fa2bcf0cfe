// Search of BER-TLV data as bank cards return it.
#pragma once

#include <cstdint>
#include <span>

namespace qz::bank {

enum class TlvResult { found = 0, not_found = 1 };

// Looks for the first item whose leading bytes equal `tag`, depth first through
// constructed items (bit 5 of the first tag byte) of any depth; a constructed item
// that itself matches is taken as it stands. Tags of any length, lengths in short
// and long form. No filler is skipped: 00 and FF read as tags, and a trailing 90 00
// reads as an item of length 0.
//
// Found: the value is in `value` and its length in `value_length`. Not found also
// covers an empty `tag`, any item whose tag, length or value runs past the end of
// the data (or of the constructed item around it), a value longer than `value`
// holds, a matching item of length 0 that ends its data, and a nesting deeper than
// memory allows; for the value too long and the empty value at the end
// `value_length` is still set to the item's length.
TlvResult TlvFind(std::span<const std::uint8_t> data, std::span<const std::uint8_t> tag,
                  std::span<std::uint8_t> value, std::uint16_t& value_length);

}  // namespace qz::bank
