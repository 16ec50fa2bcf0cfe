#include "bank/pdol_answer.h"

#include <algorithm>
#include <array>

namespace qz::bank {
namespace {

// A tag as one number: a one-byte tag as it is, a two-byte tag as first * 256 + second.
using TagCode = std::uint16_t;

struct TerminalValue {
    TagCode tag;
    std::size_t size;
    std::array<std::uint8_t, 6> bytes;

    std::span<const std::uint8_t> value() const { return std::span(bytes).first(size); }
};

// Constant terminal data: no clock, no random number.
constexpr std::array<TerminalValue, 13> terminal_values{{
    {0x9F7A, 1, {0x00}},                              // VLP terminal support indicator
    {0x9F02, 6, {0x00, 0x00, 0x00, 0x00, 0x00, 0x00}},  // amount, authorised
    {0x5F2A, 2, {0x01, 0x56}},                        // transaction currency code
    {0x9F1A, 2, {0x01, 0x56}},                        // terminal country code
    {0x9F66, 4, {0xB0, 0x00, 0x00, 0x00}},            // terminal transaction qualifiers
    {0x9F03, 6, {0x00, 0x00, 0x00, 0x00, 0x00, 0x00}},  // amount, other
    {0x95, 5, {0x00, 0x00, 0x00, 0x00, 0x00}},        // terminal verification results
    {0x9A, 3, {0x15, 0x05, 0x08}},                    // transaction date YYMMDD
    {0x9C, 1, {0x00}},                                // transaction type
    {0x9F37, 4, {0x00, 0x00, 0x00, 0x00}},            // unpredictable number
    {0xDF60, 1, {0x01}},                              // private tag
    {0x9F21, 3, {0x18, 0x05, 0x08}},                  // transaction time HHMMSS
    {0xDF69, 1, {0x00}},                              // private tag
}};

constexpr std::uint8_t tag_number_mask = 0x1F;

}  // namespace

std::optional<std::size_t> BuildPdolAnswer(std::span<const std::uint8_t> pdol, std::span<std::uint8_t> answer) {
    std::size_t length = 0;
    for (std::size_t at = 0; at < pdol.size();) {
        const bool two_bytes = (pdol[at] & tag_number_mask) == tag_number_mask;
        const std::size_t tag_size = two_bytes ? 2 : 1;
        if (tag_size > pdol.size() - at) break;  // a tag cut off by the end names nothing
        const TagCode tag = two_bytes ? static_cast<TagCode>(pdol[at] << 8 | pdol[at + 1]) : pdol[at];
        const auto known = std::ranges::find(terminal_values, tag, &TerminalValue::tag);
        if (known != terminal_values.end()) {
            if (known->size > answer.size() - length) return std::nullopt;
            std::ranges::copy(known->value(), answer.begin() + static_cast<std::ptrdiff_t>(length));
            length += known->size;
        }
        at += tag_size + 1;  // the tag and the length the card asks for
    }
    return length;
}

}  // namespace qz::bank
