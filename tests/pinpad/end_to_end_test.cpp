// PIN entry against the simulated terminal, through the library's exports, with
// the terminal in the same process behind the platform layer.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <optional>
#include <string>

#include "pin_fixture.h"
#include "pinpad/pad_commands.h"
#include "qz_32.h"
#include "sim/models/pinpad/pinpad_model.h"
#include "support/simulated_terminal.h"

namespace qz::test {
namespace {

const Bytes main16{0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10};
const Bytes work8{0x0B, 0x16, 0x2C, 0x58, 0xB0, 0x61, 0xC2, 0x85};
const Bytes work16{0x3C, 0x5A, 0x69, 0x96, 0xA5, 0xC3, 0x0F, 0xF0, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0};
const Bytes card{0x12, 0x34, 0x56, 0x78, 0x90, 0x12};

class EndToEnd : public ::testing::Test {
protected:
    void start(const nlohmann::json& document) {
        connection.emplace(document);
        icdev = connection->icdev;
        terminal = connection->terminal;
        ASSERT_GT(icdev, 1);
    }

    void open_gates() {
        ASSERT_EQ(pwdkb_settimeout(icdev, 20), 0);
        ASSERT_EQ(pwdkb_setpwdlen(icdev, 12), 0);
    }

    // The digits of the PIN block that the last encrypted entry gave back.
    std::string pin_of_block(const unsigned char* block) const {
        std::array<unsigned char, 8> clear{};
        if (pwd_decrypt(block, 8, clear.data()) != 0) return "no key";
        return format0_pin(Bytes(clear.begin(), clear.end()), concat({{0x00, 0x00}, card}));
    }

    std::optional<SimulatedTerminal> connection;
    std::shared_ptr<sim::Terminal> terminal;
    int icdev = 0;
    std::array<unsigned char, 300> rdata{};
    unsigned char rlen = 0;
};

TEST_F(EndToEnd, PinBlockOfThePadDeciphersUnderAWrappedWorkKey) {
    start({{"pinpad", {{"entries", {"123456", "98765432"}}}}});
    ASSERT_EQ(pwdkb_load_mainkey(icdev, 1, 2, main16.data()), 0);
    ASSERT_EQ(pinpad::load_workkey_wrapped(icdev, 0, 2, 5, work8.data()), 0);
    ASSERT_EQ(pinpad::load_workkey_wrapped(icdev, 1, 2, 6, work16.data()), 0);
    const auto* pad = terminal->model<sim::PinPadModel>();
    EXPECT_EQ(Bytes(pad->work_key(5).begin(), pad->work_key(5).end()), work8) << "the pad unwrapped the key";
    EXPECT_EQ(Bytes(pad->work_key(6).begin(), pad->work_key(6).end()), work16);

    open_gates();
    ASSERT_EQ(pwdkb_getpwd_encrypt2(icdev, 5, card.data(), &rlen, rdata.data()), 0);
    ASSERT_EQ(rlen, 8);
    EXPECT_EQ(pin_of_block(rdata.data()), "123456");

    ASSERT_EQ(pwdkb_getpwd_encrypt_new2(icdev, 6, card.data(), 1, &rlen, rdata.data()), 0);
    EXPECT_EQ(pin_of_block(rdata.data()), "98765432") << "triple DES under the 16-byte key";
    EXPECT_EQ(pad->openings(), (std::vector<std::string>{"I", "H0"}));
}

TEST_F(EndToEnd, SecondInterfaceOnAPadOfTypeOne) {
    start({{"pinpad", {{"type", 1u}, {"entries", {"2468", "97531"}}}}});
    set_kb_type(1);
    ASSERT_EQ(mw_kb_downloadmainkey(icdev, 1, 0, "0123456789ABCDEFFEDCBA9876543210"), 0);
    ASSERT_EQ(pinpad::load_workkey_wrapped(icdev, 0, 0, 3, work8.data()), 0);
    ASSERT_EQ(mw_kb_settimeout(icdev, 6), 0);
    ASSERT_EQ(mw_kb_setpasslen(icdev, 8), 0);
    ASSERT_EQ(mw_kb_activekey(icdev, 0, 3), 0);

    std::array<char, 40> text{};
    ASSERT_EQ(mw_kb_getenpin(icdev, 2, "123456789012", text.data()), 0);
    ASSERT_EQ(std::strlen(text.data()), 16u);
    std::array<unsigned char, 9> block{};
    ASSERT_EQ(asc_hex(text.data(), block.data(), 8), 0);
    EXPECT_EQ(pin_of_block(block.data()), "2468");

    ASSERT_EQ(mw_kb_getpin(icdev, 1, rdata.data()), 0);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(rdata.data()), 5), "97531");

    set_kb_type(0);
    EXPECT_EQ(mw_kb_getpin(icdev, 1, rdata.data()), -0x6D00) << "this pad doesn't know sub-command 09";
}

}  // namespace
}  // namespace qz::test
