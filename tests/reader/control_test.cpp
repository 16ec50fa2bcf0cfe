#include <gtest/gtest.h>

#include <array>

#include "link/link_state.h"
#include "qz_32.h"
#include "support/payloads.h"

namespace qz::test {
namespace {

class Control : public ::testing::Test {
protected:
    void SetUp() override {
        handle = os.open_hid_link();
    }
    Bytes last_payload() const { return os.last_payload(); }

    ScriptedTerminal os;
    int handle = 0;
};

TEST_F(Control, PayloadsOfTheSimpleCommands) {
    unsigned char state = 0;
    unsigned char snr[256] = {1, 2, 3};
    const unsigned char serial[1] = {0x5A};
    // As many data bytes as asked for: an EEPROM read gets its range.
    os.respond = [](const Bytes& frame) { return make_reply(0, Bytes(frame[4] == 0x0B ? 200 : 20, 0x00)); };
    expect_payloads(os, {
        {[&] { return dev_setbaud(handle, 4); }, {0x00, 0x04, 0x00, 0x04}},
        {[&] { return dev_beep(handle, 0x11, 0x22, 0x33); }, {0x00, 0x02, 0x00, 0x33, 0x22, 0x11}},
        {[&] { return dev_disp(handle, 0x07); }, {0x00, 0x03, 0x00, 0x07}},
        {[&] { return dev_cardstate(handle, &state); }, {0x00, 0x07, 0x00}},
        {[&] { return dev_readsnr(handle, 5, snr); }, {0x00, 0x09, 0x00, 0x06}},
        {[&] { return dev_readsnr(handle, 20, snr); }, {0x00, 0x09, 0x00, 0x14}},
        {[&] { return dev_readeeprom(handle, 3, 4, snr); }, {0x00, 0x0B, 0x00, 0x01, 0x00, 0x06}},
        {[&] { return dev_readeeprom(handle, 200, 200, snr); }, {0x00, 0x0B, 0x00, 100, 0x00, 200}},
        {[&] { return dev_readeeprom(handle, 8, 3, snr); }, {0x00, 0x0B, 0x00, 0x04, 0x00, 0x04}},
        // The serial number always goes out as 20 bytes.
        {[&] { return dev_writesnr(handle, 1, serial); }, concat({{0x00, 0x08, 0x00, 0x14, 0x5A}, Bytes(19, 0x00)})},
    });
}

TEST_F(Control, ArgumentsOutOfRangeSendNothing) {
    unsigned char buffer[256] = {};
    for (int result : {dev_setbaud(handle, 5), dev_readsnr(handle, 0, buffer), dev_readsnr(handle, 21, buffer),
                       dev_writesnr(handle, 0, buffer), dev_writesnr(handle, 21, buffer),
                       dev_readeeprom(handle, 201, 1, buffer), dev_readeeprom(handle, 0, 201, buffer),
                       dev_readeeprom(handle, 0, 0, buffer), dev_writeeeprom(handle, 201, 2, buffer),
                       dev_writeeeprom(handle, 0, 0, buffer), dev_cardstate(handle, nullptr),
                       dev_readregno(handle, nullptr, buffer)})
        EXPECT_EQ(result, -19);
    EXPECT_TRUE(os.requests.empty());
}

TEST_F(Control, ReadsHandOverOnlyWhatWasAskedFor) {
    os.respond = [](const Bytes&) { return make_reply(0, {0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5}); };
    std::array<unsigned char, 8> data;
    data.fill(0xEE);
    ASSERT_EQ(dev_readsnr(handle, 5, data.data()), 0);
    EXPECT_EQ(Bytes(data.begin(), data.begin() + 6), (Bytes{0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xEE}));

    data.fill(0xEE);
    ASSERT_EQ(dev_readeeprom(handle, 3, 4, data.data()), 0);  // reply bytes 1 to 4
    EXPECT_EQ(Bytes(data.begin(), data.begin() + 5), (Bytes{0xA1, 0xA2, 0xA3, 0xA4, 0xEE}));

    unsigned char state = 0xEE;
    ASSERT_EQ(dev_cardstate(handle, &state), 0);
    EXPECT_EQ(state, 0xA0);
}

TEST_F(Control, FailuresLeaveOutputsAlone) {
    os.respond = [](const Bytes&) { return make_reply(0x6A82); };
    unsigned char state = 0x42;
    unsigned char data[4] = {9, 9, 9, 9};
    EXPECT_EQ(dev_cardstate(handle, &state), -27266);
    EXPECT_EQ(state, 0x42);
    EXPECT_EQ(dev_readsnr(handle, 2, data), -27266);
    EXPECT_EQ(data[0], 9);
    unsigned char length = 0x33;
    EXPECT_EQ(dev_readregno(handle, &length, data), -27266);
    EXPECT_EQ(length, 0);  // the one output cleared on failure
}

TEST_F(Control, RegistrationNumberRunsWithShortTimeouts) {
    link::set_link_timeouts(1111, 22);
    os.respond = [](const Bytes&) {
        EXPECT_EQ(link::link_state().read_ms, 100u);
        return make_reply(0, {'R', 'E', 'G', '7'});
    };
    unsigned char length = 0;
    unsigned char data[255] = {};
    ASSERT_EQ(dev_readregno(handle, &length, data), 0);
    EXPECT_EQ(length, 4);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(data), 4), "REG7");
    EXPECT_EQ(link::link_state().read_ms, 5000u);
    EXPECT_EQ(link::link_state().write_gap_ms, 0u);
}

// A word-addressed EEPROM behind the scripted terminal, to check that writes keep
// the bytes that share a word with the range.
class Eeprom : public Control {
protected:
    void SetUp() override {
        Control::SetUp();
        for (std::size_t i = 0; i < memory.size(); ++i) memory[i] = static_cast<std::uint8_t>(i);
        os.respond = [this](const Bytes& frame) {
            const Bytes p(frame.begin() + 3, frame.end() - 2);
            const std::size_t address = std::size_t{p[3]} * 2;
            const std::size_t count = (std::size_t{p[4]} << 8) | p[5];
            if (address + count > memory.size()) return make_reply(0x6B00);
            if (p[1] == 0x0B) {
                ++reads;
                last_read = {address, count};
                return make_reply(0, Bytes(memory.begin() + static_cast<std::ptrdiff_t>(address),
                                           memory.begin() + static_cast<std::ptrdiff_t>(address + count)));
            }
            EXPECT_EQ(p.size(), 6 + count);
            std::copy(p.begin() + 6, p.end(), memory.begin() + static_cast<std::ptrdiff_t>(address));
            last_write = {address, count};
            return make_reply(0);
        };
    }
    std::array<std::uint8_t, 512> memory{};
    int reads = 0;
    std::pair<std::size_t, std::size_t> last_read{}, last_write{};
};

TEST_F(Eeprom, AlignmentCases) {
    struct Case {
        unsigned offset, length;
        int reads;
        std::pair<std::size_t, std::size_t> read, write;
    };
    for (const Case& c : {Case{2, 2, 0, {}, {2, 2}}, Case{2, 3, 1, {4, 2}, {2, 4}}, Case{3, 3, 1, {2, 2}, {2, 4}},
                          Case{3, 2, 1, {2, 4}, {2, 4}}}) {
        reads = 0;
        const Bytes data(c.length, 0xC3);
        auto expected = memory;
        std::fill_n(expected.begin() + c.offset, c.length, 0xC3);
        ASSERT_EQ(dev_writeeeprom(handle, static_cast<unsigned short>(c.offset), static_cast<unsigned short>(c.length),
                                  data.data()),
                  0);
        EXPECT_EQ(reads, c.reads) << c.offset << "/" << c.length;
        if (c.reads != 0) {
            EXPECT_EQ(last_read, c.read);
        }
        EXPECT_EQ(last_write, c.write);
        EXPECT_EQ(memory, expected);
    }
}

TEST_F(Eeprom, ReadsBeyondTheirOwnLimitRefuseTheWrite) {
    const Bytes data(200, 0x11);
    EXPECT_EQ(dev_writeeeprom(handle, 100, 151, data.data()), -19);  // needs a read at 250
    EXPECT_EQ(dev_writeeeprom(handle, 199, 200, data.data()), -19);  // needs a read of 202 bytes
    EXPECT_TRUE(os.requests.empty());
}

TEST_F(Eeprom, FailedReadWritesNothing) {
    os.respond = [](const Bytes&) { return make_reply(0x6581); };
    const unsigned char data[1] = {0};
    EXPECT_EQ(dev_writeeeprom(handle, 1, 1, data), -(0x6581));
    EXPECT_EQ(os.requests.size(), 1u);
}

}  // namespace
}  // namespace qz::test
