#include "sim/models/cards/iso7816_card.h"

#include <gtest/gtest.h>

#include "sim_test_helpers.h"

namespace qz::sim {
namespace {

using test::Bytes;
using test::hex;
using test::pattern;

// Answers every command with `size` pattern bytes and 9000, and counts resets.
class FixedAnswer final : public CardApplication {
public:
    FixedAnswer(std::size_t size, int& resets) : size_(size), resets_(resets) {}
    CardResponse process(const Apdu&) override { return {pattern(size_), card_sw::success}; }
    void reset() override { ++resets_; }

private:
    std::size_t size_;
    int& resets_;
};

// A card whose application answers `size` bytes to everything.
class CardRules : public ::testing::Test {
protected:
    Iso7816Card card(ResponseRules rules, std::size_t size, std::size_t chunk = 256) {
        return Iso7816Card({}, rules, chunk, std::make_unique<FixedAnswer>(size, resets));
    }
    int resets = 0;
};

Bytes data_and(std::size_t count, std::size_t first_index, const char* sw) {
    Bytes bytes = pattern(count, static_cast<std::uint8_t>(0x10 + first_index));
    const Bytes words = hex(sw);
    bytes.insert(bytes.end(), words.begin(), words.end());
    return bytes;
}

struct Step {
    const char* apdu;
    std::size_t data_count;   // pattern bytes expected before the status words
    std::size_t first_index;  // index of the first of them in the whole answer
    const char* sw;
};

struct RulesCase {
    const char* name;
    ResponseRules rules;
    std::size_t answer_size;
    std::size_t chunk;
    std::vector<Step> steps;
};

TEST_F(CardRules, HandOutResponseData) {
    const RulesCase cases[] = {
        {"T=0 case 4 announces, GET RESPONSE with the exact length",
         ResponseRules::t0,
         20,
         256,
         {{"00 A4 04 00 02 3F 00 00", 0, 0, "61 14"}, {"00 C0 00 00 14", 20, 0, "90 00"}}},
        {"T=0 case 3 announces too",
         ResponseRules::t0,
         20,
         256,
         {{"00 A4 04 00 02 3F 00", 0, 0, "61 14"}, {"00 C0 00 00 14", 20, 0, "90 00"}}},
        {"T=0 case 2 with Le 00 gets 6Cxx, then the exact length",
         ResponseRules::t0,
         29,
         256,
         {{"00 B2 01 0C 00", 0, 0, "6C 1D"}, {"00 B2 01 0C 1D", 29, 0, "90 00"}}},
        {"T=0 case 2 asking for less: the rest waits",
         ResponseRules::t0,
         29,
         256,
         {{"00 B2 01 0C 10", 16, 0, "61 0D"}, {"00 C0 00 00 0D", 13, 16, "90 00"}}},
        {"T=0 GET RESPONSE asking for too much gets 6Cxx and the data stays",
         ResponseRules::t0,
         20,
         256,
         {{"80 A8 00 00 02 83 00 00", 0, 0, "61 14"},
          {"00 C0 00 00 00", 0, 0, "6C 14"},
          {"00 C0 00 00 14", 20, 0, "90 00"}}},
        {"T=0 GET RESPONSE asking for less: a further 61xx",
         ResponseRules::t0,
         20,
         256,
         {{"80 A8 00 00 02 83 00", 0, 0, "61 14"},
          {"00 C0 00 00 08", 8, 0, "61 0C"},
          {"00 C0 00 00 0C", 12, 8, "90 00"}}},
        {"T=0 with chunks of 32: a chain of 61xx",
         ResponseRules::t0,
         70,
         32,
         {{"00 A4 04 00 01 A0", 0, 0, "61 20"},
          {"00 C0 00 00 20", 32, 0, "61 20"},
          {"00 C0 00 00 20", 32, 32, "61 06"},
          {"00 C0 00 00 06", 6, 64, "90 00"}}},
        {"T=0 answer of 256 bytes is announced as 61 00",
         ResponseRules::t0,
         256,
         256,
         {{"00 A4 04 00 01 A0", 0, 0, "61 00"}, {"00 C0 00 00 00", 256, 0, "90 00"}}},
        {"direct: Le 00 takes all", ResponseRules::direct, 29, 256, {{"00 B2 01 0C 00", 29, 0, "90 00"}}},
        {"direct: case 4 with Le 00 takes all",
         ResponseRules::direct,
         40,
         256,
         {{"00 A4 04 00 01 A0 00", 40, 0, "90 00"}}},
        {"direct: no Le, all waits",
         ResponseRules::direct,
         20,
         256,
         {{"00 A4 04 00 01 A0", 0, 0, "61 14"}, {"00 C0 00 00 00", 20, 0, "90 00"}}},
        {"direct: less than there is",
         ResponseRules::direct,
         29,
         256,
         {{"00 B2 01 0C 10", 16, 0, "61 0D"}, {"00 C0 00 00 00", 13, 16, "90 00"}}},
        {"GET RESPONSE with nothing waiting", ResponseRules::direct, 20, 256, {{"00 C0 00 00 10", 0, 0, "69 85"}}},
        {"another command drops what waits",
         ResponseRules::t0,
         20,
         256,
         {{"00 A4 04 00 01 A0", 0, 0, "61 14"}, {"00 B2 01 0C 14", 20, 0, "90 00"}, {"00 C0 00 00 14", 0, 0, "69 85"}}},
        {"GET RESPONSE with P1 P2 not 0000",
         ResponseRules::t0,
         20,
         256,
         {{"00 A4 04 00 01 A0", 0, 0, "61 14"}, {"00 C0 01 00 14", 0, 0, "6A 86"}, {"00 C0 00 00 14", 20, 0, "90 00"}}},
        {"a malformed APDU", ResponseRules::t0, 20, 256, {{"00 A4 04 00 05 A0", 0, 0, "67 00"}}},
    };
    for (const RulesCase& test_case : cases) {
        SCOPED_TRACE(test_case.name);
        Iso7816Card under_test = card(test_case.rules, test_case.answer_size, test_case.chunk);
        for (const Step& step : test_case.steps) {
            SCOPED_TRACE(step.apdu);
            EXPECT_EQ(under_test.transmit(hex(step.apdu)), data_and(step.data_count, step.first_index, step.sw));
        }
        EXPECT_EQ(under_test.received().size(), test_case.steps.size());
    }
}

TEST_F(CardRules, StatusWithoutDataGoesBackAsItIs) {
    class Refusing final : public CardApplication {
    public:
        CardResponse process(const Apdu&) override { return CardResponse::status(card_sw::file_not_found); }
        void reset() override {}
    };
    Iso7816Card under_test({}, ResponseRules::t0, 256, std::make_unique<Refusing>());
    EXPECT_EQ(under_test.transmit(hex("00 A4 04 00 02 3F 00 00")), hex("6A 82"));
    EXPECT_EQ(under_test.transmit(hex("00 B2 01 0C 00")), hex("6A 82"));
}

TEST_F(CardRules, ResetDropsWaitingDataAndResetsTheApplication) {
    Iso7816Card under_test = card(ResponseRules::t0, 20);
    EXPECT_EQ(under_test.transmit(hex("00 A4 04 00 01 A0")), hex("61 14"));
    under_test.reset();
    EXPECT_EQ(resets, 1);
    EXPECT_EQ(under_test.transmit(hex("00 C0 00 00 14")), hex("69 85"));
}

TEST(Apdu, ParsesTheFourCases) {
    struct Case {
        const char* bytes;
        std::size_t data_length;
        std::optional<std::size_t> le;
    };
    const Case cases[] = {
        {"00 A4 04 00", 0, std::nullopt},    {"00 B2 01 0C 00", 0, 256},
        {"00 B2 01 0C 1D", 0, 0x1D},         {"00 A4 04 00 02 3F 00", 2, std::nullopt},
        {"00 A4 04 00 02 3F 00 00", 2, 256}, {"00 A4 04 00 02 3F 00 10", 2, 0x10},
    };
    for (const Case& test_case : cases) {
        SCOPED_TRACE(test_case.bytes);
        const auto apdu = parse_apdu(hex(test_case.bytes));
        ASSERT_TRUE(apdu);
        EXPECT_EQ(apdu->data.size(), test_case.data_length);
        EXPECT_EQ(apdu->le, test_case.le);
    }
    const auto select = parse_apdu(hex("00 A4 04 0C 02 3F 00"));
    ASSERT_TRUE(select);
    EXPECT_EQ(select->p1_p2(), 0x040C);
    EXPECT_EQ(select->data, hex("3F 00"));

    for (const char* malformed :
         {"00 A4 04", "00 A4 04 00 03 3F 00", "00 A4 04 00 01 3F 00 00", "00 A4 04 00 00 3F 00"})
        EXPECT_FALSE(parse_apdu(hex(malformed))) << malformed;
}

}  // namespace
}  // namespace qz::sim
