#include "sim/models/cards/card_reader_model.h"

#include <gtest/gtest.h>

#include "card_test_helpers.h"
#include "sim/models/control/control_model.h"
#include "sim/core/status.h"

namespace qz::sim {
namespace {

using nlohmann::json;
using test::Bytes;
using test::hex;

const json plain_card = json::object();
const Bytes default_atr = hex("3B 68 00 00 51 5A 33 32 43 41 52 44");

std::unique_ptr<Iso7816Card> card_for(CardLocation location) {
    return make_card(parse_card(plain_card, location, "card"));
}

// A terminal whose readers are fitted: a card in the field, none in the slots.
class CardReaderTest : public ::testing::Test {
protected:
    CardReaderTest() {
        terminal = make_terminal(parse_scenario(json::parse(R"({"cards": {"field": {
            "uid": {"hex": "04 A1 B2 C3 D4 E5 F6"}, "ats": {"hex": "05 78 80 70 02"}, "sak": "0x28"}}})")));
        readers = terminal->model<CardReaderModel>();
    }

    Reply run(std::string_view payload) { return terminal->execute(hex(payload)); }
    std::uint8_t card_state() { return run("00 07 00").data.at(0); }

    std::shared_ptr<Terminal> terminal;
    CardReaderModel* readers = nullptr;
};

TEST_F(CardReaderTest, ActivationRepliesOfFieldAndSlot) {
    ASSERT_NE(readers, nullptr);
    EXPECT_EQ(run("C1 30 00 00").data, hex("28 07 04 A1 B2 C3 D4 E5 F6 05 05 78 80 70 02"));
    EXPECT_EQ(run("C1 30 00 01").status, status::ok);

    readers->insert(card_for(CardLocation::slot), CardLocation::slot, 4);
    for (const char* parameter : {"00", "01", "10", "31", "51"})
        EXPECT_EQ(run(std::string("C5 30 ") + parameter).data, default_atr) << parameter;
}

TEST_F(CardReaderTest, RefusesWhatTheCommandsDoNotAllow) {
    readers->insert(card_for(CardLocation::slot), CardLocation::slot, 0);
    struct Case {
        const char* payload;
        std::uint16_t status;
    };
    const Case cases[] = {
        {"C1 30 00 02", status::out_of_range},  // no such mode
        {"C1 30 01 00", status::out_of_range},
        {"C1 30 00", status::wrong_length},
        {"C0 30 60", status::out_of_range},  // speed code 6
        {"C0 30 02", status::out_of_range},  // a bit that means nothing
        {"C0 30", status::wrong_length},
        {"C2 30 00", status::no_card},
        {"C2 31 00 00 A4 04 00", status::no_card},
        {"C0 31 00 00 A4 04 00", status::card_inactive},  // not powered yet
        {"C0 31 01 00 A4 04 00", status::out_of_range},
        {"C0 31 00 00 A4 04", status::wrong_length},  // shorter than a header
        {"C0 31", status::wrong_length},
        {"C0 32", status::wrong_length},
        {"C0 32 01", status::out_of_range},
        {"C3 32 00", status::ok},  // an empty slot powers down quietly
    };
    for (const Case& test_case : cases) EXPECT_EQ(run(test_case.payload).status, test_case.status) << test_case.payload;
}

TEST_F(CardReaderTest, ExchangeOnlyWhileActive) {
    EXPECT_EQ(run("C1 31 00 00 A4 04 00 00").status, status::card_inactive);
    ASSERT_EQ(run("C1 30 00 00").status, status::ok);
    const Reply reply = run("C1 31 00 00 A4 04 00 0E 32 50 41 59 2E 53 59 53 2E 44 44 46 30 31 00");
    EXPECT_EQ(reply.status, status::ok);
    EXPECT_EQ(Bytes(reply.data.end() - 2, reply.data.end()), hex("90 00"));
    EXPECT_EQ(run("C1 32 00").status, status::ok);
    EXPECT_EQ(run("C1 31 00 00 A4 04 00 00").status, status::card_inactive);

    const auto* card = readers->place(CardLocation::field).card();
    ASSERT_NE(card, nullptr);
    ASSERT_EQ(card->received().size(), 1u) << "refused exchanges never reach the card";
    EXPECT_EQ(card->received()[0].size(), 20u);
}

TEST_F(CardReaderTest, TheFieldHoldsOneCard) {
    EXPECT_THROW(readers->insert(card_for(CardLocation::field), CardLocation::field), std::logic_error);
    ASSERT_EQ(run("C1 30 00 00").status, status::ok);
    auto taken = readers->take(CardLocation::field);
    ASSERT_NE(taken, nullptr);
    EXPECT_FALSE(readers->place(CardLocation::field).active());
    EXPECT_EQ(run("C1 30 00 00").status, status::no_card);
    EXPECT_EQ(run("C1 31 00 00 A4 04 00 00").status, status::no_card);
    EXPECT_EQ(readers->take(CardLocation::field), nullptr);

    readers->insert(std::move(taken), CardLocation::field);
    EXPECT_EQ(run("C1 31 00 00 A4 04 00 00").status, status::card_inactive) << "a card put back must be activated";
    EXPECT_EQ(run("C1 30 00 00").status, status::ok);
    EXPECT_THROW(readers->insert(card_for(CardLocation::slot), CardLocation::slot, 5), std::out_of_range);
}

TEST_F(CardReaderTest, CardStateFollowsFieldAndSlotZero) {
    EXPECT_EQ(card_state(), card_state::card_in_field);
    readers->insert(card_for(CardLocation::slot), CardLocation::slot, 0);
    EXPECT_EQ(card_state(), 0x03);
    readers->insert(card_for(CardLocation::slot), CardLocation::slot, 2);
    EXPECT_EQ(card_state(), 0x03) << "the other slots do not show";
    readers->take(CardLocation::field);
    EXPECT_EQ(card_state(), card_state::card_in_slot_0);
    readers->take(CardLocation::slot, 0);
    EXPECT_EQ(card_state(), 0x00);
}

TEST(CardReaders, LeaveTheOtherInstructionsOfTheirClassesFree) {
    SharedState shared;
    Terminal terminal;
    terminal.add_model(std::make_unique<CardReaderModel>(CardsConfig{}, shared));
    EXPECT_EQ(terminal.execute(hex("C1 40 00 00")).status, status::instruction_unknown);
    EXPECT_EQ(terminal.execute(hex("C0 40 00 00 00")).status, status::instruction_unknown);

    class Other final : public DeviceModel {
    public:
        std::vector<Route> routes() const override { return {{0xC1, {0x40}}, {0xC0, {0x40}}, {0xC5, {0x01}}}; }
        Reply handle(const Command&) override { return {status::ok, {0xAA}}; }
    };
    terminal.add_model(std::make_unique<Other>());
    EXPECT_EQ(terminal.execute(hex("C1 40 00 00")).data, hex("AA"));
    EXPECT_EQ(terminal.execute(hex("C5 01 00")).data, hex("AA"));
    EXPECT_EQ(terminal.execute(hex("C1 30 00 00")).status, status::no_card);
}

TEST(CardReaders, FittedOnlyWithACardsSection) {
    EXPECT_EQ(make_terminal(Scenario{})->model<CardReaderModel>(), nullptr);
    const auto scenario = load_scenario(std::filesystem::path(QZ_32_SIM_SCENARIO_DIR) / "default.json");
    const auto terminal = make_terminal(scenario);
    ASSERT_NE(terminal->model<CardReaderModel>(), nullptr);
    EXPECT_EQ(terminal->execute(hex("00 07 00")).data, hex("03")) << "default: a card in the field and in slot 0";
    EXPECT_EQ(terminal->execute(hex("C0 30 00")).data, hex("3B 6A 00 00 51 5A 33 32 20 44 45 42 49 54"));
    EXPECT_EQ(terminal->execute(hex("C1 30 00 00")).data.at(2), 0x3E);
}

}  // namespace
}  // namespace qz::sim
