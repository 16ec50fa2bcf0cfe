// Identity card data for the tests: UCS-2 fields, text blocks and read replies.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "support/gbk.h"

namespace qz::test {

using Bytes = std::vector<std::uint8_t>;
using TextBlock = std::array<std::uint8_t, 256>;

// UCS-2 little-endian units of `text`, padded with blanks to `bytes` bytes.
Bytes ucs2_field(std::u16string_view text, std::size_t bytes);

// A text block with each field at its offset, blank-padded; unset fields are blanks.
struct Field {
    std::size_t offset;
    std::size_t bytes;
    std::u16string_view text;
};
TextBlock text_block(std::initializer_list<Field> fields);

// The ordinary card of the tests and the text the library must make of it.
TextBlock ordinary_card();
std::string ordinary_card_text();

// Read reply: 2 bytes, the module status, the lengths (finger length in mode 1
// only), the text block, photo and finger data. Lengths are those of the parts
// unless given.
struct ReadReply {
    int mode = 0;
    std::array<std::uint8_t, 3> status{0x00, 0x00, 0x90};
    TextBlock text{};
    Bytes photo{};
    Bytes finger{};
    int text_length = -1;
    int photo_length = -1;
    int finger_length = -1;
};
Bytes read_reply_data(const ReadReply& reply);

}  // namespace qz::test
