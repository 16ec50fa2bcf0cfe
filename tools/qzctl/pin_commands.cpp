// PIN entry on the terminal's own keypad: the clear way and the protected way.
#include <algorithm>
#include <array>

#include "commands.h"
#include "qz_32.h"
#include "wait_indicator.h"

namespace qzctl {
namespace {

struct PinOptions {
    bool clear = false;
    bool again = false;
    unsigned timeout = 30;
};

PinOptions pin_options;

// The keypad's entry exports by [clear way][repeated entry].
using KeypadEntry = int (*)(int, unsigned char, unsigned char*, unsigned char*);
constexpr KeypadEntry keypad_entries[2][2]{{dev_pwdkb_getpwd_encrypt, dev_pwdkb_getpwd_again_encrypt},
                                           {dev_pwdkb_getpwd, dev_pwdkb_getpwd_again}};

void enter_pin(Session& session, Output& out) {
    const int device = session.device();
    std::array<unsigned char, 300> data{};
    unsigned char length = 0;
    int result = 0;
    {
        WaitIndicator waiting("Key the PIN on the terminal's keypad");
        result = keypad_entries[pin_options.clear][pin_options.again](
            device, static_cast<unsigned char>(pin_options.timeout), &length, data.data());
    }
    Session::check(result, "PIN entry on the keypad");
    // The keypad fills the protected blocks up with zeros behind the digits.
    const auto end = std::find(data.begin(), data.begin() + length, 0);
    out.add("way", "Way", pin_options.clear ? "clear" : "protected (session key)");
    out.add("pin", "PIN", printable(data.data(), static_cast<std::size_t>(end - data.begin())));
    out.add("data", "Data", to_hex(data.data(), length));
}

}  // namespace

void add_pin_commands(CLI::App& app, Action& action) {
    auto* pin = app.add_subcommand("pin", "Have a PIN keyed on the terminal's keypad (protected by a session key)");
    pin->add_flag("-c,--clear", pin_options.clear, "The clear way: the keypad sends the PIN unprotected");
    pin->add_flag("-a,--again", pin_options.again, "A repeated entry (to confirm a new PIN)");
    pin->add_option("-t,--timeout", pin_options.timeout, "Seconds the keypad waits for keys")
        ->check(CLI::Range(0, 255))
        ->capture_default_str();
    pin->callback([&action] { action = enter_pin; });
}

}  // namespace qzctl
