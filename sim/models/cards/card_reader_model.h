// The card readers of the terminal for microprocessor cards: the contactless
// field (class C1) and the contact slots 0 to 4 (classes C0, C2, C3, C4, C5).
// Only instructions 30 to 32 are taken, so the memory card and PIN pad commands
// of the same classes stay free for their own models.
//
//   C1 30 00 mode    activate the card in the field (mode 0 or 1: either finds it);
//                    reply: SAK, UID length, UID, ATS length, ATS
//   Cx 30 p          activate the card in a slot: p bit 0 reset (else power on), high
//                    nibble a speed code 0 to 5 (the ATR is the same at every speed);
//                    reply: the ATR
//   Cx 31 00 APDU    one APDU to the active card; reply: its response and status words
//   Cx 32 00         deactivate (a slot powers down, the field lets the card go)
//
// The cards show in the card state of class 0x00 instruction 07 (card_holder.h):
// bit 0 set while a card is in the field, bit 1 while one is in slot 0; the other
// slots hold modules and do not show. A card description without "type" is a
// microprocessor card (the memory cards name their type).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "sim/models/cards/card_config.h"
#include "sim/models/cards/card_place.h"
#include "sim/core/card_holder.h"
#include "sim/core/terminal.h"

namespace qz::sim {

namespace status {
// No card in the field or the slot addressed.
inline constexpr std::uint16_t no_card = 0x6401;
// The card there has not been activated since it came or was deactivated.
inline constexpr std::uint16_t card_inactive = 0x6402;
}  // namespace status

class CardReaderModel final : public DeviceModel, public CardHolder {
public:
    explicit CardReaderModel(const CardsConfig& cards);

    std::vector<Route> routes() const override;
    Reply handle(const Command& command) override;

    // Cards come and go; `slot` counts only for CardLocation::slot. Inserting where a
    // card is already throws std::logic_error.
    void insert(std::unique_ptr<Iso7816Card> card, CardLocation location, std::size_t slot = 0);
    std::unique_ptr<Iso7816Card> take(CardLocation location, std::size_t slot = 0);
    const CardPlace& place(CardLocation location, std::size_t slot = 0) const;

    bool holds(CardLocation location, std::size_t slot) const override { return place(location, slot).card(); }
    bool fits(const nlohmann::json& card, CardLocation location) const override;
    void put(const nlohmann::json& card, CardLocation location, std::size_t slot, const std::string& where) override;
    void take_out(CardLocation location, std::size_t slot) override { take(location, slot); }

private:
    CardPlace& place_of(CardLocation location, std::size_t slot);
    // The place, for the const and the other member alike.
    template <class Self>
    static auto& place_in(Self& self, CardLocation location, std::size_t slot);
    Reply activate_field(std::span<const std::uint8_t> body);
    Reply activate_slot(CardPlace& slot, std::span<const std::uint8_t> body);
    static Reply exchange(CardPlace& place, std::span<const std::uint8_t> body);
    static Reply deactivate(CardPlace& place, std::span<const std::uint8_t> body);

    CardPlace field_;
    std::array<CardPlace, contact_slot_count> slots_;
};

}  // namespace qz::sim
