// The library's real serial backend against a terminal behind a pseudo-terminal.
#include <gtest/gtest.h>
#include <sys/file.h>
#include <fcntl.h>
#include <unistd.h>

#include "link/link_state.h"
#include "link/transact.h"
#include "linux/pty_terminal.h"
#include "qz_32.h"

namespace qz::test {
namespace {

class SerialPty : public ::testing::Test {
protected:
    void SetUp() override { link::reset_link_state(); }
    void TearDown() override { link::reset_link_state(); }

    TempDir no_hid;
    ScopedEnv hid_env{"QZ_32_HIDRAW_DIR", no_hid.path().string()};
    bool silent = false;
    std::vector<Bytes> requests;
    PtyTerminal terminal{[this](const Bytes& request) {
        requests.push_back(request);
        if (silent) return Bytes{};
        if (request == make_frame({0x00, 0x01, 0x00})) return make_reply(0, {'Q', 'Z', '-', '1'});
        // Anything else is echoed back as reply data.
        return make_reply(0, Bytes(request.begin() + 3, request.end() - 2));
    }};
    ScopedEnv ports_env{"QZ_32_PORTS_DIR", terminal.ports_dir().string()};
};

TEST_F(SerialPty, OpenVersionExchangeClose) {
    const int handle = open_device(0, 115200);
    ASSERT_GT(handle, 1);
    EXPECT_EQ(link::link_state().kind, link::LinkKind::serial);
    unsigned char length = 0;
    unsigned char version[256] = {};
    ASSERT_EQ(get_version(handle, &length, version), 0);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(version), length), "QZ-1");

    // A frame of several kilobytes goes through whole.
    Bytes payload(5000);
    for (std::size_t i = 0; i < payload.size(); ++i) payload[i] = static_cast<std::uint8_t>(i * 31);
    std::vector<std::uint8_t> reply(payload.size());
    int reply_length = 0;
    ASSERT_EQ(link::dev_transact(handle, payload, reply_length, reply), 0);
    ASSERT_EQ(reply_length, 5000);
    EXPECT_EQ(reply, payload);
    EXPECT_EQ(close_device(handle), 0);
}

TEST_F(SerialPty, SilentTerminalGivesZeroAndFreesThePort) {
    silent = true;
    EXPECT_EQ(open_device(0, 9600), 0);
    EXPECT_EQ(requests.size(), 1u);
    silent = false;
    const int handle = open_device(0, 9600);  // the port was closed again
    EXPECT_GT(handle, 1);
    close_device(handle);
}

TEST_F(SerialPty, BusyMissingAndUnusablePorts) {
    const int handle = open_device(0, 9600);
    ASSERT_GT(handle, 1);
    EXPECT_EQ(open_device(0, 9600), -20);  // held by the first open
    EXPECT_EQ(close_device(handle), 0);
    EXPECT_EQ(open_device(30, 9600), -21);  // neither a COM31 link nor a /dev/ttyS30
    std::filesystem::create_symlink("/dev/null", terminal.ports_dir() / "COM2");
    EXPECT_EQ(open_device(1, 9600), -22);  // not a serial port
}

TEST_F(SerialPty, CloseActsOnlyOnOwnHandles) {
    EXPECT_EQ(close_device(0), -1);
    EXPECT_NE(fcntl(0, F_GETFD), -1);
    const int foreign = ::open("/dev/null", O_RDWR);
    EXPECT_EQ(close_device(foreign), -1);
    EXPECT_NE(fcntl(foreign, F_GETFD), -1);
    ::close(foreign);
}

}  // namespace
}  // namespace qz::test
