#include "sim/endpoints/serial_endpoint.h"

#include <gtest/gtest.h>

#include "sim/core/status.h"
#include "sim_test_helpers.h"

namespace qz::sim {
namespace {

using test::Bytes;
using test::hex;

Bytes drain(SerialEndpoint& endpoint) {
    Bytes bytes;
    while (const auto byte = endpoint.transmit()) bytes.push_back(*byte);
    return bytes;
}

Bytes version_reply() { return encode_frame(reply_payload(status::ok, hex("51 5A 2D 53 49 4D 20 56 31 2E 30 30"))); }

class SerialEndpointTest : public ::testing::Test {
protected:
    std::shared_ptr<Terminal> terminal = test::echo_terminal();
    SerialEndpoint endpoint{*terminal};
};

TEST_F(SerialEndpointTest, AnswersAFrameWithStxFirst) {
    endpoint.receive(hex("02 00 03 00 01 00 01 03"));
    EXPECT_EQ(drain(endpoint), version_reply());
    EXPECT_FALSE(endpoint.transmit());
}

TEST_F(SerialEndpointTest, SkipsNoiseBeforeStx) {
    endpoint.receive(hex("00 FF 55 AA"));
    EXPECT_EQ(endpoint.pending(), 0u);
    EXPECT_FALSE(endpoint.receiving());
    endpoint.receive(hex("13 02 00 03 00 01 00 01 03"));
    EXPECT_EQ(drain(endpoint), version_reply());
}

TEST_F(SerialEndpointTest, AnswersFramesSplitAndBackToBack) {
    const Bytes request = hex("02 00 03 00 01 00 01 03");
    for (std::uint8_t byte : request) {
        EXPECT_EQ(endpoint.pending(), 0u);
        endpoint.receive(std::span(&byte, 1));
    }
    Bytes twice = request;
    twice.insert(twice.end(), request.begin(), request.end());
    endpoint.receive(twice);
    Bytes expected = version_reply();
    const Bytes one = expected;
    expected.insert(expected.end(), one.begin(), one.end());
    expected.insert(expected.end(), one.begin(), one.end());
    EXPECT_EQ(drain(endpoint), expected);
}

TEST_F(SerialEndpointTest, PurgeDropsHalfARequestAndUnsentReply) {
    endpoint.receive(hex("02 00 03 00 01 00 01 03"));
    endpoint.receive(hex("02 00 03 00"));
    EXPECT_TRUE(endpoint.receiving());
    endpoint.purge();
    EXPECT_FALSE(endpoint.receiving());
    EXPECT_EQ(endpoint.pending(), 0u);
    endpoint.receive(hex("02 00 03 00 07 00 07 03"));
    EXPECT_EQ(drain(endpoint), encode_frame(reply_payload(status::ok, hex("00"))));
}

TEST_F(SerialEndpointTest, LongRepliesComeWhole) {
    endpoint.receive(encode_frame(test::ask_for(3000)));
    EXPECT_EQ(drain(endpoint), encode_frame(reply_payload(status::ok, test::pattern(3000))));
}

}  // namespace
}  // namespace qz::sim
