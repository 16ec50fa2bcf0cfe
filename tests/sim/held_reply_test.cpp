// Replies held for a person at the keys: nothing goes out until they end the
// entry, cancel it or its time is up, and the endpoints keep serving meanwhile.
#include <gtest/gtest.h>

#include <chrono>

#include "sim/core/frame_codec.h"
#include "sim/core/held_reply.h"
#include "sim/core/simulator.h"
#include "sim/core/status.h"
#include "sim/endpoints/hid_endpoint.h"
#include "sim/endpoints/serial_endpoint.h"
#include "support/hex_bytes.h"

namespace qz::sim {
namespace {

using namespace std::chrono_literals;
using test::Bytes;
using test::hex;

// The keypad's clear entry with a 5 second wait: 00 08 00 mode timeout ESC 'I'.
const Bytes keypad_entry = encode_frame(hex("00 08 00 00 05 1B 49"));

Bytes reply_frame(std::uint16_t status, std::string_view data = {}) {
    return encode_frame(reply_payload(status, Bytes(data.begin(), data.end())));
}

std::shared_ptr<Terminal> typing_terminal() {
    Scenario scenario;
    scenario.control.eeprom = Bytes(256, 0xFF);
    scenario.document = {{"person_types_pins", true}, {"keypad", {{"entries", {"999"}}}}};
    return make_terminal(scenario);
}

void press(Person& person, std::string_view keys) {
    for (const char key : keys) person.press(key);
}

TEST(HeldReply, PersonEndsCancelsOrRunsOutOfTime) {
    struct Case {
        const char* name;
        const char* keys;
        std::chrono::seconds later;
        std::optional<Bytes> reply;
    };
    const Case cases[] = {
        {"still typing", "12", 0s, std::nullopt},
        {"ended with Enter", "1234\r", 0s, reply_frame(status::ok, "1234")},
        {"cleared and retyped", "77\b42\r", 0s, reply_frame(status::ok, "42")},
        {"keys after Enter dropped", "5\r6", 0s, reply_frame(status::ok, "5")},
        {"cancelled", "12\x1b", 0s, reply_frame(status::entry_timed_out)},
        {"time up", "12", 6s, reply_frame(status::entry_timed_out)},
    };
    for (const Case& entry : cases) {
        const auto terminal = typing_terminal();
        const auto asked = HoldClock::now();
        EXPECT_TRUE(terminal->answer(keypad_entry).empty()) << entry.name;
        const auto waiting = terminal->waiting(asked);
        ASSERT_TRUE(waiting) << entry.name;
        EXPECT_EQ(waiting->what, "PIN on the keypad");
        EXPECT_GT(waiting->left, 4s);
        press(terminal->person(), entry.keys);
        EXPECT_EQ(terminal->release(asked + entry.later), entry.reply) << entry.name;
        EXPECT_EQ(terminal->holding(), !entry.reply) << entry.name;
    }
}

TEST(HeldReply, KeysBeforeThePromptAndScriptedEntriesAreIgnored) {
    const auto terminal = typing_terminal();
    press(terminal->person(), "99\r\x1b");
    EXPECT_TRUE(terminal->answer(keypad_entry).empty());
    EXPECT_FALSE(terminal->release(HoldClock::now()));
    terminal->person().typing = false;  // back to the script, for the next entry
    EXPECT_EQ(terminal->answer(keypad_entry), reply_frame(status::ok, "999"));
    EXPECT_FALSE(terminal->holding()) << "a new request drops the held one";
}

TEST(HeldReply, SingleKeysAreTakenOneAtATime) {
    Person person;
    press(person, "12");
    EXPECT_EQ(person.take_key(), '1');
    EXPECT_EQ(person.take_key(), '2');
    EXPECT_EQ(person.take_key(), std::nullopt);
}

TEST(HeldReply, HidNodeRefusesReadsUntilReleased) {
    const auto terminal = typing_terminal();
    HidEndpoint hid(*terminal, default_report_length);
    Bytes report(default_report_length, 0);
    report[0] = feature_report_id;
    std::ranges::copy(keypad_entry, report.begin() + 1);
    ASSERT_TRUE(hid.set_feature(report));
    Bytes read(default_report_length, 0);
    read[0] = feature_report_id;
    EXPECT_FALSE(hid.get_feature(read));
    press(terminal->person(), "31\r");
    ASSERT_TRUE(hid.get_feature(read));
    const Bytes expected = reply_frame(status::ok, "31");
    EXPECT_EQ(Bytes(read.begin() + 1, read.begin() + 1 + static_cast<std::ptrdiff_t>(expected.size())), expected);
}

TEST(HeldReply, SerialSendsOnceReleased) {
    const auto terminal = typing_terminal();
    SerialEndpoint serial(*terminal);
    serial.receive(keypad_entry);
    EXPECT_TRUE(serial.holding());
    EXPECT_FALSE(serial.transmit());
    press(terminal->person(), "8\r");
    Bytes sent;
    while (const auto byte = serial.transmit()) sent.push_back(*byte);
    EXPECT_EQ(sent, reply_frame(status::ok, "8"));
}

}  // namespace
}  // namespace qz::sim
