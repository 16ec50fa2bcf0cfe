#include "cards/contact.h"

#include <algorithm>
#include <array>

#include "cards/card_commands.h"
#include "link/command.h"
#include "link/status.h"

namespace qz::cards {
namespace {

constexpr std::array<std::uint8_t, 5> speed_codes{0x10, 0x20, 0x30, 0x40, 0x50};

constexpr std::uint8_t sw_more_data = 0x61;
constexpr std::uint8_t sw_wrong_length = 0x6C;

std::array<std::uint8_t, 5> get_response(std::uint8_t length) { return {0x00, 0xC0, 0x00, 0x00, length}; }

}  // namespace

std::optional<std::uint8_t> speed_parameter(std::uint8_t baud, std::uint8_t activation) {
    if (std::find(speed_codes.begin(), speed_codes.end(), baud) == speed_codes.end()) return std::nullopt;
    return static_cast<std::uint8_t>(baud + activation);
}

int activate_contact(int icdev, unsigned slot, std::optional<std::uint8_t> parameter, Form form, void* atr,
                     unsigned char* atr_length) {
    if (atr == nullptr || atr_length == nullptr) return link::status_bad_argument;
    *atr_length = 0;
    const auto card_class = slot_class(slot);
    if (!card_class || !parameter) return link::status_bad_argument;
    link::Reply<max_reset_answer_length> reply;
    const int result = link::transact(icdev, link::Payload{*card_class, instruction_activate, *parameter}, reply);
    if (result != 0) return result;
    *atr_length = static_cast<unsigned char>(hand_over(form, reply.data(), atr));
    return 0;
}

int exchange_contact(int icdev, unsigned slot, std::span<const std::uint8_t> command, const ExchangeLimits& limits,
                     std::vector<std::uint8_t>& response) {
    response.clear();
    std::vector<std::uint8_t> apdu(command.begin(), command.end());
    std::vector<std::uint8_t> gathered;  // data of the 61xx answers so far
    std::vector<std::uint8_t> area(limits.response);
    for (int round = 0;; ++round) {
        const auto card_class = slot_class(slot);
        if (!card_class || apdu.empty() || apdu.size() > limits.apdu) return link::status_bad_argument;
        int length = 0;
        const int result = link::dev_transact(
            icdev, link::Payload{*card_class, instruction_exchange, 0x00}.add(apdu).bytes(), length, area);
        if (result != 0) return result;
        if (length < 2) return link::status_reply_too_short;  // no status word

        const std::span reply = std::span(area).first(static_cast<std::size_t>(length));
        const std::uint8_t sw1 = reply[reply.size() - 2];
        const std::uint8_t sw2 = reply.back();
        const bool follow = (sw1 == sw_more_data || sw1 == sw_wrong_length) && round < max_followed_rounds;
        if (sw1 == 0x90 && sw2 == 0x00) {
            if (gathered.size() + reply.size() > limits.response) return link::status_reply_too_long;
            response = std::move(gathered);
            response.insert(response.end(), reply.begin(), reply.end());
            return 0;
        }
        if (!follow) {
            response.assign(reply.begin(), reply.end());
            return 0;
        }
        if (sw1 == sw_more_data) {
            // Data in front of 61xx count only from a reply of 5 bytes on.
            if (reply.size() > 4) {
                if (gathered.size() + reply.size() - 2 > limits.response) return link::status_reply_too_long;
                gathered.insert(gathered.end(), reply.begin(), reply.end() - 2);
            }
            const auto next = get_response(sw2);
            apdu.assign(next.begin(), next.end());
        } else {
            apdu.back() = sw2;
        }
    }
}

}  // namespace qz::cards
