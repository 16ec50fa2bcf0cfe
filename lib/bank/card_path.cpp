#include "bank/card_path.h"

#include <algorithm>
#include <vector>

#include "cards/card_commands.h"
#include "cards/contact.h"
#include "cards/contactless.h"
#include "link/status.h"

namespace qz::bank {
namespace {

constexpr PathTraits contactless_traits{
    .directory = "2PAY.SYS.DDF01",
    .gpo_apdu_capacity = 256,
    .directory_record_required = false,
    .reads_processing_options = true,
    .extended_name = true,
};

constexpr PathTraits contact_traits{
    .directory = "1PAY.SYS.DDF01",
    .gpo_apdu_capacity = 40,
    .directory_record_required = true,
    .reads_processing_options = false,
    .extended_name = false,
};

int take_reply(std::span<const std::uint8_t> data, WorkArea& reply) {
    if (data.size() > reply.bytes.size()) return link::status_reply_too_long;
    std::ranges::copy(data, reply.bytes.begin());
    reply.length = data.size();
    return 0;
}

}  // namespace

const PathTraits& ContactlessPath::traits() const { return contactless_traits; }

int ContactlessPath::open() {
    std::array<std::uint8_t, cards::max_answer_length> uid{};
    std::array<std::uint8_t, cards::max_answer_length> answer{};
    unsigned char answer_length = 0;
    return cards::open_card(icdev_, 0, cards::Form::bytes, uid.data(), answer.data(), &answer_length);
}

int ContactlessPath::exchange(std::span<const std::uint8_t> apdu, WorkArea& reply) {
    reply.length = 0;
    cards::ExchangeProReply card_reply;
    const int result = cards::exchange_pro(icdev_, apdu, card_reply);
    return result != 0 ? result : take_reply(card_reply.data(), reply);
}

void ContactlessPath::close() noexcept {
    try {
        cards::deactivate(icdev_, cards::contactless_class);
    } catch (...) {
        // The walk ends with its own result whatever closing does.
    }
}

const PathTraits& ContactPath::traits() const { return contact_traits; }

int ContactPath::open() {
    std::array<std::uint8_t, cards::max_reset_answer_length> answer{};
    unsigned char answer_length = 0;
    return cards::activate_contact(icdev_, slot_, cards::power_on_parameter, cards::Form::bytes, answer.data(),
                                   &answer_length);
}

int ContactPath::exchange(std::span<const std::uint8_t> apdu, WorkArea& reply) {
    reply.length = 0;
    std::vector<std::uint8_t> response;
    const int result = cards::exchange_contact(icdev_, slot_, apdu, cards::binary_exchange_limits, response);
    return result != 0 ? result : take_reply(response, reply);
}

void ContactPath::close() noexcept {
    try {
        if (const auto card_class = cards::slot_class(slot_)) cards::deactivate(icdev_, *card_class);
    } catch (...) {
        // The walk ends with its own result whatever closing does.
    }
}

}  // namespace qz::bank
