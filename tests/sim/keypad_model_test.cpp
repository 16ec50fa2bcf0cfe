#include "sim/models/pinpad/keypad_model.h"

#include <gtest/gtest.h>

#include "sim/models/control/control_model.h"
#include "sim/models/pinpad/des_cipher.h"
#include "sim/core/json_values.h"
#include "sim/core/status.h"
#include "sim_test_helpers.h"

namespace qz::sim {
namespace {

using test::Bytes;
using test::hex;

class KeypadModelTest : public ::testing::Test {
protected:
    KeypadModelTest() {
        Scenario scenario;
        scenario.document = {{"keypad", {{"entries", {"1234", "123456789", "55555"}}}}};
        terminal = make_terminal(scenario);
        keypad = terminal->model<KeypadModel>();
    }

    // A protected command under row `row` carrying `session_key` wrapped.
    static Bytes protected_command(std::uint8_t letter, std::uint8_t row, const DesBlock& session_key) {
        const DesBlock wrapped = des_encrypt(session_key, keypad_key_table().at(row));
        Bytes payload{0x00, 0x08, 0x00, 0x01, 0x1E, 0x1B, letter, row};
        payload.insert(payload.end(), wrapped.begin(), wrapped.end());
        return payload;
    }

    std::shared_ptr<Terminal> terminal;
    KeypadModel* keypad = nullptr;
};

TEST_F(KeypadModelTest, ClearEntriesGiveTheDigitsInOrder) {
    EXPECT_EQ(terminal->execute(hex("00 08 00 00 1E 1B 49")).data, Bytes({'1', '2', '3', '4'}));
    EXPECT_EQ(terminal->execute(hex("00 08 00 00 1E 1B 45")).data, Bytes({'1', '2', '3', '4', '5', '6', '7', '8', '9'}));
    EXPECT_EQ(keypad->letters(), (std::vector<char>{'I', 'E'}));
    EXPECT_EQ(keypad->entries_left(), 1u);
}

TEST_F(KeypadModelTest, ProtectedEntryEnciphersUnderTheRecoveredSessionKey) {
    const DesBlock session_key{0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE};
    const Reply first = terminal->execute(protected_command('I', 9, session_key));
    ASSERT_EQ(first.status, status::ok);
    Bytes clear = first.data;
    decipher_blocks(clear, session_key);
    EXPECT_EQ(clear, Bytes({'1', '2', '3', '4', 0, 0, 0, 0}));

    const Reply second = terminal->execute(protected_command('E', 0, session_key));
    ASSERT_EQ(second.data.size(), 16u) << "more than eight digits take two blocks";
    clear = second.data;
    decipher_blocks(clear, session_key);
    EXPECT_EQ(clear, Bytes({'1', '2', '3', '4', '5', '6', '7', '8', '9', 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(KeypadModelTest, RefusesWhatItCannotDo) {
    const std::vector<std::pair<Bytes, std::uint16_t>> cases{
        {hex("00 08 00 01 1E 1B 49 0A 01 02 03 04 05 06 07 08"), status::out_of_range},  // row 10
        {hex("00 08 00 02 1E 1B 49"), status::out_of_range},   // no such mode
        {hex("00 08 00 00 1E 1B 49 00"), status::wrong_length},
        {hex("00 08 00 01 1E 1B 49 00"), status::wrong_length},
        {hex("00 08 00 00 1E 1B 48"), status::wrong_data},     // a letter it doesn't know
    };
    for (const auto& [payload, expected] : cases) EXPECT_EQ(terminal->execute(payload).status, expected);
    EXPECT_EQ(keypad->entries_left(), 3u) << "nothing was typed";
}

TEST_F(KeypadModelTest, NoEntryLeftIsATimeOut) {
    for (int i = 0; i < 3; ++i) ASSERT_EQ(terminal->execute(hex("00 08 00 00 05 1B 49")).status, status::ok);
    EXPECT_EQ(terminal->execute(hex("00 08 00 00 05 1B 49")).status, status::entry_timed_out);
}

TEST_F(KeypadModelTest, SerialNumberWritesStillReachTheControlModel) {
    Bytes write = hex("00 08 00 14 1B 49");  // serial number data that happen to start like a keypad command
    write.resize(24, 0x41);
    ASSERT_EQ(terminal->execute(write).status, status::ok);
    EXPECT_EQ(terminal->model<ControlModel>()->serial_number()[0], 0x1B);
    EXPECT_TRUE(keypad->letters().empty());
}

TEST(KeypadScenario, EntriesAreTextsOfDigits) {
    for (const auto& bad : {nlohmann::json{{"keypad", {{"entries", {"12a4"}}}}},
                            nlohmann::json{{"keypad", {{"entries", {""}}}}},
                            nlohmann::json{{"keypad", {{"entries", "1234"}}}},
                            nlohmann::json{{"keypad", {{"entry", {"1234"}}}}}})
        EXPECT_THROW(parse_keypad(bad), ScenarioError) << bad.dump();
    EXPECT_EQ(parse_keypad(nlohmann::json::object()).entries.pending(), 0u);
}

}  // namespace
}  // namespace qz::sim
