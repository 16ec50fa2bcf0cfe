// TLV search over hostile card replies: whatever the tags and lengths say, the
// search stays inside the data and the value area, and a found value is a piece
// of the data that fits the area.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "bank/tlv.h"

// Input: the wanted tag's length (low 2 bits of byte 0, 1 to 4 bytes), the value
// area's size (byte 1, up to 255), the tag, then the data.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
    if (size < 2) return 0;
    const std::size_t tag_length = (input[0] & 3) + 1;
    const std::size_t capacity = input[1];
    if (size < 2 + tag_length) return 0;
    const std::span tag(input + 2, tag_length);
    const std::vector<std::uint8_t> data(input + 2 + tag_length, input + size);  // exact size for the sanitizer

    std::vector<std::uint8_t> value(capacity);
    std::uint16_t value_length = 0;
    if (qz::bank::TlvFind(data, tag, value, value_length) != qz::bank::TlvResult::found) return 0;
    if (value_length > capacity) __builtin_trap();
    const auto found = value.begin() + value_length;
    if (value_length > 0 && std::search(data.begin(), data.end(), value.begin(), found) == data.end())
        __builtin_trap();
    return 0;
}
