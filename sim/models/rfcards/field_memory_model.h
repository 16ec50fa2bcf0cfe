// The reader's side of the contactless memory cards: which card in the field is
// selected, halted or powered, and the field's state; the selected card carries
// out reads, writes, authentication and value operations itself.
//
//   C1 40 00 m     select a card: m 0 the first card not halted, m 1 any card
//                  (a halted one wakes); reply: its serial number
//   C1 30 00 m     activate, as C1 40 selects, while no microprocessor card is in
//                  the field (that one's reader answers then); reply: SAK, UID
//                  length, UID, and an answer to select of length 0
//   C1 45 00       halt the selected card: it answers nothing until selected with m 1
//   C1 33 00       deselect; reply: the field state
//   C1 4E 00       switch the field off and on: every card powers up afresh
//   C1 46..4C, 4F, 50, 5F    the selected card's commands (no_card when none is selected)
//   32 70 00       the field state: 1 while a card is in the field, else 0
//   00 0E 20       the antenna's state: 0, working
//   00 0F          the UIDs of all cards in the field: their count, then each UID
//                  behind its length
//
// Cards in the field show in the card state (card_holder.h).
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "sim/core/card_holder.h"
#include "sim/core/terminal.h"
#include "sim/models/rfcards/field_card.h"

namespace qz::sim {

class FieldMemoryModel final : public DeviceModel, public CardHolder {
public:
    FieldMemoryModel(std::vector<std::unique_ptr<FieldCard>> cards, const SharedState& shared);

    std::vector<Route> routes() const override;
    Reply handle(const Command& command) override;
    bool takes(const Command& command) const override;

    bool holds(CardLocation location, std::size_t) const override;
    bool fits(const nlohmann::json& card, CardLocation location) const override;
    void put(const nlohmann::json& card, CardLocation location, std::size_t slot, const std::string& where) override;
    void take_out(CardLocation location, std::size_t slot) override;

    FieldCard& card(std::size_t index) { return *cards_[index].card; }

private:
    struct InField {
        std::unique_ptr<FieldCard> card;
        bool halted = false;
    };

    Reply field_command(std::uint8_t instruction, std::span<const std::uint8_t> body);
    // C1 40, or C1 30 when `activation`.
    Reply select(std::span<const std::uint8_t> body, bool activation);
    Reply uids() const;
    std::uint8_t field_state() const { return cards_.empty() ? 0 : 1; }

    std::vector<InField> cards_;
    std::optional<std::size_t> selected_;
    const SharedState& shared_;
};

}  // namespace qz::sim
