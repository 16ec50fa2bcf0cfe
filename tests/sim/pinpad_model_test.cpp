#include "sim/models/pinpad/pinpad_model.h"

#include <gtest/gtest.h>

#include "sim/models/pinpad/des_cipher.h"
#include "sim/core/json_values.h"
#include "sim/core/status.h"
#include "sim_test_helpers.h"

namespace qz::sim {
namespace {

using test::Bytes;
using test::hex;

const Bytes main16 = hex("01 23 45 67 89 AB CD EF FE DC BA 98 76 54 32 10");
const Bytes work8 = hex("0B 16 2C 58 B0 61 C2 85");

Bytes concat_payload(std::string_view head, const Bytes& tail) {
    Bytes payload = hex(head);
    payload.insert(payload.end(), tail.begin(), tail.end());
    return payload;
}

class PinPadModelTest : public ::testing::Test {
protected:
    void start(nlohmann::json section = nlohmann::json::object()) {
        Scenario scenario;
        scenario.document = {{"pinpad", std::move(section)}};
        terminal = make_terminal(scenario);
        pad = terminal->model<PinPadModel>();
    }
    Reply run(std::string_view payload) { return terminal->execute(hex(payload)); }

    std::shared_ptr<Terminal> terminal;
    PinPadModel* pad = nullptr;
};

TEST_F(PinPadModelTest, AnswersOnlyItsOwnSubCommandsOfClassC5) {
    start();
    std::vector<std::uint8_t> instructions;
    for (const Route& route : pad->routes()) {
        EXPECT_EQ(route.class_byte, 0xC5);
        instructions.insert(instructions.end(), route.instructions.begin(), route.instructions.end());
    }
    EXPECT_EQ(instructions, hex("01 02 03 04 05 06 07 08 09 0A 0E"));
    EXPECT_EQ(run("C5 30 00").status, status::instruction_unknown) << "contact slot 4 stays free";
}

TEST_F(PinPadModelTest, SettingsAreKept) {
    start();
    EXPECT_EQ(run("C5 01 00 2D").status, status::ok);
    EXPECT_EQ(pad->timeout_seconds(), 0x2D);
    EXPECT_EQ(run("C5 02 00 04").status, status::ok);
    EXPECT_EQ(pad->pin_length(), 4);
    EXPECT_EQ(run("C5 02 00 13").status, status::out_of_range);
    EXPECT_EQ(run("C5 0E 00 02").status, status::ok);
    EXPECT_EQ(pad->output_mode(), 2);
    EXPECT_EQ(run("C5 01 00").status, status::wrong_length);
}

TEST_F(PinPadModelTest, WorkKeyArrivesEncipheredUnderItsMainKeyAndIsKeptClear) {
    start();
    ASSERT_EQ(terminal->execute(concat_payload("C5 03 00 01 02", main16)).status, status::ok);
    Bytes wrapped = work8;
    encipher_blocks(wrapped, main16);
    ASSERT_EQ(terminal->execute(concat_payload("C5 04 00 00 02 07", wrapped)).status, status::ok);
    EXPECT_EQ(Bytes(pad->work_key(7).begin(), pad->work_key(7).end()), work8);
    ASSERT_EQ(terminal->execute(concat_payload("C5 07 00 00 02 08", wrapped)).status, status::ok);
    EXPECT_EQ(Bytes(pad->work_key(8).begin(), pad->work_key(8).end()), work8);

    EXPECT_EQ(terminal->execute(concat_payload("C5 04 00 00 03 07", wrapped)).status, status::key_missing);
    EXPECT_EQ(terminal->execute(concat_payload("C5 04 00 01 02 07", wrapped)).status, status::wrong_length);
    EXPECT_EQ(terminal->execute(concat_payload("C5 04 00 02 02 07", wrapped)).status, status::wrong_data);
    EXPECT_EQ(terminal->execute(concat_payload("C5 04 00 00 02 10", wrapped)).status, status::out_of_range);
    EXPECT_EQ(terminal->execute(concat_payload("C5 03 00 01 10", main16)).status, status::out_of_range);
}

TEST_F(PinPadModelTest, PinBlockIsFormatZeroUnderTheWorkKey) {
    start({{"work_keys", {{{"number", 3u}, {"key", {{"hex", "0B 16 2C 58 B0 61 C2 85"}}}}}},
           {"entries", {"1234", "12345678901234", "123"}}});
    const Reply reply = run("C5 0A 00 1B 49 03 00 00 12 34 56 78 90 12");
    ASSERT_EQ(reply.status, status::ok);
    Bytes block = reply.data;
    decipher_blocks(block, work8);
    // 04 12 34 FF FF FF FF FF XOR 00 00 12 34 56 78 90 12
    EXPECT_EQ(block, hex("04 12 26 CB A9 87 6F ED"));

    EXPECT_EQ(run("C5 0A 00 1B 49 03 00 00 12 34").status, status::wrong_length);
    const Reply longest = run("C5 0A 00 1B 48 31 03 00 00 00 00 00 00 00 00");
    ASSERT_EQ(longest.status, status::ok);
    block = longest.data;
    decipher_blocks(block, work8);
    EXPECT_EQ(block, hex("0C 12 34 56 78 90 12 FF")) << "an entry is cut at twelve digits";
    EXPECT_EQ(run("C5 08 00 1B 45 03").status, status::wrong_data) << "three digits make no PIN block";
    EXPECT_EQ(pad->openings(), (std::vector<std::string>{"I", "H1", "E"}));
}

TEST_F(PinPadModelTest, EntriesNeedTheirKeyAndAnEntry) {
    start({{"entries", {"1234"}}});
    EXPECT_EQ(run("C5 0A 00 1B 49 03 00 00 12 34 56 78 90 12").status, status::key_missing);
    EXPECT_EQ(run("C5 0A 00 1B 49 10 00 00 12 34 56 78 90 12").status, status::out_of_range);
    EXPECT_EQ(run("C5 09 00 1B 49").data, Bytes({'1', '2', '3', '4'}));
    EXPECT_EQ(run("C5 09 00 1B 49").status, status::entry_timed_out);
    EXPECT_EQ(run("C5 09 00 1B 48 34 0D 0A").status, status::wrong_data) << "selector 4";
    EXPECT_EQ(run("C5 09 00 1B 48 31").status, status::wrong_length) << "no CR LF";
}

TEST_F(PinPadModelTest, PinLengthCutsAClearEntry) {
    start({{"pin_length", 4u}, {"entries", {"987654"}}});
    EXPECT_EQ(run("C5 09 00 1B 48 30 0D 0A").data, Bytes({'9', '8', '7', '6'}));
}

TEST_F(PinPadModelTest, PadTypeDecidesWhichSubCommandsAnswer) {
    start({{"type", 1u}, {"entries", {"1111", "2222"}}});
    EXPECT_EQ(run("C5 09 00 1B 49").status, status::instruction_unknown);
    EXPECT_EQ(run("C5 0A 00 00").status, status::instruction_unknown);
    EXPECT_EQ(run("C5 05 00 1B 45").data, Bytes({'1', '1', '1', '1'}));
    EXPECT_EQ(run("C5 05 00 00").status, status::wrong_data) << "no single key presses on this type";

    start({{"entries", {"1111"}}});
    EXPECT_EQ(run("C5 05 00 1B 49").status, status::instruction_unknown);
    EXPECT_EQ(run("C5 06 00 1B 49 00 00 00 00 00 00 00 00 00").status, status::instruction_unknown);
}

TEST(PinPadScenario, RefusesBadKeysAndEntries) {
    const std::vector<nlohmann::json> bad{
        {{"pinpad", {{"main_keys", {{{"number", 16u}, {"key", {{"hex", "0B 16 2C 58 B0 61 C2 85"}}}}}}}}},
        {{"pinpad", {{"work_keys", {{{"number", 0u}, {"key", {{"hex", "0B 16 2C"}}}}}}}}},
        {{"pinpad", {{"work_keys", {{{"number", 0u}}}}}}},
        {{"pinpad", {{"entries", {"12 34"}}}}},
        {{"pinpad", {{"pin_length", 0u}}}},
        {{"pinpad", {{"pin_length", 19u}}}},
        {{"pinpad", {{"colour", "red"}}}},
    };
    for (const auto& document : bad) EXPECT_THROW(parse_pinpad(document), ScenarioError) << document.dump();
}

}  // namespace
}  // namespace qz::sim
