// A terminal on an open HID link for the CPU card tests, answering from a queue.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <vector>

#include "cards/contactless.h"
#include "support/payloads.h"
#include "support/scripted_terminal.h"

namespace qz::test {

class CardTest : public ::testing::Test {
protected:
    void SetUp() override {
        icdev = os.open_hid_link();
        cards::saved_answer() = {};
        // Each request takes the next reply frame; with none left, status 0 and no data.
        os.respond = [this](const Bytes&) {
            if (replies.empty()) return make_reply(0);
            Bytes next = std::move(replies.front());
            replies.pop_front();
            return next;
        };
    }

    // Queues reply frames with status 0 carrying `data`.
    void answer(std::initializer_list<Bytes> data) {
        for (const Bytes& d : data) replies.push_back(make_reply(0, d));
    }

    std::vector<Bytes> payloads() const { return os.payloads(); }

    ScriptedTerminal os;
    std::deque<Bytes> replies;
    int icdev = 0;
};

}  // namespace qz::test
