// A place that holds at most one microprocessor card: the contactless field or a
// contact slot. The card is active between an activation and a deactivation
// (powered in a slot, selected in the field), and only then takes APDUs.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "sim/models/cards/iso7816_card.h"

namespace qz::sim {

class CardPlace {
public:
    const Iso7816Card* card() const { return card_.get(); }
    bool active() const { return active_; }

    // Puts a card here; std::logic_error when a card is here already.
    void insert(std::unique_ptr<Iso7816Card> card);
    // The card leaves (nothing when there is none) and is no longer active.
    std::unique_ptr<Iso7816Card> take();

    // Resets the card and makes it active; nullptr when there is no card.
    const Iso7816Card* activate();
    void deactivate() { active_ = false; }
    // The card's response, or nothing when no active card is here.
    std::optional<std::vector<std::uint8_t>> transmit(std::span<const std::uint8_t> apdu);

private:
    std::unique_ptr<Iso7816Card> card_;
    bool active_ = false;
};

}  // namespace qz::sim
