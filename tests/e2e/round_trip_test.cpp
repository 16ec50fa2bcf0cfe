// The EEPROM through the real backends on each link: unaligned writes keep the
// bytes that share a word with them, and the contents outlive the handle.
#include <array>
#include <vector>

#include "e2e/e2e_fixture.h"
#include "qz_32.h"

namespace qz::test {
namespace {

class RoundTrip : public SimulatorTest, public ::testing::WithParamInterface<Link> {
protected:
    void SetUp() override {
        SimulatorTest::SetUp();
        if (!start(GetParam())) return;
        device = std::make_unique<Device>();
        ASSERT_GT(device->handle(), 1);
    }
    void TearDown() override {
        device.reset();
        SimulatorTest::TearDown();
    }

    int handle() const { return device->handle(); }

    std::vector<unsigned char> read_eeprom(unsigned short offset, unsigned short length) const {
        std::vector<unsigned char> bytes(length);
        EXPECT_EQ(dev_readeeprom(handle(), offset, length, bytes.data()), 0) << offset << "+" << length;
        return bytes;
    }

    std::unique_ptr<Device> device;
};

TEST_P(RoundTrip, EepromWritesKeepTheirNeighbours) {
    // A known pattern first, so that any byte overwritten by mistake shows.
    constexpr unsigned short span = 64;
    std::vector<unsigned char> expected(span);
    for (unsigned i = 0; i < span; ++i) expected[i] = static_cast<unsigned char>(0x40 + i);
    ASSERT_EQ(dev_writeeeprom(handle(), 0, span, expected.data()), 0);
    ASSERT_EQ(read_eeprom(0, span), expected);

    struct Write {
        unsigned short offset;
        unsigned short length;
    };
    // Start and end even or odd, in all four combinations, and a single byte.
    const Write writes[] = {{2, 2}, {10, 5}, {21, 3}, {33, 6}, {47, 1}, {50, 1}};
    unsigned char fill = 0xA0;
    for (const Write& write : writes) {
        std::vector<unsigned char> data(write.length);
        for (auto& byte : data) byte = fill++;
        ASSERT_EQ(dev_writeeeprom(handle(), write.offset, write.length, data.data()), 0)
            << write.offset << "+" << write.length;
        std::copy(data.begin(), data.end(), expected.begin() + write.offset);
        EXPECT_EQ(read_eeprom(0, span), expected) << "after writing " << write.offset << "+" << write.length;
        // An unaligned read hands over exactly the range.
        EXPECT_EQ(read_eeprom(write.offset, write.length), data);
    }
}

INSTANTIATE_TEST_SUITE_P(Links, RoundTrip, ::testing::Values(Link::hid, Link::serial),
                         [](const auto& info) { return link_name(info.param); });

}  // namespace
}  // namespace qz::test
