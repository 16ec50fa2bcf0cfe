#include "sim/models/cards/iso7816_card.h"
#include "sim/core/recent_history.h"

#include <algorithm>
#include <stdexcept>

namespace qz::sim {
namespace {

constexpr std::uint8_t get_response_class = 0x00;
constexpr std::uint8_t get_response_instruction = 0xC0;

std::vector<std::uint8_t> status_only(std::uint16_t sw) { return response_bytes({}, sw); }

// 61xx and 6Cxx carry a length of 256 as 00.
std::uint16_t with_length(std::uint16_t sw, std::size_t length) {
    return static_cast<std::uint16_t>(sw | (length & 0xFF));
}

}  // namespace

Iso7816Card::Iso7816Card(CardFace face, ResponseRules rules, std::size_t chunk,
                         std::unique_ptr<CardApplication> application)
    : face_(std::move(face)), rules_(rules), chunk_(chunk), application_(std::move(application)) {
    if (chunk_ == 0 || chunk_ > max_short_response) throw std::invalid_argument("GET RESPONSE chunk out of 1..256");
}

void Iso7816Card::reset() {
    waiting_.clear();
    application_->reset();
}

std::vector<std::uint8_t> Iso7816Card::transmit(std::span<const std::uint8_t> bytes) {
    keep_recent(received_, std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
    const auto apdu = parse_apdu(bytes);
    if (!apdu) {
        waiting_.clear();
        return status_only(card_sw::wrong_length);
    }
    if (apdu->cla == get_response_class && apdu->ins == get_response_instruction) return get_response(*apdu);
    waiting_.clear();
    return deliver(*apdu, application_->process(*apdu));
}

std::vector<std::uint8_t> Iso7816Card::deliver(const Apdu& apdu, CardResponse response) {
    if (response.data.empty()) return status_only(response.sw);
    waiting_ = std::move(response.data);
    waiting_sw_ = response.sw;
    if (rules_ == ResponseRules::direct) return hand_out(std::min(apdu.le.value_or(0), waiting_.size()));

    // T=0 carries no Le behind command data: the card can only announce its answer.
    if (apdu.has_data() || !apdu.le) return hand_out(0);
    if (*apdu.le > waiting_.size()) {
        const std::size_t exact = waiting_.size();
        waiting_.clear();
        return status_only(with_length(card_sw::wrong_le, exact));
    }
    return hand_out(*apdu.le);
}

std::vector<std::uint8_t> Iso7816Card::get_response(const Apdu& apdu) {
    if (waiting_.empty()) return status_only(card_sw::conditions_not_satisfied);
    if (apdu.p1_p2() != 0) return status_only(card_sw::incorrect_p1_p2);
    std::size_t wanted = apdu.le.value_or(max_short_response);
    if (wanted > announced()) {
        if (rules_ == ResponseRules::t0) return status_only(with_length(card_sw::wrong_le, announced()));
        wanted = announced();
    }
    return hand_out(wanted);
}

std::vector<std::uint8_t> Iso7816Card::hand_out(std::size_t count) {
    std::vector<std::uint8_t> data(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(count));
    waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(count));
    if (waiting_.empty()) return response_bytes(data, waiting_sw_);
    return response_bytes(data, with_length(card_sw::more_data, announced()));
}

std::size_t Iso7816Card::announced() const { return std::min(waiting_.size(), chunk_); }

}  // namespace qz::sim
