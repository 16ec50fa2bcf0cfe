#include <gtest/gtest.h>

#include "link/link_state.h"
#include "qz_32.h"
#include "support/scripted_terminal.h"

namespace qz::test {
namespace {

class OpenDevice : public ::testing::Test {
protected:
    void SetUp() override {
        os.respond = [this](const Bytes& request) {
            if (silent) return Bytes{};
            EXPECT_EQ(request, make_frame({0x00, 0x01, 0x00}));
            return make_reply(0, {'V', '1', '.', '0'});
        };
    }
    void add_terminal_hid(std::string path = "/dev/hidraw0") { os.add_hid_device({.path = std::move(path)}); }
    void add_port(std::string name = "COM1") { os.add_serial_port({.name = std::move(name)}); }

    ScriptedTerminal os;
    bool silent = false;
};

TEST_F(OpenDevice, HidTerminalIsPreferredAndPortIsIgnored) {
    add_terminal_hid();
    add_port();
    const int handle = open_device(200, 1234);
    EXPECT_GT(handle, 1);
    EXPECT_TRUE(os.platform.serial_ports_asked().empty());
    EXPECT_EQ(os.requests.size(), 1u);
    EXPECT_EQ(link::link_state().kind, link::LinkKind::hid);
    EXPECT_EQ(link::link_state().hid_report_length, 256);
    EXPECT_EQ(link::link_state().read_ms, 5000u);
    EXPECT_EQ(link::link_state().write_gap_ms, 0u);
}

TEST_F(OpenDevice, NonMatchingAndUnreadableDevicesAreSkipped) {
    os.platform.add_hid_device({.path = "/dev/hidraw0", .vendor = 0x1234});
    os.platform.add_hid_device({.path = "/dev/hidraw1", .report_length_readable = false});
    os.platform.add_hid_device({.path = "/dev/hidraw2", .held_elsewhere = true});
    add_terminal_hid("/dev/hidraw3");
    const int handle = open_device(0, 9600);
    EXPECT_GT(handle, 1);
    EXPECT_EQ(os.platform.hid_paths_asked(),
              (std::vector<std::string>{"/dev/hidraw0", "/dev/hidraw1", "/dev/hidraw2", "/dev/hidraw3"}));
    EXPECT_EQ(os.platform.open_handles(), 1u);  // the two that opened but did not qualify are closed
}

TEST_F(OpenDevice, OnlySixtyFourInterfacesAreLookedAt) {
    for (int i = 0; i < 64; ++i) os.platform.add_hid_device({.path = "/dev/other" + std::to_string(i), .vendor = 1});
    add_terminal_hid("/dev/hidraw64");
    add_port();
    EXPECT_GT(open_device(0, 9600), 1);
    EXPECT_EQ(os.platform.hid_paths_asked().size(), 64u);
    EXPECT_EQ(link::link_state().kind, link::LinkKind::serial);
}

TEST_F(OpenDevice, SilentHidTerminalGivesZeroWithoutTryingSerial) {
    add_terminal_hid();
    add_port();
    silent = true;
    EXPECT_EQ(open_device(0, 9600), 0);
    EXPECT_TRUE(os.platform.serial_ports_asked().empty());
    EXPECT_EQ(os.requests.size(), 1u);
    EXPECT_EQ(os.platform.open_handles(), 0u);
    EXPECT_EQ(link::link_state().kind, link::LinkKind::hid);  // a failed proof leaves the kind
    EXPECT_EQ(link::link_state().read_ms, 5000u);
}

TEST_F(OpenDevice, SerialPortNamesAndSpeeds) {
    struct Case {
        unsigned char port;
        int baud;
        std::string name;
        std::uint32_t speed;
    };
    for (const Case& c : {Case{0, 1200, "COM1", 9600}, Case{8, 19200, "COM9", 19200},
                          Case{9, 115200, "\\\\.\\COM10", 115200}, Case{31, 57600, "\\\\.\\COM32", 57600},
                          Case{3, 9600, "COM4", 9600}, Case{4, 38400, "COM5", 38400}}) {
        add_port(c.name);
        const int handle = open_device(c.port, c.baud);
        EXPECT_GT(handle, 1) << c.name;
        EXPECT_EQ(os.platform.serial_ports_asked().back(), c.name);
        ASSERT_FALSE(os.platform.serial_settings().empty());
        const auto& settings = os.platform.serial_settings().back();
        EXPECT_EQ(settings.baud, c.speed) << c.name;
        EXPECT_EQ(settings.byte_size, 8);
        EXPECT_EQ(settings.read_timeout_ms, 100u);
        EXPECT_EQ(link::link_state().kind, link::LinkKind::serial);
        EXPECT_EQ(close_device(handle), 0);
    }
}

TEST_F(OpenDevice, SerialFailuresGiveThePortStatus) {
    using platform::SerialOpenError;
    os.add_serial_port({.name = "COM2", .refusal = SerialOpenError::in_use});
    os.add_serial_port({.name = "COM3", .refusal = SerialOpenError::state_unreadable});
    os.add_serial_port({.name = "COM4", .refusal = SerialOpenError::state_refused});
    EXPECT_EQ(open_device(32, 9600), -19);
    EXPECT_TRUE(os.platform.serial_ports_asked().empty());
    EXPECT_EQ(open_device(0, 9600), -21);  // no such port
    EXPECT_EQ(open_device(1, 9600), -20);
    EXPECT_EQ(open_device(2, 9600), -22);
    EXPECT_EQ(open_device(3, 9600), -23);
    EXPECT_EQ(link::link_state().kind, link::LinkKind::none);
    EXPECT_EQ(link::link_state().read_ms, 5000u);
}

TEST_F(OpenDevice, SilentSerialTerminalGivesZeroAndClosesThePort) {
    add_port();
    silent = true;
    EXPECT_EQ(open_device(0, 9600), 0);
    EXPECT_EQ(os.platform.open_handles(), 0u);
    EXPECT_EQ(os.platform.serial_ports_asked().size(), 1u);
}

TEST_F(OpenDevice, GetVersionAndCloseDevice) {
    add_terminal_hid();
    const int handle = open_device(0, 9600);
    link::set_link_timeouts(1234, 7);
    unsigned char length = 0xFF;
    unsigned char version[256] = {};
    ASSERT_EQ(get_version(handle, &length, version), 0);
    EXPECT_EQ(length, 4);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(version), 4), "V1.0");
    EXPECT_EQ(link::link_state().read_ms, 5000u);
    EXPECT_EQ(link::link_state().write_gap_ms, 0u);

    silent = true;
    length = 0xFF;
    const std::uint32_t start = os.platform.tick_ms();
    EXPECT_EQ(get_version(handle, &length, version), -17);
    EXPECT_EQ(length, 0);
    EXPECT_LT(os.platform.tick_ms() - start, 200u);  // a read waits 100 ms here
    EXPECT_EQ(link::link_state().read_ms, 5000u);
    EXPECT_EQ(get_version(handle, nullptr, version), -19);

    EXPECT_EQ(close_device(handle), 0);
    EXPECT_EQ(close_device(handle), -1);  // the platform no longer knows it
    EXPECT_EQ(close_device(0), -1);
    EXPECT_EQ(close_device(-1), -1);
}

}  // namespace
}  // namespace qz::test
