#include <gtest/gtest.h>

#include <array>

#include "link/link_state.h"
#include "link/transact.h"
#include "support/scripted_terminal.h"

namespace qz::test {
namespace {

class HidTransact : public ::testing::Test {
protected:
    void SetUp() override {
        handle = os.open_hid_link();
    }

    int transact(const Bytes& payload) { return link::dev_transact(handle, payload, length, reply); }
    const std::vector<Bytes>& written() const { return os.platform.reports_written("/dev/hidraw0"); }
    void stray(Bytes report) { os.platform.queue_stray_report("/dev/hidraw0", std::move(report)); }

    Bytes report(std::size_t offset, const Bytes& bytes) {
        Bytes r(300, 0);
        r[0] = 6;
        std::copy(bytes.begin(), bytes.end(), r.begin() + 1 + static_cast<std::ptrdiff_t>(offset));
        return r;
    }

    ScriptedTerminal os;
    int handle = 0;
    int length = -1;
    std::array<std::uint8_t, 1024> reply{};
};

// Payload sizes giving frames of 254, 255, 508 and 509 bytes.
TEST_F(HidTransact, RequestIsCutInPiecesOf254) {
    struct Case {
        std::size_t frame;
        std::vector<std::size_t> pieces;
    };
    for (const Case& c : {Case{254, {254}}, Case{255, {254, 1}}, Case{508, {254, 254}}, Case{509, {254, 254, 1}}}) {
        const std::size_t before = written().size();
        Bytes payload(c.frame - 5);
        for (std::size_t i = 0; i < payload.size(); ++i) payload[i] = static_cast<std::uint8_t>(i * 7 + 1);
        ASSERT_EQ(transact(payload), 0) << c.frame;
        const Bytes frame = make_frame(payload);
        ASSERT_EQ(written().size() - before, c.pieces.size()) << c.frame;
        std::size_t at = 0;
        for (std::size_t i = 0; i < c.pieces.size(); ++i) {
            const Bytes& report = written()[before + i];
            ASSERT_EQ(report.size(), 256u);
            EXPECT_EQ(report[0], 6);
            EXPECT_TRUE(std::equal(frame.begin() + static_cast<std::ptrdiff_t>(at),
                                   frame.begin() + static_cast<std::ptrdiff_t>(at + c.pieces[i]), report.begin() + 1));
            EXPECT_TRUE(std::all_of(report.begin() + 1 + static_cast<std::ptrdiff_t>(c.pieces[i]), report.end(),
                                    [](auto b) { return b == 0; }));
            at += c.pieces[i];
        }
    }
}

TEST_F(HidTransact, ReplyNeedsOneReadPer254Bytes) {
    for (auto [frame_size, reads] : {std::pair{254, 1}, std::pair{255, 2}, std::pair{509, 3}}) {
        const Bytes data(static_cast<std::size_t>(frame_size) - 8, 0x5C);
        os.respond = [&](const Bytes&) { return make_reply(0, data); };
        const int before = os.platform.hid_reads();
        ASSERT_EQ(transact({0x00, 0x01, 0x00}), 0);
        EXPECT_EQ(os.platform.hid_reads() - before, reads) << frame_size;
        EXPECT_EQ(length, frame_size - 8);
        EXPECT_TRUE(std::equal(data.begin(), data.end(), reply.begin()));
    }
}

TEST_F(HidTransact, StatusWordsBecomeResults) {
    struct Case {
        std::uint16_t status;
        int result;
    };
    for (const Case& c : {Case{0x0005, -5}, Case{0x6A82, -27266}, Case{0x8000, -32768}, Case{0x8001, 32767},
                          Case{0x9000, 28672}, Case{0xFFFF, 1}}) {
        os.respond = [&](const Bytes&) { return make_reply(c.status, {0x11, 0x22}); };
        reply.fill(0xEE);
        EXPECT_EQ(transact({0x00, 0x01, 0x00}), c.result) << std::hex << c.status;
        EXPECT_EQ(length, 0);
        EXPECT_EQ(reply[0], 0);     // cleared at the start, data not passed on
        EXPECT_EQ(reply[1], 0xEE);  // and nothing written behind it
    }
}

TEST_F(HidTransact, ShortReplyLengths) {
    os.respond = [](const Bytes&) { return make_reply(0); };
    EXPECT_EQ(transact({0x00}), 0);
    EXPECT_EQ(length, 0);
    // LEN below 3 holds no status bytes: refused, with no length and no data.
    for (const Bytes& payload : {Bytes{0x00, 0x00}, Bytes{0x00}, Bytes{}}) {
        os.respond = [&](const Bytes&) { return make_frame(payload); };
        reply.fill(0xEE);
        EXPECT_EQ(transact({0x00}), -39);
        EXPECT_EQ(length, 0);
        EXPECT_EQ(reply[1], 0xEE);
    }
}

TEST_F(HidTransact, DeviceBelowOneTouchesNothing) {
    for (int device : {0, -1}) {
        reply[0] = 0x77;
        length = 99;
        EXPECT_EQ(link::dev_transact(device, Bytes{0x00, 0x01, 0x00}, length, reply), -33);
        EXPECT_EQ(length, 99);
        EXPECT_EQ(reply[0], 0x77);
    }
    EXPECT_TRUE(written().empty());
}

TEST_F(HidTransact, StxIsSearchedUpToOffset254OfEachReport) {
    // A frame starting at offset 7 takes 254 bytes from there; the next report continues at 0.
    const Bytes frame = make_reply(0, Bytes(300, 0x33));
    os.respond = [](const Bytes&) { return Bytes{}; };
    stray(report(7, Bytes(frame.begin(), frame.begin() + 254)));
    stray(report(0, Bytes(frame.begin() + 254, frame.end())));
    ASSERT_EQ(transact({0x00}), 0);
    EXPECT_EQ(length, 300);
    EXPECT_EQ(reply[299], 0x33);

    const Bytes small = make_reply(0, {});
    Bytes at_254 = report(254, {0x02});
    stray(at_254);  // found at 254; its LEN and the rest read as zeros past the report
    EXPECT_NE(transact({0x00}), -34);

    for (int i = 0; i < 4; ++i) stray(report(255, small));
    const int before = os.platform.hid_reads();
    EXPECT_EQ(transact({0x00}), -34);
    EXPECT_EQ(os.platform.hid_reads() - before, 3);
}

TEST_F(HidTransact, ThreeEmptyReportsGiveNoStxAndNoFourthRead) {
    os.respond = [](const Bytes&) { return Bytes{}; };
    for (int i = 0; i < 5; ++i) stray(report(0, {}));
    const int before = os.platform.hid_reads();
    EXPECT_EQ(transact({0x00}), -34);
    EXPECT_EQ(os.platform.hid_reads() - before, 3);
    EXPECT_EQ(reply[0], 0);
    EXPECT_EQ(length, 0);
}

TEST_F(HidTransact, SilenceTimesOutAfterReadMs) {
    os.respond = [](const Bytes&) { return Bytes{}; };
    link::set_link_timeouts(300, 0);
    const std::uint32_t start = os.platform.tick_ms();
    EXPECT_EQ(transact({0x00, 0x01, 0x00}), -17);
    EXPECT_GE(os.platform.tick_ms() - start, 300u);
    EXPECT_LT(os.platform.tick_ms() - start, 400u);
}

TEST_F(HidTransact, ReplyLargerThanTheReplyAreaIsRefused) {
    os.respond = [](const Bytes&) { return make_reply(0, Bytes(20, 0x44)); };
    std::array<std::uint8_t, 16> small{};
    std::array<std::uint8_t, 4> guard{0xAB, 0xAB, 0xAB, 0xAB};
    EXPECT_EQ(link::dev_transact(handle, Bytes{0x00}, length, std::span(small)), -38);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(guard[0], 0xAB);

    std::array<std::uint8_t, 20> exact{};
    EXPECT_EQ(link::dev_transact(handle, Bytes{0x00}, length, std::span(exact)), 0);
    EXPECT_EQ(length, 20);
    EXPECT_EQ(exact[19], 0x44);

    // A LEN beyond any frame buffer: refused after the first report, no further reads.
    os.respond = [](const Bytes&) { return Bytes{0x02, 0xFF, 0xFF, 0x00, 0x00, 0x00}; };
    const int before = os.platform.hid_reads();
    EXPECT_EQ(transact({0x00}), -38);
    EXPECT_EQ(os.platform.hid_reads() - before, 1);
}

TEST_F(HidTransact, OversizedRequestIsRefusedBeforeSending) {
    EXPECT_EQ(transact(Bytes(65526, 0x00)), -37);
    EXPECT_TRUE(written().empty());
    EXPECT_EQ(transact(Bytes(65525, 0x00)), 0);
}

TEST_F(HidTransact, WriteGapAndSettleTimePerReport) {
    link::set_link_timeouts(5000, 10);
    const std::uint32_t start = os.platform.tick_ms();
    ASSERT_EQ(transact(Bytes(300, 0x01)), 0);  // two reports
    EXPECT_EQ(os.platform.tick_ms() - start, 2u * (10 + 5));
}

TEST_F(HidTransact, ReportLengthAboveTheBufferIsClamped) {
    link::link_state().hid_report_length = 1000;
    transact({0x00, 0x01, 0x00});  // the node of 256 refuses it
    EXPECT_EQ(written().back().size(), 300u);
}

TEST_F(HidTransact, RefusedReportUnknownHandleAndNoLinkKind) {
    EXPECT_EQ(link::dev_transact(handle + 100, Bytes{0x00}, length, reply), -1);
    EXPECT_EQ(link::hid_write_report(0, Bytes{0x00}), -18);
    EXPECT_EQ(link::hid_read_report(0, reply), -18);
    link::link_state().kind = link::LinkKind::none;  // takes the serial path
    EXPECT_EQ(link::dev_transact(4242, Bytes{0x00, 0x01, 0x00}, length, reply), -24);
}

}  // namespace
}  // namespace qz::test
