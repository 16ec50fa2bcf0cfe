// A scripted terminal on an open HID link for the PIN entry tests, with the PIN
// pad's process-wide state at its values at load around each test.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "link/link_state.h"
#include "pinpad/pad_state.h"
#include "support/payloads.h"
#include "support/scripted_terminal.h"

namespace qz::test {

// The digits of an ISO 9564 format 0 PIN block, deciphered, given the account field;
// "?" when the block isn't one.
inline std::string format0_pin(const Bytes& block, const Bytes& account) {
    std::vector<int> nibbles;
    for (std::size_t i = 0; i < 8; ++i) {
        const int byte = block.at(i) ^ account.at(i);
        nibbles.push_back(byte >> 4);
        nibbles.push_back(byte & 0xF);
    }
    const auto length = static_cast<std::size_t>(nibbles[1]);
    if (nibbles[0] != 0 || length < 4 || length > 12) return "?";
    std::string digits;
    for (std::size_t i = 0; i < length; ++i) {
        if (nibbles[2 + i] > 9) return "?";
        digits += static_cast<char>('0' + nibbles[2 + i]);
    }
    for (std::size_t i = 2 + length; i < nibbles.size(); ++i)
        if (nibbles[i] != 0xF) return "?";
    return digits;
}

class PinTest : public ::testing::Test {
protected:
    void SetUp() override {
        pinpad::reset_pad_state();
        icdev = os.open_hid_link();
    }
    void TearDown() override { pinpad::reset_pad_state(); }

    Bytes last_payload() const { return os.last_payload(); }
    std::uint32_t read_ms() const { return link::link_state().read_ms; }

    // Both gates of the external pad open, as after the two settings succeeded.
    static void open_gates() {
        auto& state = pinpad::pad_state();
        state.pwdkb_timeout_set = true;
        state.pwdkb_pwdlen_set = true;
    }

    // Every request answered with status 0 and `data`.
    void answer_with(const Bytes& data) {
        os.respond = [data](const Bytes&) { return make_reply(0, data); };
    }

    ScriptedTerminal os;
    int icdev = 0;
};

}  // namespace qz::test
