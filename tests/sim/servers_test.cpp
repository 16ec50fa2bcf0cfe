// The servers of qzsim against the real system calls the library's backends make.
#include <fcntl.h>
#include <linux/hidraw.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <mutex>

#include "sim/endpoints/hidraw_fuse.h"
#include "sim/endpoints/pty_server.h"
#include "sim/endpoints/report_descriptor.h"
#include "sim/core/status.h"
#include "sim/core/unique_fd.h"
#include "sim_test_helpers.h"

namespace qz::sim {
namespace {

using test::Bytes;
using test::hex;

std::filesystem::path fresh_dir(const std::string& name) {
    const auto dir = std::filesystem::path(::testing::TempDir()) / ("qz_32_sim_" + name + std::to_string(getpid()));
    std::filesystem::remove_all(dir);
    return dir;
}

// Reads `count` bytes, or what has come when the line stays quiet for a second,
// then checks that nothing more follows.
Bytes read_reply(int fd, std::size_t count) {
    Bytes bytes;
    pollfd wait{fd, POLLIN, 0};
    while (bytes.size() < count && ::poll(&wait, 1, 1000) > 0) {
        std::uint8_t buffer[512];
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got <= 0) break;
        bytes.insert(bytes.end(), buffer, buffer + got);
    }
    EXPECT_EQ(::poll(&wait, 1, 50), 0) << "bytes behind the reply";
    return bytes;
}

TEST(PtyServer, ServesTheSerialEndpointThroughTheLink) {
    const auto terminal = test::echo_terminal();
    SerialEndpoint endpoint(*terminal);
    std::mutex lock;
    const auto ports = fresh_dir("ports");
    std::filesystem::path link = ports / "COM1";
    {
        PtyServer server(endpoint, lock, link);
        ASSERT_TRUE(std::filesystem::is_symlink(link));
        EXPECT_EQ(std::filesystem::read_symlink(link), server.slave_path());

        UniqueFd port(::open(link.c_str(), O_RDWR | O_NOCTTY));
        ASSERT_TRUE(port) << strerror(errno);
        termios settings{};
        ASSERT_EQ(tcgetattr(port.get(), &settings), 0);
        EXPECT_EQ(settings.c_lflag & (ICANON | ECHO), 0u) << "the line is raw";

        // Noise first; CR and LF bytes must pass untranslated.
        const Bytes request = encode_frame(hex("7E 01 0D 0A 11 13 03 02"));
        Bytes noisy = hex("FF 00");
        noisy.insert(noisy.end(), request.begin(), request.end());
        ASSERT_EQ(::write(port.get(), noisy.data(), noisy.size()), static_cast<ssize_t>(noisy.size()));
        const Bytes reply = encode_frame(reply_payload(status::ok, hex("0D 0A 11 13 03 02")));
        EXPECT_EQ(read_reply(port.get(), reply.size()), reply);

        const Bytes large = encode_frame(test::ask_for(5000));
        ASSERT_EQ(::write(port.get(), large.data(), large.size()), static_cast<ssize_t>(large.size()));
        const Bytes long_reply = encode_frame(reply_payload(status::ok, test::pattern(5000)));
        EXPECT_EQ(read_reply(port.get(), long_reply.size()), long_reply);
    }
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(link))) << "link left behind";
    std::filesystem::remove_all(ports);
}

TEST(PtyServer, ReplacesAStaleLink) {
    const auto terminal = test::echo_terminal();
    SerialEndpoint endpoint(*terminal);
    std::mutex lock;
    const auto ports = fresh_dir("stale");
    std::filesystem::create_directories(ports);
    std::filesystem::create_symlink("/dev/pts/nonexistent", ports / "COM3");
    PtyServer server(endpoint, lock, ports / "COM3");
    EXPECT_EQ(std::filesystem::read_symlink(ports / "COM3"), server.slave_path());
}

TEST(ReportDescriptor, FeatureReportSixOfTheGivenLength) {
    // Report count = length - 1 (the id byte is not a field), little-endian in a two-byte item.
    const Bytes descriptor = report_descriptor(300);
    const Bytes tail = hex("85 06 15 00 26 FF 00 75 08 96 2B 01 09 01 B1 02 C0");
    ASSERT_GE(descriptor.size(), tail.size());
    EXPECT_EQ(Bytes(descriptor.end() - static_cast<std::ptrdiff_t>(tail.size()), descriptor.end()), tail);
    EXPECT_EQ(report_descriptor(256)[17], 0xFF);
    EXPECT_EQ(report_descriptor(256)[18], 0x00);
}

class HidrawFuseTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (::access("/dev/fuse", R_OK | W_OK) != 0) GTEST_SKIP() << "/dev/fuse is not usable here";
        try {
            server = std::make_unique<HidrawFuse>(endpoint, lock, mount);
        } catch (const std::exception& error) {
            GTEST_SKIP() << "FUSE cannot mount here: " << error.what();
        }
        node = UniqueFd(::open(server->node().c_str(), O_RDWR));
        ASSERT_TRUE(node) << strerror(errno);
    }
    void TearDown() override {
        node.reset();
        server.reset();
        std::filesystem::remove_all(mount);
    }

    std::shared_ptr<Terminal> terminal = test::echo_terminal();
    HidEndpoint endpoint{*terminal, 256};
    std::mutex lock;
    std::filesystem::path mount = fresh_dir("hid");
    std::unique_ptr<HidrawFuse> server;
    UniqueFd node;
};

TEST_F(HidrawFuseTest, AnswersTheIdentityIoctls) {
    EXPECT_EQ(server->node().filename(), "hidraw0");
    hidraw_devinfo info{};
    ASSERT_EQ(::ioctl(node.get(), HIDIOCGRAWINFO, &info), 0);
    EXPECT_EQ(info.bustype, 3u);  // USB
    EXPECT_EQ(static_cast<std::uint16_t>(info.vendor), 0x23A4);
    EXPECT_EQ(static_cast<std::uint16_t>(info.product), 0x0305);

    int size = 0;
    ASSERT_EQ(::ioctl(node.get(), HIDIOCGRDESCSIZE, &size), 0);
    const Bytes expected = report_descriptor(256);
    EXPECT_EQ(size, static_cast<int>(expected.size()));
    hidraw_report_descriptor descriptor{};
    descriptor.size = static_cast<__u32>(size);
    ASSERT_EQ(::ioctl(node.get(), HIDIOCGRDESC, &descriptor), 0);
    EXPECT_EQ(Bytes(descriptor.value, descriptor.value + size), expected);

    EXPECT_EQ(::ioctl(node.get(), HIDIOCGRAWNAME(64), descriptor.value), -1);
    EXPECT_EQ(errno, ENOTTY);
}

TEST_F(HidrawFuseTest, ExchangesFramesInFeatureReports) {
    std::uint8_t report[256] = {feature_report_id};
    EXPECT_EQ(::ioctl(node.get(), HIDIOCGFEATURE(256), report), -1) << "no reply ready";
    EXPECT_EQ(errno, EPIPE);

    // A reply frame of 509 bytes comes in three reports.
    const Bytes request = encode_frame(test::ask_for(501));
    std::copy(request.begin(), request.end(), report + 1);
    ASSERT_EQ(::ioctl(node.get(), HIDIOCSFEATURE(256), report), 256);
    Bytes frame;
    for (int i = 0; i < 3; ++i) {
        std::fill(std::begin(report), std::end(report), 0);
        report[0] = feature_report_id;
        ASSERT_EQ(::ioctl(node.get(), HIDIOCGFEATURE(256), report), 256) << "report " << i;
        EXPECT_EQ(report[0], feature_report_id);
        frame.insert(frame.end(), report + 1, report + 255);
    }
    frame.resize(509);
    EXPECT_EQ(frame, encode_frame(reply_payload(status::ok, test::pattern(501))));
    EXPECT_EQ(::ioctl(node.get(), HIDIOCGFEATURE(256), report), -1);

    EXPECT_EQ(::ioctl(node.get(), HIDIOCSFEATURE(100), report), -1) << "short report";
    EXPECT_EQ(errno, EPIPE);
}

TEST_F(HidrawFuseTest, FlockGivesExclusiveUse) {
    ASSERT_EQ(::flock(node.get(), LOCK_EX | LOCK_NB), 0);
    UniqueFd second(::open(server->node().c_str(), O_RDWR));
    ASSERT_TRUE(second);
    EXPECT_EQ(::flock(second.get(), LOCK_EX | LOCK_NB), -1);
    EXPECT_EQ(errno, EWOULDBLOCK);
}

}  // namespace
}  // namespace qz::sim
