#include "sim/endpoints/hid_endpoint.h"

#include <gtest/gtest.h>

#include "sim/core/status.h"
#include "sim_test_helpers.h"

namespace qz::sim {
namespace {

using test::Bytes;
using test::hex;

// Writes `frame` as the host does: pieces of 254 bytes, each right behind the
// report id of a zeroed report.
void send_frame(HidEndpoint& endpoint, const Bytes& frame) {
    for (std::size_t offset = 0; offset < frame.size(); offset += hid_piece_length) {
        Bytes report(endpoint.report_length(), 0);
        report[0] = feature_report_id;
        const std::size_t count = std::min(hid_piece_length, frame.size() - offset);
        std::copy_n(frame.begin() + static_cast<std::ptrdiff_t>(offset), count, report.begin() + 1);
        ASSERT_TRUE(endpoint.set_feature(report));
    }
}

// Reads reports until the endpoint has none ready.
std::vector<Bytes> read_reports(HidEndpoint& endpoint) {
    std::vector<Bytes> reports;
    for (;;) {
        Bytes report(endpoint.report_length(), 0);
        report[0] = feature_report_id;
        const auto count = endpoint.get_feature(report);
        if (!count) return reports;
        EXPECT_EQ(*count, endpoint.report_length());
        reports.push_back(report);
    }
}

// The reply frame carried by `reports`: 254 bytes behind each report id.
Bytes joined(const std::vector<Bytes>& reports, std::size_t frame_length) {
    Bytes frame;
    for (const Bytes& report : reports) frame.insert(frame.end(), report.begin() + 1, report.begin() + 1 + 254);
    frame.resize(frame_length);
    return frame;
}

class HidEndpointTest : public ::testing::TestWithParam<std::uint16_t> {
protected:
    std::shared_ptr<Terminal> terminal = test::echo_terminal();
    HidEndpoint endpoint{*terminal, GetParam()};
};

TEST_P(HidEndpointTest, ReassemblesRequestsFromPieces) {
    // Request frames of 254, 255, 508 and 509 bytes: one, two, two and three pieces.
    for (std::size_t frame_length : {254u, 255u, 508u, 509u}) {
        Bytes payload{test::EchoModel::class_byte, 0x01};
        const Bytes body = test::pattern(frame_length - 7);
        payload.insert(payload.end(), body.begin(), body.end());
        const Bytes request = encode_frame(payload);
        ASSERT_EQ(request.size(), frame_length);
        send_frame(endpoint, request);

        const Bytes expected = encode_frame(reply_payload(status::ok, body));
        const auto reports = read_reports(endpoint);
        ASSERT_EQ(reports.size(), (expected.size() + 253) / 254) << "request frame of " << frame_length;
        EXPECT_EQ(joined(reports, expected.size()), expected) << "request frame of " << frame_length;
    }
}

TEST_P(HidEndpointTest, DeliversRepliesInPiecesOf254) {
    // Reply frames of 254, 255, 508 and 509 bytes.
    for (std::size_t frame_length : {254u, 255u, 508u, 509u}) {
        send_frame(endpoint, encode_frame(test::ask_for(frame_length - 8)));
        const auto reports = read_reports(endpoint);
        ASSERT_EQ(reports.size(), (frame_length + 253) / 254) << "reply frame of " << frame_length;
        EXPECT_EQ(reports[0][1], stx);
        const Bytes expected = encode_frame(reply_payload(status::ok, test::pattern(frame_length - 8)));
        EXPECT_EQ(joined(reports, frame_length), expected);
        // Behind the piece the report is zero.
        const Bytes& last = reports.back();
        const std::size_t last_piece = frame_length - 254 * (reports.size() - 1);
        EXPECT_TRUE(std::all_of(last.begin() + 1 + static_cast<std::ptrdiff_t>(last_piece), last.end(),
                                [](std::uint8_t byte) { return byte == 0; }));
    }
}

INSTANTIATE_TEST_SUITE_P(ReportLengths, HidEndpointTest, ::testing::Values(255, 256, 300));

TEST(HidEndpoint, GetFeatureFailsAtOnceWithoutAReply) {
    const auto terminal = test::echo_terminal();
    HidEndpoint endpoint(*terminal, 256);
    Bytes report(256, 0);
    report[0] = feature_report_id;
    EXPECT_FALSE(endpoint.get_feature(report));
    send_frame(endpoint, encode_frame(hex("00 01 00")));
    EXPECT_TRUE(endpoint.get_feature(report));
    EXPECT_FALSE(endpoint.get_feature(report)) << "the reply was one piece";
}

TEST(HidEndpoint, RefusesOtherReportsAndLengths) {
    const auto terminal = test::echo_terminal();
    HidEndpoint endpoint(*terminal, 256);
    Bytes report(256, 0);
    report[0] = 5;
    report[1] = stx;
    EXPECT_FALSE(endpoint.set_feature(report));
    EXPECT_FALSE(endpoint.set_feature(Bytes(255, feature_report_id)));
    EXPECT_FALSE(endpoint.set_feature(Bytes(257, feature_report_id)));

    send_frame(endpoint, encode_frame(hex("00 01 00")));
    Bytes wrong_id(256, 0);
    wrong_id[0] = 7;
    EXPECT_FALSE(endpoint.get_feature(wrong_id));
    Bytes short_buffer(255, 0);
    short_buffer[0] = feature_report_id;
    EXPECT_FALSE(endpoint.get_feature(short_buffer));
    EXPECT_TRUE(endpoint.reply_pending()) << "a refused read must not use up the reply";

    EXPECT_THROW(HidEndpoint(*terminal, 254), std::invalid_argument);
    EXPECT_THROW(HidEndpoint(*terminal, 301), std::invalid_argument);
}

TEST(HidEndpoint, IgnoresAReportThatStartsNoFrame) {
    const auto terminal = test::echo_terminal();
    HidEndpoint endpoint(*terminal, 256);
    Bytes stray(256, 0);
    stray[0] = feature_report_id;
    stray[1] = 0x55;
    EXPECT_TRUE(endpoint.set_feature(stray));
    EXPECT_FALSE(endpoint.reply_pending());
    send_frame(endpoint, encode_frame(hex("00 01 00")));
    EXPECT_TRUE(endpoint.reply_pending());
}

TEST(HidEndpoint, ANewRequestDropsTheRestOfTheLastReply) {
    const auto terminal = test::echo_terminal();
    HidEndpoint endpoint(*terminal, 256);
    send_frame(endpoint, encode_frame(test::ask_for(600)));  // three pieces
    Bytes report(256, 0);
    report[0] = feature_report_id;
    ASSERT_TRUE(endpoint.get_feature(report));

    send_frame(endpoint, encode_frame(hex("00 07 00")));
    const auto reports = read_reports(endpoint);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(joined(reports, 9), encode_frame(reply_payload(status::ok, hex("00"))));
}

TEST(HidEndpoint, DamagedRequestIsAnsweredWithAStatus) {
    const auto terminal = test::echo_terminal();
    HidEndpoint endpoint(*terminal, 256);
    send_frame(endpoint, hex("02 00 03 00 01 00 00 03"));  // bad BCC
    const auto reports = read_reports(endpoint);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(joined(reports, 8), encode_frame(reply_payload(status::damaged_request, {})));
}

}  // namespace
}  // namespace qz::sim
