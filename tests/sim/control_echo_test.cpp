// The diagnostic echo instruction of class 0x00: the body comes back unchanged,
// up to the largest reply a frame holds.
#include <gtest/gtest.h>

#include "sim/models/control/control_model.h"
#include "sim/core/frame_codec.h"
#include "sim/core/status.h"
#include "sim_test_helpers.h"

namespace qz::sim {
namespace {

using test::Bytes;
using test::hex;

constexpr std::size_t largest_body = max_frame_length - frame_overhead - 3;

Bytes echo_payload(const Bytes& body) {
    Bytes payload(2 + body.size());
    payload[1] = echo_instruction;
    std::copy(body.begin(), body.end(), payload.begin() + 2);
    return payload;
}

TEST(ControlEcho, AnswersTheBodyOfAnySize) {
    const auto terminal = make_terminal(Scenario{});
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{254}, std::size_t{5000}, largest_body}) {
        const Bytes body = test::pattern(size, 0x00);
        const Reply reply = terminal->execute(echo_payload(body));
        EXPECT_EQ(reply.status, status::ok) << size;
        EXPECT_EQ(reply.data, body) << size;
    }
}

TEST(ControlEcho, TheLargestEchoFillsAWholeFrame) {
    const auto terminal = make_terminal(Scenario{});
    const Bytes body = test::pattern(largest_body, 0x00);
    const Bytes reply = terminal->answer(encode_frame(echo_payload(body)));
    ASSERT_EQ(reply.size(), max_frame_length);
    EXPECT_EQ(Bytes(reply.begin(), reply.begin() + 6), hex("02 FF F5 00 00 00"));
    EXPECT_EQ(Bytes(reply.begin() + 6, reply.end() - 2), body);
}

TEST(ControlEcho, RefusesABodyNoReplyHolds) {
    const auto terminal = make_terminal(Scenario{});
    const Reply reply = terminal->execute(echo_payload(Bytes(largest_body + 1, 0x5A)));
    EXPECT_EQ(reply.status, status::wrong_length);
    EXPECT_TRUE(reply.data.empty());
}

}  // namespace
}  // namespace qz::sim
