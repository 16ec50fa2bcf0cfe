// Sessions with a microprocessor card in the contactless field: activation, the
// answer kept for Reset_Card, single APDU exchanges.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "cards/card_output.h"
#include "link/command.h"

namespace qz::cards {

// Longest answer to select that an activation reply can carry (its length is one byte).
inline constexpr std::size_t max_answer_length = 255;

// Activates the card in the field (C1 30 00 `mode`, `mode` 0 or 1)
// and hands over its UID (length not reported) and its answer to select, with
// `*ats_length` in the units of `form`. A reply whose UID or answer runs past its
// end, or an answer over `ats_room` units, gives status_reply_too_long.
int open_card(int icdev, std::uint8_t mode, Form form, void* uid, void* ats, unsigned char* ats_length,
              std::size_t ats_room = max_answer_length);

// The answer that the last Open_Card kept, process-wide.
struct SavedAnswer {
    static constexpr std::size_t capacity = 100;
    bool valid = false;  // an Open_Card has succeeded since load; never cleared
    std::uint8_t length = 0;
    std::array<std::uint8_t, capacity> bytes{};
};
SavedAnswer& saved_answer();

// Open_Card: open_card keeping the answer (at most 100 bytes). The read time-out
// stays at 1000 ms afterwards.
int open_card_keeping_answer(int icdev, std::uint8_t mode, unsigned char* uid);

// Reset_Card: the kept answer, nothing sent; -53 before any Open_Card succeeded.
inline constexpr int status_no_saved_answer = -53;
int kept_answer(unsigned char* ats, unsigned char* ats_length);

inline constexpr std::size_t exchange_pro_apdu_limit = 297;
inline constexpr std::size_t exchange_pro_reply_limit = 300;
using ExchangeProReply = link::Reply<exchange_pro_reply_limit>;

// One APDU (1 to 297 bytes, else -19) to the card in the field, C1 31 00 and the
// APDU; the reply data end with the card's status words, which are left to the caller.
int exchange_contactless(int icdev, std::span<const std::uint8_t> apdu, ExchangeProReply& reply);

// ExchangePro: exchange_contactless with its traffic in the log.
int exchange_pro(int icdev, std::span<const std::uint8_t> apdu, ExchangeProReply& reply);

}  // namespace qz::cards
