#include <gtest/gtest.h>

#include "link/frame.h"
#include "support/scripted_terminal.h"

namespace qz::test {
namespace {

Bytes build(const Bytes& payload) {
    Bytes frame(payload.size() + 5);
    link::build_frame(payload, frame);
    return frame;
}

TEST(Frame, KnownFramesWithTheLengthBigEndian) {
    EXPECT_EQ(build({0x00, 0x01, 0x00}), (Bytes{0x02, 0x00, 0x03, 0x00, 0x01, 0x00, 0x01, 0x03}));
    EXPECT_EQ(build({}), (Bytes{0x02, 0x00, 0x00, 0x00, 0x03}));
    EXPECT_EQ(build({0x00, 0x00, 0x00, 0x41, 0x42}),
              (Bytes{0x02, 0x00, 0x05, 0x00, 0x00, 0x00, 0x41, 0x42, 0x03, 0x03}));
    const Bytes frame = build(Bytes(0x1234, 0xAA));
    EXPECT_EQ(Bytes(frame.begin(), frame.begin() + 3), (Bytes{0x02, 0x12, 0x34}));
}

TEST(Frame, CheckAcceptsOnlyZeroXor) {
    EXPECT_EQ(link::frame_check(Bytes{}), 0);
    EXPECT_EQ(link::frame_check(Bytes{0x5A, 0x5A}), 0);
    EXPECT_EQ(link::frame_check(Bytes{0x5A, 0x5B}), -36);
    EXPECT_EQ(link::frame_bcc(Bytes{}), 0);
}

}  // namespace
}  // namespace qz::test
