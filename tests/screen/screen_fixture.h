// The scripted terminal with an open HID link, for the screen's exports: records
// each request payload with the read time-out it ran under.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "link/link_state.h"
#include "support/payloads.h"
#include "support/scripted_terminal.h"

namespace qz::test {

class ScreenTest : public ::testing::Test {
protected:
    void SetUp() override {
        handle = os.open_hid_link();
        os.respond = [this](const Bytes&) {
            read_ms.push_back(link::link_state().read_ms);
            const bool fail = fail_at >= 0 && static_cast<int>(payloads().size()) == fail_at + 1;
            return make_reply(fail ? 0x6A80 : 0, reply_data);
        };
    }

    std::vector<Bytes> payloads() const { return os.payloads(); }

    ScriptedTerminal os;
    int handle = 0;
    std::vector<std::uint32_t> read_ms;  // of each request, in order
    int fail_at = -1;                    // index of the request that fails with 0x6A80
    Bytes reply_data;
};

}  // namespace qz::test
