// The reply of the identity card read: module status, lengths, the text block of
// fixed fields, photo and finger data, and the one result text made from them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "identity/name_tables.h"

namespace qz::identity {

// Size of the read reply area; a longer reply is refused by the link.
inline constexpr std::size_t read_reply_capacity = 3096;
inline constexpr std::size_t text_block_size = 256;
// The finger text area holds 2060 bytes: hex of at most 1029 bytes and a terminator.
inline constexpr std::size_t max_finger_bytes = 1029;

// A read reply cut into its parts. Lengths come from the terminal: every part
// stays inside the reply, and the text block reads zeros where the reply ends.
struct ReplyParts {
    std::array<std::uint8_t, 3> module_status{};
    std::array<std::uint8_t, text_block_size> text_block{};
    std::span<const std::uint8_t> photo;   // as much of the announced photo as the reply holds
    std::span<const std::uint8_t> finger;  // likewise, and at most max_finger_bytes
};

// `mode` 0: text and photo; 1: text, photo and finger data (one more length field).
ReplyParts split_reply(int mode, std::span<const std::uint8_t> reply);

// Kind told by the card type field: "I" is a foreigner's card.
RecordKind record_kind(std::span<const std::uint8_t, text_block_size> text_block);

// All fields of the text block, decoded, each followed by "|", behind the kind
// number: 11 fields for an ordinary card, 13 for a foreigner's. GBK, nothing escaped.
std::string card_text(std::span<const std::uint8_t, text_block_size> text_block);

// Upper-case hexadecimal text of the finger data.
std::string finger_text(std::span<const std::uint8_t> finger);

}  // namespace qz::identity
