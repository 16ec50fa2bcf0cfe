// Exact payloads and reply handling of the stripe, mechanism and scanner
// commands, against a scripted terminal.
#include <gtest/gtest.h>

#include <array>
#include <functional>

#include "link/link_state.h"
#include "qz_32.h"
#include "support/payloads.h"
#include "support/scripted_terminal.h"

namespace qz::test {
namespace {

class Commands : public ::testing::Test {
protected:
    void SetUp() override { icdev = os.open_hid_link(); }
    Bytes last_payload() const { return os.last_payload(); }
    void answer_with(const Bytes& data) {
        os.respond = [data](const Bytes&) { return make_reply(0, data); };
    }

    ScriptedTerminal os;
    int icdev = 0;
    unsigned int status = 0xEEEE;
    std::array<unsigned char, 1024> out{};
    unsigned short rlen = 0xEEEE;
};

TEST_F(Commands, PayloadsOfTheMechanismStripeAndScanner) {
    const unsigned char data[3] = {0xA1, 0xB2, 0xC3};
    unsigned char length = 0;
    answer_with({0x80});
    expect_payloads(os, {
        {[&] { return ds_command_trn(icdev, data, 3, out.data(), &rlen); }, {0xC8, 0x00, 0x00, 0xA1, 0xB2, 0xC3}},
        {[&] { return return_card(icdev); }, {0x00, 0x10, 0x00}},
        {[&] { return magnetic_gate_test(icdev, 0x42); }, {0x00, 0x11, 0x00, 0x42}},
        {[&] { return motor_test(icdev, 0x01, 0x02); }, {0x00, 0x12, 0x00, 0x01, 0x02}},
        {[&] { return Query_status(icdev, &status); }, {0x00, 0x13, 0x00}},
        {[&] { return AGING_test(icdev, 0x09, &status); }, {0x00, 0x14, 0x00, 0x09}},
        {[&] { return Move_Card(icdev, 1); }, {0x00, 0x15, 0x00, 0x01}},
        {[&] { return Move_Card(icdev, 0); }, {0x00, 0x15, 0x00, 0x00}},
        {[&] { return get_device_status(icdev, out.data()); }, {0x00, 0x0E, 0x00}},
        {[&] { return Get_CARD_ID(icdev, out.data()); }, {0xC8, 0x01, 0x00}},
        {[&] { return setmagic_mode(icdev, 1); }, {0xC6, 0x00, 0x00, 0x01}},
        {[&] { return get_barcode(icdev, 2, &length, out.data()); }, {0xC6, 0x01, 0x00, 0x02}},
        {[&] { return get_barcode(icdev, 10, &length, out.data()); }, {0xC6, 0x01, 0x00, 0x0A}},
        {[&] { return get_barcode_continuous(icdev, 5); }, {0xC6, 0x02, 0x00, 0x05}},
        {[&] { return set_scaner_output(icdev, 0xFF); }, {0xC6, 0x04, 0x00, 0xFF}},
    });
    EXPECT_EQ(status, 128u) << "the status byte is widened, not sign-extended";
}

TEST_F(Commands, ArgumentsOutOfRangeSendNothing) {
    unsigned char length = 0;
    rlen = 7;
    for (int result : {Move_Card(icdev, 2), Move_Card(icdev, -1), setmagic_mode(icdev, 2),
                       get_barcode(icdev, 1, &length, out.data()), get_barcode(icdev, 11, &length, out.data()),
                       get_barcode_continuous(icdev, 1), ds_command_trn(icdev, out.data(), 0, out.data(), &rlen),
                       ds_command_trn(icdev, out.data(), 998, out.data(), &rlen)})
        EXPECT_EQ(result, -19);
    EXPECT_EQ(rlen, 0);
    EXPECT_TRUE(os.requests.empty());
}

TEST_F(Commands, TrackLayouts) {
    std::array<unsigned char, 3> lengths{9, 9, 9};
    std::array<std::array<unsigned char, 255>, 3> tracks{};
    const auto read = [&] {
        return readmagic_data(icdev, &lengths[0], tracks[0].data(), &lengths[1], tracks[1].data(), &lengths[2],
                              tracks[2].data());
    };
    answer_with({0x03, 0x00, 0x02, 0x31, 0x32, 0x33, 0x41, 0x42});
    ASSERT_EQ(read(), 0);
    EXPECT_EQ(last_payload(), (Bytes{0xC6, 0x01, 0x00}));
    EXPECT_EQ(lengths, (std::array<unsigned char, 3>{3, 0, 2}));
    EXPECT_EQ(Bytes(tracks[0].begin(), tracks[0].begin() + 4), (Bytes{0x31, 0x32, 0x33, 0x00}));
    EXPECT_EQ(Bytes(tracks[2].begin(), tracks[2].begin() + 3), (Bytes{0x41, 0x42, 0x00}));

    lengths = {9, 9, 9};
    answer_with({0x02, 0x00, 0x02, 0x31, 0x32, 0x41});
    EXPECT_EQ(read(), -39) << "lengths that reach past the reply";
    os.respond = [](const Bytes&) { return make_reply(0x6400); };
    EXPECT_EQ(read(), -0x6400);
    EXPECT_EQ(lengths, (std::array<unsigned char, 3>{9, 9, 9}));
}

TEST_F(Commands, RepliesShorterThanTheOutputs) {
    answer_with({});
    EXPECT_EQ(Query_status(icdev, &status), -39);
    EXPECT_EQ(status, 0xEEEEu);
    unsigned char device = 0x55;
    os.respond = [](const Bytes&) { return make_reply(0x6A82); };
    EXPECT_EQ(get_device_status(icdev, &device), -0x6A82);
    EXPECT_EQ(device, 0) << "zero after a failure";

    answer_with({0x02, 0x41});
    unsigned version_length = 77;
    EXPECT_EQ(GetScanerVer(icdev, &version_length, out.data()), 0);
    EXPECT_EQ(version_length, 77u);
    unsigned char length = 9;
    EXPECT_EQ(get_barcode(icdev, 3, &length, out.data()), 0);
    EXPECT_EQ(length, 2);
    answer_with({});
    EXPECT_EQ(get_barcode(icdev, 3, &length, out.data()), 0);
    EXPECT_EQ(length, 0);
}

TEST_F(Commands, CardIdentityAfterAFailedActivation) {
    os.respond = [](const Bytes& request) {
        return payload_of(request)[0] == 0xC8 ? make_reply(0, {0x5A, 0x3C, 0x91, 0x07}) : make_reply(0x6A82);
    };
    std::array<char, 12> text;
    text.fill('#');
    ASSERT_EQ(Get_CARD_ID_hex(icdev, text.data()), 0);
    EXPECT_EQ(std::string(text.data(), 10), std::string("5A3C9107\0#", 10));
    EXPECT_EQ(os.requests.size(), 2u) << "the card is activated first";
}

TEST_F(Commands, TwoDimensionCodeDirectRouteTiming) {
    std::uint32_t read_ms_seen = 0;
    os.respond = [&](const Bytes& request) {
        read_ms_seen = link::link_state().read_ms;
        if (payload_of(request)[5] == 0x51) return make_reply(0, {0x02, 'V', 0x03});
        return make_reply(0, {0x02, 'A', 'B', 0x03});
    };
    std::array<char, 8> text{};
    ASSERT_EQ(GetTwoDimensionCode(icdev, 30, text.data()), 0);
    EXPECT_EQ(last_payload(), (Bytes{0xC5, 0x0F, 0x2C, 0x1B, 0x48, 0x50}));
    EXPECT_EQ(read_ms_seen, 30050u);
    EXPECT_EQ(link::link_state().read_ms, 5000u);
    EXPECT_STREQ(text.data(), "AB");
}

TEST_F(Commands, TwoDimensionCodeWrongAcknowledgement) {
    os.respond = [](const Bytes& request) {
        const Bytes payload = payload_of(request);
        if (payload[0] == 0xC5) return make_reply(0x6D00);
        return make_reply(0, payload == Bytes{0xC6, 0x02, 0x00, 0x01} ? Bytes{0x02, 0x00, 0x00, 0x01, 0x00, 0x33, 0x30}
                                                                       : Bytes{});
    };
    std::array<char, 8> text{};
    EXPECT_EQ(GetTwoDimensionCode(icdev, 5, text.data()), -1);
    EXPECT_EQ(last_payload(), (Bytes{0xC6, 0x03, 0x00, 0x00})) << "end is sent, the stop frame is not";
}

}  // namespace
}  // namespace qz::test
