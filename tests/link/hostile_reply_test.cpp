// Replies that lie about their length: shorter than the three status bytes, or
// with fewer data bytes than the export must hand over. Each fails with -39,
// leaves the caller's data alone and reports no length.
#include <gtest/gtest.h>

#include <array>
#include <functional>

#include "pinpad/pad_state.h"
#include "qz_32.h"
#include "support/scripted_terminal.h"

namespace qz::test {
namespace {

constexpr int reply_too_short = -39;
constexpr unsigned char sentinel = 0xA5;

TEST(HostileReply, ShortRepliesFailWithoutOutput) {
    ScriptedTerminal os;
    const int icdev = os.open_hid_link();
    pinpad::reset_pad_state();
    pinpad::pad_state().pwdkb_timeout_set = true;
    pinpad::pad_state().pwdkb_pwdlen_set = true;

    std::array<unsigned char, 300> out{};
    unsigned char length = 0;
    using Call = std::function<int()>;
    const Call version = [&] { return get_version(icdev, &length, out.data()); };
    const Call regno = [&] { return dev_readregno(icdev, &length, out.data()); };
    const Call keypad = [&] { return dev_pwdkb_getpwd(icdev, 0, &length, out.data()); };
    const Call pad = [&] { return pwdkb_getpwd(icdev, &length, out.data()); };
    const Call protected_entry = [&] { return dev_pwdkb_getpwd_encrypt(icdev, 0, &length, out.data()); };
    const Call eeprom = [&] { return dev_readeeprom(icdev, 0, 16, out.data()); };
    const Call eeprom_odd = [&] { return dev_readeeprom(icdev, 1, 3, out.data()); };
    const Call snr = [&] { return dev_readsnr(icdev, 8, out.data()); };
    const Call state = [&] { return dev_cardstate(icdev, out.data()); };
    const struct {
        const char* name;
        Call call;
        Bytes reply;
    } cases[] = {
        {"version, LEN 0", version, make_frame({})},
        {"version, LEN 1", version, make_frame({0x00})},
        {"version, LEN 2", version, make_frame({0x00, 0x00})},
        {"registration number, LEN 2", regno, make_frame({0x00, 0x00})},
        {"keypad entry, LEN 1", keypad, make_frame({0x00})},
        {"pad entry, LEN 2", pad, make_frame({0x00, 0x00})},
        {"protected entry, no data", protected_entry, make_reply(0)},
        {"protected entry, 7 bytes", protected_entry, make_reply(0, Bytes(7, 0x11))},
        {"EEPROM, 15 of 16 bytes", eeprom, make_reply(0, Bytes(15, 0x11))},
        {"EEPROM from an odd offset, 3 of 4 bytes", eeprom_odd, make_reply(0, Bytes(3, 0x11))},
        {"serial number, 7 of 8 bytes", snr, make_reply(0, Bytes(7, 0x11))},
        {"card state, no data", state, make_reply(0)},
    };
    for (const auto& c : cases) {
        out.fill(sentinel);
        length = 0;
        os.respond = [&](const Bytes&) { return c.reply; };
        EXPECT_EQ(c.call(), reply_too_short) << c.name;
        EXPECT_EQ(length, 0) << c.name;
        EXPECT_EQ(out[0], sentinel) << c.name;
    }
    pinpad::reset_pad_state();
}

}  // namespace
}  // namespace qz::test
