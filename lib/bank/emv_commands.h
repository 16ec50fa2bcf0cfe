// The commands that the walk sends to a bank card, and how it reads their replies.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "bank/card_path.h"

namespace qz::bank {

// The card's status word (SW1 SW2), or nothing when the exchange failed, the reply
// was shorter than 2 bytes or the command does not fit its APDU buffer.
using StatusWord = std::optional<std::uint16_t>;
inline constexpr std::uint16_t sw_success = 0x9000;

constexpr bool succeeded(StatusWord status) { return status == sw_success; }

// Each command puts its final reply in `reply`. A reply whose first byte is 61 is
// followed by GET RESPONSE (00 C0 00 00 Le) with Le = its second byte, replacing
// the reply; a READ RECORD reply whose first byte is 6C is repeated with that Le.
// At most cards::max_followed_rounds such commands follow; the reply at hand then
// counts as it stands.

// SELECT by name: 00 A4 04 00 Lc name 00, the name at most 34 bytes.
StatusWord select_by_name(CardPath& path, std::span<const std::uint8_t> name, WorkArea& reply);
// SELECT of the path's payment directory.
StatusWord select_directory(CardPath& path, WorkArea& reply);
// GET PROCESSING OPTIONS: 80 A8 00 00 Lc 83 n answer 00, within the path's room.
StatusWord get_processing_options(CardPath& path, std::span<const std::uint8_t> pdol_answer, WorkArea& reply);
// READ RECORD: 00 B2 record P2 Le.
StatusWord read_record(CardPath& path, std::uint8_t record, std::uint8_t p2, std::uint8_t le, WorkArea& reply);

}  // namespace qz::bank
