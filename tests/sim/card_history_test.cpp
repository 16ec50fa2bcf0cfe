// A simulator that runs for days keeps only the most recent commands of a card,
// so its memory stays flat however many APDUs it answers.
#include <gtest/gtest.h>

#include "sim/core/recent_history.h"
#include "sim/models/cards/iso7816_card.h"

namespace qz::sim {
namespace {

class Silent final : public CardApplication {
public:
    CardResponse process(const Apdu&) override { return {{}, card_sw::success}; }
    void reset() override {}
};

std::vector<std::uint8_t> read_binary(std::size_t offset) {
    return {0x00, 0xB0, static_cast<std::uint8_t>(offset >> 8), static_cast<std::uint8_t>(offset), 0x04};
}

TEST(CardHistory, KeepsOnlyTheMostRecentCommands) {
    Iso7816Card card({}, ResponseRules::direct, 256, std::make_unique<Silent>());
    const std::size_t sent = 3 * recent_history_limit;
    for (std::size_t offset = 0; offset < sent; ++offset) card.transmit(read_binary(offset));
    ASSERT_EQ(card.received().size(), recent_history_limit);
    EXPECT_EQ(card.received().front(), read_binary(sent - recent_history_limit));
    EXPECT_EQ(card.received().back(), read_binary(sent - 1));
}

}  // namespace
}  // namespace qz::sim
