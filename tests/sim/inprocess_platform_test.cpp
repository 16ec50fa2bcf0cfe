#include "sim/endpoints/inprocess_platform.h"

#include <gtest/gtest.h>

#include "sim/models/control/control_model.h"
#include "sim/core/status.h"
#include "sim_test_helpers.h"

namespace qz::sim {
namespace {

using platform::ByteRead;
using platform::SerialOpenError;
using test::Bytes;
using test::hex;

const Bytes version_request = hex("02 00 03 00 01 00 01 03");

Bytes report_with(const Bytes& piece, std::size_t length = 256) {
    Bytes report(length, 0);
    report[0] = feature_report_id;
    std::copy(piece.begin(), piece.end(), report.begin() + 1);
    return report;
}

class InProcessPlatformTest : public ::testing::Test {
protected:
    InProcessPlatformTest() {
        os.add_hid_device({.path = "/hid/other", .vendor = 0x1234, .product = 0x0001});
        os.add_hid_device({.path = "/hid/busy", .held_elsewhere = true, .terminal = terminal});
        os.add_hid_device({.path = "/hid/terminal", .report_length = 300, .terminal = terminal});
        os.add_serial_port({.name = "COM1", .terminal = terminal});
        os.add_serial_port({.name = "\\\\.\\COM10"});
        os.add_serial_port({.name = "COM2", .busy = true});
    }

    std::shared_ptr<Terminal> terminal = test::echo_terminal();
    InProcessPlatform os{1000};
};

TEST_F(InProcessPlatformTest, ListsAndOpensHidDevices) {
    EXPECT_EQ(os.hid_path(0), "/hid/other");
    EXPECT_EQ(os.hid_path(2), "/hid/terminal");
    EXPECT_FALSE(os.hid_path(3));
    EXPECT_FALSE(os.hid_path(-1));

    EXPECT_EQ(os.hid_open("/hid/busy"), -1);
    EXPECT_EQ(os.hid_open("/hid/missing"), -1);
    const int other = os.hid_open("/hid/other");
    ASSERT_GT(other, 1);
    EXPECT_EQ(os.hid_identity(other)->vendor, 0x1234);
    const int handle = os.hid_open("/hid/terminal");
    ASSERT_GT(handle, 1);
    EXPECT_NE(handle, other);
    EXPECT_EQ(os.hid_open("/hid/terminal"), -1) << "held exclusively";
    EXPECT_EQ(os.hid_identity(handle)->vendor, usb_vendor);
    EXPECT_EQ(os.hid_identity(handle)->product, usb_product);
    EXPECT_EQ(os.hid_feature_report_length(handle), 300);
    EXPECT_FALSE(os.hid_identity(handle + 100));
}

TEST_F(InProcessPlatformTest, HidExchangeAndItsRecord) {
    const int handle = os.hid_open("/hid/terminal");
    const Bytes report = report_with(version_request, 300);
    ASSERT_TRUE(os.hid_set_feature(handle, report));
    ASSERT_EQ(os.reports_written("/hid/terminal"), std::vector<Bytes>{report});

    Bytes reply(300, 0);
    reply[0] = feature_report_id;
    ASSERT_TRUE(os.hid_get_feature(handle, reply));
    const Bytes expected = encode_frame(reply_payload(status::ok, ControlConfig{}.version));
    EXPECT_EQ(Bytes(reply.begin() + 1, reply.begin() + 1 + static_cast<std::ptrdiff_t>(expected.size())), expected);
    EXPECT_EQ(os.tick_ms(), 1000u) << "a read that delivers takes no time";

    EXPECT_FALSE(os.hid_set_feature(handle, report_with(version_request, 256))) << "wrong length";
}

TEST_F(InProcessPlatformTest, EmptyHidReadsCostOneMillisecond) {
    const int handle = os.hid_open("/hid/terminal");
    Bytes report(300, 0);
    report[0] = feature_report_id;
    for (int i = 0; i < 5; ++i) EXPECT_FALSE(os.hid_get_feature(handle, report));
    EXPECT_EQ(os.tick_ms(), 1005u);

    // A device with nothing behind it takes reports and never answers.
    const int other = os.hid_open("/hid/other");
    EXPECT_TRUE(os.hid_set_feature(other, report_with(version_request)));
    EXPECT_FALSE(os.hid_get_feature(other, report));
    EXPECT_EQ(os.tick_ms(), 1006u);
}

TEST_F(InProcessPlatformTest, SerialPortsByName) {
    const platform::SerialSettings settings{.read_timeout_ms = 100};
    EXPECT_EQ(os.serial_open("COM2", settings), static_cast<int>(SerialOpenError::in_use));
    EXPECT_EQ(os.serial_open("COM3", settings), static_cast<int>(SerialOpenError::unavailable));
    EXPECT_EQ(os.serial_open("\\\\.\\COM1", settings), static_cast<int>(SerialOpenError::unavailable));
    const int handle = os.serial_open("COM1", settings);
    ASSERT_GT(handle, 1);
    EXPECT_EQ(os.serial_open("COM1", settings), static_cast<int>(SerialOpenError::in_use));
    EXPECT_GT(os.serial_open("\\\\.\\COM10", settings), 1);
}

TEST_F(InProcessPlatformTest, SerialExchangeAndItsRecord) {
    const int handle = os.serial_open("COM1", {.read_timeout_ms = 100});
    os.serial_purge(handle);
    for (std::uint8_t byte : version_request) ASSERT_TRUE(os.serial_write(handle, byte));
    EXPECT_EQ(os.bytes_written("COM1"), version_request);
    EXPECT_EQ(os.purges("COM1"), 1);

    Bytes reply;
    std::uint8_t byte = 0;
    while (os.serial_read(handle, byte) == ByteRead::received) reply.push_back(byte);
    EXPECT_EQ(reply, encode_frame(reply_payload(status::ok, ControlConfig{}.version)));
    EXPECT_EQ(os.tick_ms(), 1100u) << "only the final empty read waits";
}

TEST_F(InProcessPlatformTest, SilentPortTimesOutOnTheVirtualClock) {
    const int handle = os.serial_open("\\\\.\\COM10", {.read_timeout_ms = 250});
    ASSERT_TRUE(os.serial_write(handle, 0x02));
    std::uint8_t byte = 0x77;
    EXPECT_EQ(os.serial_read(handle, byte), ByteRead::timed_out);
    EXPECT_EQ(byte, 0x77);
    EXPECT_EQ(os.tick_ms(), 1250u);

    // A port without read time-out still moves the clock, so no wait loop hangs.
    ASSERT_TRUE(os.close(handle));
    const int again = os.serial_open("\\\\.\\COM10", {.read_timeout_ms = 0});
    EXPECT_EQ(os.serial_read(again, byte), ByteRead::timed_out);
    EXPECT_EQ(os.tick_ms(), 1251u);
}

TEST_F(InProcessPlatformTest, ClosingDropsWhatWasNotRead) {
    const int handle = os.serial_open("COM1", {.read_timeout_ms = 10});
    for (std::uint8_t byte : version_request) os.serial_write(handle, byte);
    ASSERT_TRUE(os.close(handle));
    const int again = os.serial_open("COM1", {.read_timeout_ms = 10});
    std::uint8_t byte = 0;
    EXPECT_EQ(os.serial_read(again, byte), ByteRead::timed_out);
}

TEST_F(InProcessPlatformTest, OnlyItsOwnHandlesAreValid) {
    EXPECT_FALSE(os.close(0));
    EXPECT_FALSE(os.close(-1));
    EXPECT_FALSE(os.serial_write(0, 0x02));
    std::uint8_t byte = 0;
    EXPECT_EQ(os.serial_read(0, byte), ByteRead::failed);
    Bytes report = report_with(version_request);
    EXPECT_FALSE(os.hid_set_feature(0, report));
    EXPECT_FALSE(os.hid_get_feature(0, report));
    EXPECT_FALSE(os.hid_feature_report_length(0));

    const int hid = os.hid_open("/hid/terminal");
    const int serial = os.serial_open("COM1", {});
    EXPECT_FALSE(os.serial_write(hid, 0x02)) << "a HID handle is no port";
    EXPECT_FALSE(os.hid_set_feature(serial, report)) << "a port is no HID device";
    EXPECT_EQ(os.open_handles(), 2u);
    EXPECT_TRUE(os.close(hid));
    EXPECT_FALSE(os.close(hid)) << "closed twice";
    EXPECT_FALSE(os.hid_identity(hid));
    EXPECT_EQ(os.open_handles(), 1u);
    EXPECT_GT(os.hid_open("/hid/terminal"), 1) << "open again after close";
}

TEST_F(InProcessPlatformTest, ClockAndLocalTime) {
    os.sleep_ms(5);
    EXPECT_EQ(os.tick_ms(), 1005u);
    os.set_local_time({2026, 11, 23, 10, 20, 30, 400});
    EXPECT_EQ(os.local_time().minute, 20);
    EXPECT_EQ(os.local_time().millisecond, 400);

    InProcessPlatform wrapping(0xFFFFFFFE);
    wrapping.sleep_ms(3);
    EXPECT_EQ(wrapping.tick_ms(), 1u);
}

TEST(InProcessPlatform, UnknownNamesInTheRecordAreAnError) {
    InProcessPlatform os;
    EXPECT_THROW(os.reports_written("/nowhere"), std::out_of_range);
    EXPECT_THROW(os.bytes_written("COM9"), std::out_of_range);
}

}  // namespace
}  // namespace qz::sim
