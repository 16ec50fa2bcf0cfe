// open_device and close_device with the real backends: the HID node before the
// serial port, busy, missing and unusable ports.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "e2e/e2e_fixture.h"
#include "link/link_state.h"
#include "qz_32.h"
#include "sim/core/unique_fd.h"

namespace qz::test {
namespace {

namespace fs = std::filesystem;
using link::LinkKind;
using link::link_state;

class OpenDevice : public SimulatorTest {};

TEST_F(OpenDevice, TakesTheHidNodeAndLeavesTheSerialPortAlone) {
    if (!start(Link::hid)) return;
    const OpenWatch serial(sim->serial_device());
    Device device(200, 1200);  // port and speed do not matter when the node answers
    ASSERT_GT(device.handle(), 1);
    EXPECT_EQ(descriptor_target(device.handle()), sim->hid_node());
    EXPECT_EQ(link_state().kind, LinkKind::hid);
    EXPECT_EQ(link_state().hid_report_length, 256);
    EXPECT_EQ(link_state().read_ms, 5000u);
    EXPECT_EQ(link_state().write_gap_ms, 0u);
    EXPECT_FALSE(serial.opened()) << "the serial port was opened although the HID node answered";
    EXPECT_EQ(device.close(), 0);
    EXPECT_FALSE(held_open(sim->hid_node()));
}

TEST_F(OpenDevice, ASecondOpenFindsTheNodeHeldAndTakesTheSerialPort) {
    if (!start(Link::hid)) return;
    Device first;
    ASSERT_GT(first.handle(), 1);
    Device second;
    ASSERT_GT(second.handle(), 1);
    EXPECT_EQ(descriptor_target(second.handle()), sim->serial_device());
    EXPECT_EQ(link_state().kind, LinkKind::serial);
}

TEST_F(OpenDevice, ABusySerialPortGivesMinus20AndClosingEndsItsExclusiveUse) {
    if (!start(Link::serial)) return;
    Device first;
    ASSERT_GT(first.handle(), 1);
    EXPECT_EQ(open_device(0, 115200), -20);
    EXPECT_EQ(link_state().kind, LinkKind::none);
    EXPECT_EQ(first.close(), 0);
    {
        Device again;
        EXPECT_GT(again.handle(), 1) << "closing did not free the port";
    }
    // The simulator keeps the pseudo-terminal open, so the line outlives the
    // library's handle; an exclusive mark left on it would turn away every
    // later open by a user other than root.
    const sim::UniqueFd line(::open(sim->serial_device().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK));
    ASSERT_TRUE(line);
    int exclusive = -1;
    ASSERT_EQ(::ioctl(line.get(), TIOCGEXCL, &exclusive), 0);
    EXPECT_EQ(exclusive, 0);
}

TEST(OpenDeviceWithoutTerminal, MissingAndUnusablePortsAndForeignHandles) {
    TempDir folder;
    ScopedEnv hid_env("QZ_32_HIDRAW_DIR", (folder.path() / "no-hid").string());
    ScopedEnv ports_env("QZ_32_PORTS_DIR", folder.path().string());
    ScopedEnv log_env("QZ_32_LOG_ROOT", (folder.path() / "no-log").string());
    fs::create_directory_symlink(folder.path(), folder.path() / "COM2");  // a folder opens as no port
    fs::create_symlink("/dev/null", folder.path() / "COM3");             // no serial line
    fs::create_symlink("/dev/null", folder.path() / "COM12");            // asked for as \\.\COM12

    EXPECT_EQ(open_device(1, 9600), -21);
    EXPECT_EQ(open_device(2, 9600), -22);
    EXPECT_EQ(open_device(11, 9600), -22);
    EXPECT_EQ(open_device(32, 9600), -19);
    if (!fs::exists("/dev/ttyS31")) {
        EXPECT_EQ(open_device(31, 9600), -21);  // neither a link COM32 nor /dev/ttyS31
    }
    EXPECT_EQ(link_state().kind, LinkKind::none);
    link::reset_link_state();

    // Only handles the library opened itself are closed: never standard input.
    EXPECT_EQ(close_device(0), -1);
    EXPECT_NE(fcntl(0, F_GETFD), -1);
    const sim::UniqueFd foreign(::open("/dev/null", O_RDWR));
    EXPECT_EQ(close_device(foreign.get()), -1);
    EXPECT_NE(fcntl(foreign.get(), F_GETFD), -1);
}

}  // namespace
}  // namespace qz::test
