#include "sim/core/frame_codec.h"

#include <gtest/gtest.h>

#include "sim_test_helpers.h"

namespace qz::sim {
namespace {

using test::Bytes;
using test::hex;

TEST(FrameCodec, EncodesFramesByteForByte) {
    EXPECT_EQ(encode_frame(hex("00 01 00")), hex("02 00 03 00 01 00 01 03"));
    EXPECT_EQ(encode_frame({}), hex("02 00 00 00 03"));
    EXPECT_EQ(encode_frame(reply_payload(0, hex("41 42"))), hex("02 00 05 00 00 00 41 42 03 03"));
    EXPECT_EQ(reply_payload(0x6A82, {}), hex("6A 82 00"));
}

TEST(FrameCodec, LengthFieldIsBigEndian) {
    const auto frame = encode_frame(Bytes(0x0123, 0));
    ASSERT_EQ(frame.size(), 0x0123u + 5);
    EXPECT_EQ(frame[1], 0x01);
    EXPECT_EQ(frame[2], 0x23);
}

TEST(FrameCodec, RefusesPayloadsBeyondTheFrameLimit) {
    EXPECT_NO_THROW(encode_frame(Bytes(max_frame_length - 5)));
    EXPECT_THROW(encode_frame(Bytes(max_frame_length - 4)), std::length_error);
}

TEST(FrameCodec, PayloadOfAGoodFrame) {
    const Bytes frame = hex("02 00 03 00 01 00 01 03");
    const auto payload = frame_payload(frame);
    ASSERT_TRUE(payload);
    EXPECT_EQ(Bytes(payload->begin(), payload->end()), hex("00 01 00"));
    EXPECT_TRUE(frame_payload(hex("02 00 00 00 03")));
}

TEST(FrameCodec, DamagedFramesHaveNoPayload) {
    for (const char* damaged : {"02 00 03 00 01 00 00 03",  // BCC
                                "02 00 03 00 01 00 01 04",  // ETX
                                "03 00 03 00 01 00 01 03",  // STX
                                "02 00 03 00"}) {           // too short
        EXPECT_FALSE(frame_payload(hex(damaged))) << damaged;
    }
}

TEST(FrameCollector, TakesAFrameInAnyPortions) {
    const Bytes frame = hex("02 00 04 C1 02 00 10 D3 03");
    for (std::size_t portion = 1; portion <= frame.size(); ++portion) {
        FrameCollector collector;
        for (std::size_t offset = 0; offset < frame.size(); offset += portion) {
            EXPECT_FALSE(collector.complete());
            const auto piece = std::span(frame).subspan(offset, std::min(portion, frame.size() - offset));
            EXPECT_EQ(collector.feed(piece), piece.size());
        }
        ASSERT_TRUE(collector.complete()) << "portion " << portion;
        EXPECT_EQ(Bytes(collector.frame().begin(), collector.frame().end()), frame);
    }
}

TEST(FrameCollector, DropsNoiseBeforeStxAndStopsAtTheFrameEnd) {
    FrameCollector collector;
    EXPECT_EQ(collector.feed(hex("FF 00 55")), 3u);
    EXPECT_FALSE(collector.started());
    const Bytes stream = hex("AA 02 00 00 00 03 02 00");
    EXPECT_EQ(collector.feed(stream), 6u);  // the next frame's bytes are left
    ASSERT_TRUE(collector.complete());
    EXPECT_EQ(Bytes(collector.frame().begin(), collector.frame().end()), hex("02 00 00 00 03"));
    collector.reset();
    EXPECT_FALSE(collector.started());
}

}  // namespace
}  // namespace qz::sim
