// Cards a person puts into the terminal and takes out again: the contactless
// field and the five contact slots. Each model that holds cards is a CardHolder:
// it tells which card descriptions are of its kind, takes such a card in, gives
// its cards back, and its cards show in the card state of class 0x00 (the
// terminal registers it when the model is added).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <nlohmann/json.hpp>

namespace qz::sim {

inline constexpr std::size_t contact_slot_count = 5;

enum class CardLocation { field, slot };

namespace card_state {
inline constexpr std::uint8_t card_in_field = 0x01;
inline constexpr std::uint8_t card_in_slot_0 = 0x02;
}  // namespace card_state

class CardHolder {
public:
    virtual ~CardHolder() = default;

    // Whether one of this model's cards is at the place; `slot` counts only for
    // CardLocation::slot.
    virtual bool holds(CardLocation location, std::size_t slot) const = 0;
    // Whether `card`, a card as a scenario describes it, is of this model's kind
    // and goes to `location`.
    virtual bool fits(const nlohmann::json& card, CardLocation location) const = 0;
    // Puts the card that `card` describes at the place (the caller has asked fits()
    // and found the place empty); ScenarioError naming `where` for a bad description.
    virtual void put(const nlohmann::json& card, CardLocation location, std::size_t slot, const std::string& where) = 0;
    // This model's cards leave the place.
    virtual void take_out(CardLocation location, std::size_t slot) = 0;

    // The card state bits of this model's cards: the field, and slot 0.
    std::uint8_t card_state() const {
        return static_cast<std::uint8_t>((holds(CardLocation::field, 0) ? card_state::card_in_field : 0) |
                                         (holds(CardLocation::slot, 0) ? card_state::card_in_slot_0 : 0));
    }
};

}  // namespace qz::sim
