#include <gtest/gtest.h>

#include <array>

#include "link/link_state.h"
#include "link/transact.h"
#include "support/scripted_terminal.h"

namespace qz::test {
namespace {

class SerialTransact : public ::testing::Test {
protected:
    void SetUp() override {
        os.add_serial_port({.name = "COM1"});
        handle = os.platform.serial_open("COM1", {.baud = 9600, .read_timeout_ms = 100});
        link::link_state().kind = link::LinkKind::serial;
        link::set_link_timeouts(1000, 0);
    }

    int transact(const Bytes& payload) { return link::dev_transact(handle, payload, length, reply); }

    ScriptedTerminal os;
    int handle = 0;
    int length = -1;
    std::array<std::uint8_t, 512> reply{};
};

TEST_F(SerialTransact, FrameGoesOutWholeAfterAPurge) {
    os.respond = [](const Bytes&) { return make_reply(0, {0x41, 0x42}); };
    ASSERT_EQ(transact({0x00, 0x01, 0x00}), 0);
    EXPECT_EQ(os.platform.purges("COM1"), 1);
    EXPECT_EQ(os.platform.bytes_written("COM1"), (Bytes{0x02, 0x00, 0x03, 0x00, 0x01, 0x00, 0x01, 0x03}));
    EXPECT_EQ(length, 2);
    EXPECT_EQ(reply[0], 0x41);
    EXPECT_EQ(reply[1], 0x42);
}

TEST_F(SerialTransact, SilenceGivesNoStxAfterOneReadTime) {
    os.respond = [](const Bytes&) { return Bytes{}; };
    const std::uint32_t start = os.platform.tick_ms();
    EXPECT_EQ(transact({0x00, 0x01, 0x00}), -34);
    EXPECT_GE(os.platform.tick_ms() - start, 1000u);
    EXPECT_LE(os.platform.tick_ms() - start, 1100u);
}

// A reply that stops coming ends at the first byte that does not come, however
// much it announced, with no ETX at its end.
TEST_F(SerialTransact, CutFrameEndsOneReadTimeAfterItsLastByte) {
    const Bytes announces_200 = make_reply(0, Bytes(197, 0x21));
    const Bytes whole = make_reply(0, Bytes(10, 0x21));
    for (std::size_t sent : {std::size_t{1}, std::size_t{2}, std::size_t{3}, std::size_t{10}, whole.size() - 1}) {
        for (const Bytes* reply : {&announces_200, &whole}) {
            SCOPED_TRACE(testing::Message() << sent << " of " << reply->size() << " bytes");
            os.respond = [&](const Bytes&) {
                return Bytes(reply->begin(), reply->begin() + static_cast<std::ptrdiff_t>(sent));
            };
            const std::uint32_t start = os.platform.tick_ms();
            EXPECT_EQ(transact({0x00}), -35);
            EXPECT_LE(os.platform.tick_ms() - start, 1000u + 100u);
            EXPECT_EQ(length, 0);
        }
    }
}

TEST_F(SerialTransact, UnknownHandleFailsOnTheFirstWrite) {
    EXPECT_EQ(link::dev_transact(handle + 50, Bytes{0x00, 0x01, 0x00}, length, reply), -24);
    EXPECT_EQ(link::serial_read_byte(handle + 50, reply[0]), platform::ByteRead::failed);
}

}  // namespace
}  // namespace qz::test
