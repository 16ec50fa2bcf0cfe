// Sessions with a microprocessor card in one of the five contact slots: activation
// and the APDU exchange that follows the card's 61xx and 6Cxx answers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "cards/card_output.h"

namespace qz::cards {

// Longest answer to reset that an activation hands over.
inline constexpr std::size_t max_reset_answer_length = 100;

// `parameter` of an activation: bit 0 tells a reset from a power-on, the high
// nibble carries a speed code (0x10 to 0x50). Nothing for any other `baud`.
inline constexpr std::uint8_t power_on_parameter = 0x00;
inline constexpr std::uint8_t reset_parameter = 0x01;
std::optional<std::uint8_t> speed_parameter(std::uint8_t baud, std::uint8_t activation);

// Activates the card in `slot` (class 30 `parameter`) and hands over its answer to
// reset, `*atr_length` in the units of `form`. `*atr_length` is 0 unless it succeeds;
// a `slot` above 4 or no `parameter` gives -19.
int activate_contact(int icdev, unsigned slot, std::optional<std::uint8_t> parameter, Form form, void* atr,
                     unsigned char* atr_length);

// Sizes of one contact exchange: the longest APDU, and the longest reply, which
// also bounds the whole response gathered over 61xx answers.
struct ExchangeLimits {
    std::size_t apdu;
    std::size_t response;
};
inline constexpr ExchangeLimits binary_exchange_limits{1021, 1024};
inline constexpr ExchangeLimits hex_exchange_limits{2045, 2048};

// Sends `command` to the card in `slot` (class 31 00 and the APDU) and follows the
// card: 61xx gathers the data and asks GET RESPONSE, 6Cxx repeats the APDU with xx
// as its last byte, for at most max_followed_rounds further commands. On 0,
// `response` holds the gathered data and the final reply (or only the final reply
// when it is no 9000), which ends with the card's status words if it has 2 bytes.
// -19 for a `slot` above 4 or an APDU empty or over the limit; status_reply_too_long
// when the response would outgrow the limit. `response` is empty unless 0 is returned.
int exchange_contact(int icdev, unsigned slot, std::span<const std::uint8_t> command, const ExchangeLimits& limits,
                     std::vector<std::uint8_t>& response);

}  // namespace qz::cards
