// A session of the DLL with the simulated terminal over a Wine COM port: the
// port that QZ_32_WINDOWS_COM_PORT numbers (counted from 0, as open_device
// takes it) is mapped to qzsim's pseudo-terminal by scripts/windows.sh.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "qz_32.h"

namespace {

unsigned char mapped_port() {
    const char* value = std::getenv("QZ_32_WINDOWS_COM_PORT");
    return static_cast<unsigned char>(value != nullptr ? std::atoi(value) : 0);
}

class ComSession : public testing::Test {
protected:
    void SetUp() override {
        if (std::getenv("QZ_32_WINDOWS_COM_PORT") == nullptr) GTEST_SKIP() << "no COM port mapped to qzsim";
    }
};

TEST_F(ComSession, OpensAsksAndClosesOverTheComPort) {
    const int handle = open_device(mapped_port(), 115200);
    ASSERT_GT(handle, 1);

    unsigned char length = 0;
    unsigned char version[80] = {};
    ASSERT_EQ(get_version(handle, &length, version), 0);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(version), length), "QZ-SIM V1.00");

    // A long reply: 200 bytes read one ReadFile at a time, written back and read again.
    unsigned char written[200];
    for (int i = 0; i < 200; ++i) written[i] = static_cast<unsigned char>(i * 7 + 3);
    ASSERT_EQ(dev_writeeeprom(handle, 0, 200, written), 0);
    unsigned char read_back[200] = {};
    ASSERT_EQ(dev_readeeprom(handle, 0, 200, read_back), 0);
    EXPECT_EQ(std::string(read_back, read_back + 200), std::string(written, written + 200));

    EXPECT_EQ(dev_beep(handle, 1, 1, 1), 0);
    EXPECT_EQ(close_device(handle), 0);
    EXPECT_EQ(close_device(handle), -1);
}

TEST_F(ComSession, MissingAndOutOfRangePortsGiveTheirStatuses) {
    EXPECT_EQ(open_device(29, 9600), -21);  // COM30: nothing behind it
    EXPECT_EQ(open_device(32, 9600), -19);
}

}  // namespace
