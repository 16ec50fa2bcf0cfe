// Cards that come and go through the card holders: the card state and the
// field's activation follow every kind of card, wherever a person puts it.
#include "sim/core/card_holder.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "sim/core/scenario.h"
#include "sim/core/status.h"
#include "sim/core/simulator.h"
#include "sim/models/cards/card_reader_model.h"
#include "support/hex_bytes.h"

namespace qz::sim {
namespace {

using nlohmann::json;
using test::hex;

// What a person does: puts the card described into the place, or (no card) empties it.
void move_card(Terminal& terminal, const json& card, CardLocation location, std::size_t slot) {
    auto& holders = terminal.shared().card_holders;
    if (card.is_null()) {
        for (CardHolder* holder : holders) holder->take_out(location, slot);
        return;
    }
    const auto holder = std::ranges::find_if(holders, [&](CardHolder* h) { return h->fits(card, location); });
    ASSERT_NE(holder, holders.end()) << card;
    (*holder)->put(card, location, slot, "card");
}

TEST(CardHolders, CardStateAndActivationFollowEveryKindOfCard) {
    const auto terminal = make_terminal(parse_scenario(
        json::parse(R"({"cards": {}, "memory_cards": {}, "field_memory": {}})")));
    const json ultralight = {{"type", "ultralight"}, {"uid", {{"hex", "04 11 22 33 44 55 66"}}}};
    const json processor = {{"uid", {{"hex", "01 02 03 04"}}}, {"sak", "0x20"}, {"ats", {{"hex", "05 78"}}}};
    const json chip = {{"type", "sle4442"}};
    struct Step {
        const char* what;
        json card;  // null: the place is emptied
        CardLocation location;
        std::size_t slot;
        std::uint8_t state;
        const char* activation;  // reply data of C1 30 00 00, or nothing: no card
    };
    const Step steps[] = {
        {"nothing anywhere", nullptr, CardLocation::field, 0, 0x00, nullptr},
        {"a memory card alone in the field", ultralight, CardLocation::field, 0, 0x01, "00 07 04 11 22 33 44 55 66 00"},
        {"a processor card beside it answers", processor, CardLocation::field, 0, 0x01, "20 04 01 02 03 04 02 05 78"},
        {"the field emptied", nullptr, CardLocation::field, 0, 0x00, nullptr},
        {"a chip in slot 0", chip, CardLocation::slot, 0, 0x02, nullptr},
        {"slot 0 emptied", nullptr, CardLocation::slot, 0, 0x00, nullptr},
        {"a chip in slot 1 does not show", chip, CardLocation::slot, 1, 0x00, nullptr},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.what);
        move_card(*terminal, step.card, step.location, step.slot);
        const Reply state = terminal->execute(hex("00 07 00"));
        EXPECT_EQ(state.data, test::Bytes{step.state});
        const Reply activation = terminal->execute(hex("C1 30 00 00"));
        EXPECT_EQ(activation.status, step.activation ? status::ok : status::no_card);
        EXPECT_EQ(activation.data, step.activation ? hex(step.activation) : test::Bytes{});
    }
    // A memory card's activation takes the modes of a selection only.
    move_card(*terminal, ultralight, CardLocation::field, 0);
    EXPECT_EQ(terminal->execute(hex("C1 30 00 02")).status, status::out_of_range);
}

}  // namespace
}  // namespace qz::sim
