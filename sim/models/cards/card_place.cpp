#include "sim/models/cards/card_place.h"

#include <stdexcept>

namespace qz::sim {

void CardPlace::insert(std::unique_ptr<Iso7816Card> card) {
    if (card_) throw std::logic_error("a card is there already");
    card_ = std::move(card);
    active_ = false;
}

std::unique_ptr<Iso7816Card> CardPlace::take() {
    active_ = false;
    return std::move(card_);
}

const Iso7816Card* CardPlace::activate() {
    if (!card_) return nullptr;
    card_->reset();
    active_ = true;
    return card_.get();
}

std::optional<std::vector<std::uint8_t>> CardPlace::transmit(std::span<const std::uint8_t> apdu) {
    if (!card_ || !active_) return std::nullopt;
    return card_->transmit(apdu);
}

}  // namespace qz::sim
