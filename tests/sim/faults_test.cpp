#include "sim/core/faults.h"

#include <gtest/gtest.h>

#include "sim/models/control/control_model.h"
#include "sim/endpoints/serial_endpoint.h"
#include "sim/core/status.h"
#include "sim_test_helpers.h"

namespace qz::sim {
namespace {

using test::Bytes;
using test::hex;

const Bytes card_state_request = hex("02 00 03 00 07 00 07 03");
const Bytes card_state_reply = hex("02 00 04 00 00 00 00 00 03");

std::shared_ptr<Terminal> terminal_with(Fault fault, std::optional<unsigned> times = std::nullopt) {
    Scenario scenario;
    scenario.faults.push_back({0x00, 0x07, std::move(fault), times});
    return make_terminal(scenario);
}

struct WireFault {
    const char* name;
    Fault fault;
    const char* wire;
};

TEST(Faults, EachKindDamagesTheReplyAsSaid) {
    const WireFault cases[] = {
        {"silence", {.kind = FaultKind::silence}, ""},
        {"bad_bcc", {.kind = FaultKind::bad_bcc}, "02 00 04 00 00 00 00 FF 03"},
        {"wrong_etx", {.kind = FaultKind::wrong_etx}, "02 00 04 00 00 00 00 00 FF"},
        {"cut, half", {.kind = FaultKind::cut}, "02 00 04 00"},
        {"cut, given", {.kind = FaultKind::cut, .keep = 7}, "02 00 04 00 00 00 00"},
        {"oversized, huge", {.kind = FaultKind::oversized}, "02 FF FF 00 00 00 00 00 03"},
        {"oversized, given", {.kind = FaultKind::oversized, .announced_length = 0x0104}, "02 01 04 00 00 00 00 00 03"},
        {"garbage, default", {.kind = FaultKind::garbage}, "AA 55 FF 02 00 04 00 00 00 00 00 03"},
        {"garbage, given", {.kind = FaultKind::garbage, .garbage = hex("00 00")}, "00 00 02 00 04 00 00 00 00 00 03"},
        {"status", {.kind = FaultKind::status, .status = 0x6A82}, "02 00 03 6A 82 00 E8 03"},
    };
    for (const WireFault& entry : cases) {
        const auto terminal = terminal_with(entry.fault);
        EXPECT_EQ(terminal->answer(card_state_request), hex(entry.wire)) << entry.name;
    }
}

TEST(Faults, TimesCountsDownThenRepliesAreWhole) {
    const auto terminal = terminal_with({.kind = FaultKind::silence}, 2);
    EXPECT_TRUE(terminal->answer(card_state_request).empty());
    EXPECT_TRUE(terminal->answer(card_state_request).empty());
    EXPECT_EQ(terminal->answer(card_state_request), card_state_reply);
    EXPECT_EQ(terminal->answer(card_state_request), card_state_reply);
}

TEST(Faults, AlwaysKeepsHitting) {
    const auto terminal = terminal_with({.kind = FaultKind::wrong_etx});
    for (int i = 0; i < 5; ++i) EXPECT_EQ(terminal->answer(card_state_request).back(), 0xFF);
}

TEST(Faults, OnlyTheNamedCommandIsHit) {
    const auto terminal = terminal_with({.kind = FaultKind::silence});
    EXPECT_FALSE(terminal->answer(hex("02 00 03 00 01 00 01 03")).empty());
    EXPECT_FALSE(terminal->answer(hex("02 00 03 01 07 00 06 03")).empty()) << "class 01, instruction 07";
}

TEST(Faults, FirstMatchingRuleWithUsesLeftApplies) {
    Scenario scenario;
    scenario.faults.push_back({0x00, 0x07, {.kind = FaultKind::silence}, 1});
    scenario.faults.push_back({0x00, 0x07, {.kind = FaultKind::wrong_etx}, 1});
    const auto terminal = make_terminal(scenario);
    EXPECT_TRUE(terminal->answer(card_state_request).empty());
    EXPECT_EQ(terminal->answer(card_state_request).back(), 0xFF);
    EXPECT_EQ(terminal->answer(card_state_request), card_state_reply);
}

TEST(Faults, StatusFaultLeavesTheCommandUndone) {
    Scenario scenario;
    scenario.control.eeprom = Bytes(256, 0xFF);
    scenario.faults.push_back({0x00, 0x0A, {.kind = FaultKind::status, .status = 0x6581}, 1});
    const auto terminal = make_terminal(scenario);
    const Bytes write = encode_frame(hex("00 0A 00 00 00 02 12 34"));
    EXPECT_EQ(terminal->answer(write), encode_frame(reply_payload(0x6581, {})));
    EXPECT_EQ(terminal->model<ControlModel>()->eeprom()[0], 0xFF);
    EXPECT_EQ(terminal->answer(write), encode_frame(reply_payload(status::ok, {})));
    EXPECT_EQ(terminal->model<ControlModel>()->eeprom()[0], 0x12);
}

TEST(Faults, WireFaultsStillCarryOutTheCommand) {
    Scenario scenario;
    scenario.faults.push_back({0x00, 0x02, {.kind = FaultKind::silence}, std::nullopt});
    const auto terminal = make_terminal(scenario);
    EXPECT_TRUE(terminal->answer(encode_frame(hex("00 02 00 01 01 01"))).empty());
    EXPECT_EQ(terminal->model<ControlModel>()->beeps().size(), 1u);
}

TEST(Faults, ReachTheSerialWire) {
    const auto terminal = terminal_with({.kind = FaultKind::garbage});
    SerialEndpoint endpoint(*terminal);
    endpoint.receive(card_state_request);
    Bytes wire;
    while (const auto byte = endpoint.transmit()) wire.push_back(*byte);
    EXPECT_EQ(wire, hex("AA 55 FF 02 00 04 00 00 00 00 00 03"));
}

TEST(Faults, ReachTheHidReports) {
    // Garbage goes before the STX inside the first report; silence leaves nothing to read.
    const auto garbled = terminal_with({.kind = FaultKind::garbage}, 1);
    HidEndpoint endpoint(*garbled, 256);
    Bytes report(256, 0);
    report[0] = feature_report_id;
    std::copy(card_state_request.begin(), card_state_request.end(), report.begin() + 1);
    ASSERT_TRUE(endpoint.set_feature(report));
    Bytes reply(256, 0);
    reply[0] = feature_report_id;
    ASSERT_TRUE(endpoint.get_feature(reply));
    EXPECT_EQ(Bytes(reply.begin() + 1, reply.begin() + 13), hex("AA 55 FF 02 00 04 00 00 00 00 00 03"));

    const auto silent = terminal_with({.kind = FaultKind::silence});
    HidEndpoint quiet(*silent, 256);
    ASSERT_TRUE(quiet.set_feature(report));
    EXPECT_FALSE(quiet.get_feature(reply));
}

}  // namespace
}  // namespace qz::sim
