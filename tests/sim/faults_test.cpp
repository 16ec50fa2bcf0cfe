// Faults the simulator injects: which command they hit, how often, and what a
// status fault leaves undone. The damaged bytes are checked through the library
// on both real links (tests/e2e/link_faults_test.cpp).
#include "sim/core/faults.h"

#include <gtest/gtest.h>

#include "sim/core/frame_codec.h"
#include "sim/core/simulator.h"
#include "sim/core/status.h"
#include "sim/models/control/control_model.h"
#include "support/hex_bytes.h"

namespace qz::sim {
namespace {

using test::Bytes;
using test::hex;

const Bytes card_state_request = hex("02 00 03 00 07 00 07 03");
const Bytes card_state_reply = hex("02 00 04 00 00 00 00 00 03");

std::shared_ptr<Terminal> terminal_with(std::vector<FaultRule> rules) {
    Scenario scenario;
    scenario.control.eeprom = Bytes(256, 0xFF);
    scenario.faults = std::move(rules);
    return make_terminal(scenario);
}

TEST(Faults, RulesHitTheirOwnCommandAsOftenAsSaidInOrder) {
    const auto terminal = terminal_with({{0x00, 0x07, {.kind = FaultKind::silence}, 2},
                                         {0x00, 0x07, {.kind = FaultKind::wrong_etx}, 1}});
    EXPECT_FALSE(terminal->answer(hex("02 00 03 00 01 00 01 03")).empty()) << "another instruction";
    EXPECT_FALSE(terminal->answer(hex("02 00 03 01 07 00 06 03")).empty()) << "another class";
    EXPECT_TRUE(terminal->answer(card_state_request).empty());
    EXPECT_TRUE(terminal->answer(card_state_request).empty());
    EXPECT_EQ(terminal->answer(card_state_request).back(), 0xFF);
    EXPECT_EQ(terminal->answer(card_state_request), card_state_reply);
}

TEST(Faults, StatusLeavesTheCommandUndoneWireFaultsCarryItOut) {
    const Bytes write = encode_frame(hex("00 0A 00 00 00 02 12 34"));
    const auto refused = terminal_with({{0x00, 0x0A, {.kind = FaultKind::status, .status = 0x6581}, 1}});
    EXPECT_EQ(refused->answer(write), encode_frame(reply_payload(0x6581, {})));
    EXPECT_EQ(refused->model<ControlModel>()->eeprom()[0], 0xFF);

    const auto silenced = terminal_with({{0x00, 0x0A, {.kind = FaultKind::silence}, 1}});
    EXPECT_TRUE(silenced->answer(write).empty());
    EXPECT_EQ(silenced->model<ControlModel>()->eeprom()[0], 0x12);
}

}  // namespace
}  // namespace qz::sim
