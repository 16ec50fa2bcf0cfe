// The terminal's side of the contact memory cards: the slot choice, the type query
// and the chips' own commands (class C0), and the record commands (class D0).
//
//   C0 3F 00 s        select slot s (0..4): its chip powers up afresh (codes closed)
//   C0 82 00          the answer of the chip in the selected slot (type code first)
//   C0 40..47, 60..7F, 83..89, 90..97
//                     the command of the chip in the selected slot; wrong_card when
//                     it is another chip's, no_card with no chip in the slot
//   D0 01 00          open the record: nt_record is taken from now on
//   D0 02 00          close the record
//   D0 03 00 v v v v  record a value (low byte first); reply: its number in the
//                     record, 4 bytes low byte first; refused while no record is open
//
// The parameter byte of every command is 00. A chip in slot 0 shows in the card
// state (card_holder.h) as a card in slot 0.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "sim/core/card_holder.h"
#include "sim/core/terminal.h"
#include "sim/models/memcards/chip_config.h"

namespace qz::sim {

class MemoryCardModel final : public DeviceModel, public CardHolder {
public:
    explicit MemoryCardModel(const MemoryCardsConfig& config);

    std::vector<Route> routes() const override;
    Reply handle(const Command& command) override;

    bool holds(CardLocation location, std::size_t slot) const override;
    bool fits(const nlohmann::json& card, CardLocation location) const override;
    void put(const nlohmann::json& card, CardLocation location, std::size_t slot, const std::string& where) override;
    void take_out(CardLocation location, std::size_t slot) override;

private:
    Reply record(std::uint8_t instruction, Arguments& arguments);
    Reply card_command(std::uint8_t instruction, Arguments& arguments);

    std::array<std::unique_ptr<MemoryChip>, memory_slot_count> chips_;
    std::size_t selected_ = 0;
    bool recording_ = false;
    std::uint32_t recorded_ = 0;
};

}  // namespace qz::sim
