// Every export that talks to the terminal holds the process-wide lock while its
// frames are on the wire, so a second thread cannot slip a transaction in between.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <future>

#include "link/card_lock.h"
#include "qz_32.h"
#include "support/scripted_terminal.h"

namespace qz::test {
namespace {

bool lock_free_for_another_thread() {
    return std::async(std::launch::async, [] {
               std::unique_lock lock(link::card_lock(), std::try_to_lock);
               return lock.owns_lock();
           }).get();
}

TEST(ExportLock, HeldDuringEveryExchangeOfEachFamily) {
    ScriptedTerminal os;
    const int icdev = os.open_hid_link();
    std::array<unsigned char, 1024> out{};
    std::array<char, 1024> text{};
    unsigned char length = 0;
    unsigned short wide_length = 0;
    int int_length = 0;
    const unsigned char apdu[] = {0x00, 0x84, 0x00, 0x00, 0x08};
    const struct {
        const char* name;
        std::function<int()> call;
    } exports[] = {
        {"get_version", [&] { return get_version(icdev, &length, out.data()); }},
        {"dev_writeeeprom", [&] { return dev_writeeeprom(icdev, 1, 2, out.data()); }},
        {"ICC_CommandExchange",
         [&] { return ICC_CommandExchange(icdev, 0, apdu, sizeof apdu, out.data(), &wide_length); }},
        {"ExchangePro", [&] { return ExchangePro(icdev, apdu, sizeof apdu, out.data(), &wide_length); }},
        {"dev_cardstate", [&] { return dev_cardstate(icdev, out.data()); }},
        {"OpenCard_hex", [&] { return OpenCard_hex(icdev, 0, text.data(), text.data() + 512, &length); }},
        {"NC_GetPanNoCardHldName",
         [&] { return NC_GetPanNoCardHldName(icdev, out.data(), &wide_length, out.data() + 512, &wide_length); }},
        {"IDCardBaseMsg", [&] { return IDCardBaseMsg(icdev, 0, &int_length, out.data()); }},
        {"dev_pwdkb_getpwd", [&] { return dev_pwdkb_getpwd(icdev, 5, &length, out.data()); }},
        {"pwdkb_settimeout", [&] { return pwdkb_settimeout(icdev, 30); }},
        {"mw_kb_setpasslen", [&] { return mw_kb_setpasslen(icdev, 6); }},
    };
    for (const auto& e : exports) {
        int exchanges = 0;
        int unguarded = 0;
        os.respond = [&](const Bytes&) {
            ++exchanges;
            if (lock_free_for_another_thread()) ++unguarded;
            return make_reply(0, Bytes(40, 0x00));
        };
        e.call();
        EXPECT_GT(exchanges, 0) << e.name;
        EXPECT_EQ(unguarded, 0) << e.name;
        EXPECT_TRUE(lock_free_for_another_thread()) << e.name << " kept the lock";
    }
}

}  // namespace
}  // namespace qz::test
