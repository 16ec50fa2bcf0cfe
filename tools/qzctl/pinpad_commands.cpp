// The external PIN pad: its keys, its settings and an encrypted PIN entry.
#include <array>
#include <optional>
#include <vector>

#include "commands.h"
#include "pin_block.h"
#include "qz_32.h"
#include "wait_indicator.h"

namespace qzctl {
namespace {

struct PadOptions {
    unsigned main_key = 0;
    unsigned key_number = 0;
    std::string key;
    std::string card = "000000000000";
    unsigned timeout = 30;
    unsigned pin_length = 12;
    int pad_type = 0;
    bool again = false;
    bool clear = false;
};

PadOptions pad_options;

// Bytes of a hexadecimal argument, which must make one of `lengths` bytes.
std::vector<unsigned char> hex_argument(const std::string& text, std::initializer_list<std::size_t> lengths,
                                        const std::string& what) {
    const std::size_t length = text.size() / 2;
    const bool length_ok = text.size() % 2 == 0 && std::find(lengths.begin(), lengths.end(), length) != lengths.end();
    std::vector<unsigned char> bytes(length + 1);
    if (!length_ok || asc_hex(text.c_str(), bytes.data(), static_cast<unsigned>(length)) != 0) {
        std::string sizes;
        for (std::size_t allowed : lengths) sizes += (sizes.empty() ? "" : " or ") + std::to_string(allowed);
        throw Failure(exit_usage, what + ": " + sizes + " bytes in hexadecimal, not \"" + text + "\"");
    }
    bytes.resize(length);
    return bytes;
}

unsigned char keymode_of(const std::vector<unsigned char>& key) { return key.size() == 16 ? 1 : 0; }

void apply_settings(int device) {
    Session::check(pwdkb_settimeout(device, static_cast<unsigned char>(pad_options.timeout)), "setting the time-out");
    Session::check(pwdkb_setpwdlen(device, static_cast<unsigned char>(pad_options.pin_length)),
                   "setting the PIN length");
}

void load_main(Session& session, Output& out) {
    const auto key = hex_argument(pad_options.key, {8, 16}, "--key");
    Session::check(pwdkb_load_mainkey(session.device(), keymode_of(key),
                                      static_cast<unsigned char>(pad_options.key_number), key.data()),
                   "loading the main key");
    out.add("main_key", "Main key loaded", pad_options.key_number);
}

void load_work(Session& session, Output& out) {
    const auto key = hex_argument(pad_options.key, {8, 16}, "--key");
    Session::check(pwdkb_load_workkey(session.device(), keymode_of(key), static_cast<unsigned char>(pad_options.main_key),
                                      static_cast<unsigned char>(pad_options.key_number), key.data()),
                   "loading the work key");
    out.add("work_key", "Work key loaded", pad_options.key_number);
    out.add("under_main_key", "Under main key", pad_options.main_key);
}

void settings(Session& session, Output& out) {
    apply_settings(session.device());
    out.add("timeout", "Time-out (s)", pad_options.timeout);
    out.add("pin_length", "PIN length", pad_options.pin_length);
}

// The entry exports by [pad type 1][repeated entry].
using ClearEntry = int (*)(int, unsigned char*, unsigned char*);
using EncryptedEntry = int (*)(int, unsigned char, const unsigned char*, unsigned char*, unsigned char*);
constexpr ClearEntry clear_entries[2][2]{{pwdkb_getpwd2, pwdkb_getpwd_again2}, {pwdkb_getpwd, pwdkb_getpwd_again}};
constexpr EncryptedEntry encrypted_entries[2][2]{{pwdkb_getpwd_encrypt2, pwdkb_getpwd_again_encrypt2},
                                                 {pwdkb_getpwd_encrypt, pwdkb_getpwd_again_encrypt}};

int pad_entry(int device, const std::vector<unsigned char>& card, unsigned char* length, unsigned char* data) {
    const bool first_type = pad_options.pad_type == 1;
    if (pad_options.clear) return clear_entries[first_type][pad_options.again](device, length, data);
    return encrypted_entries[first_type][pad_options.again](device, static_cast<unsigned char>(pad_options.key_number),
                                                            card.data(), length, data);
}

// Deciphers the PIN block under the clear work key given and reads the PIN out of it.
void add_deciphered_pin(const unsigned char* block, const std::vector<unsigned char>& card, Output& out) {
    const auto key = hex_argument(pad_options.key, {8, 16}, "--key");
    std::array<unsigned char, 8> clear{};
    const int result = key.size() == 16 ? des3_decrypt(key.data(), block, 8, clear.data())
                                        : des_decrypt(key.data(), block, 8, clear.data());
    Session::check(result, "deciphering the PIN block");
    std::array<unsigned char, 8> account{};
    std::copy(card.begin(), card.end(), account.begin() + 2);
    const auto pin = format0_pin(clear, account);
    if (!pin) throw Failure(exit_command_failed, "the block is no PIN block under that key and card number");
    out.add("pin", "PIN", *pin);
}

void enter(Session& session, Output& out) {
    const auto card = hex_argument(pad_options.card, {6}, "--data");
    const int device = session.device();
    apply_settings(device);
    std::array<unsigned char, 50> data{};
    unsigned char length = 0;
    int result = 0;
    {
        WaitIndicator waiting("Key the PIN on the PIN pad");
        result = pad_entry(device, card, &length, data.data());
    }
    Session::check(result, "PIN entry on the pad");
    if (pad_options.clear) {
        out.add("pin", "PIN", printable(data.data(), length));
        return;
    }
    out.add("block", "PIN block", to_hex(data.data(), length));
    if (pad_options.key.empty()) return;
    if (length != 8) throw Failure(exit_command_failed, "the pad's answer is no 8-byte PIN block");
    add_deciphered_pin(data.data(), card, out);
}

void add_key_number(CLI::App* command, const std::string& what) {
    command->add_option("-n,--number", pad_options.key_number, what)->check(CLI::Range(0, 255))->capture_default_str();
}

}  // namespace

void add_pinpad_commands(CLI::App& app, Action& action) {
    auto* pad = app.add_subcommand("pinpad", "The external PIN pad: keys, settings, encrypted PIN entry");
    pad->require_subcommand(1);

    auto* main = pad->add_subcommand("load-main", "Load a main key (8 bytes: DES, 16: triple DES)");
    add_key_number(main, "Main key number");
    main->add_option("-k,--key", pad_options.key, "The key in hexadecimal")->required();
    main->callback([&action] { action = load_main; });

    auto* work = pad->add_subcommand("load-work", "Load a work key, given enciphered under its main key");
    add_key_number(work, "Work key number");
    work->add_option("-m,--main", pad_options.main_key, "Number of the main key it is enciphered under")
        ->check(CLI::Range(0, 255))
        ->capture_default_str();
    work->add_option("-k,--key", pad_options.key, "The enciphered key in hexadecimal")->required();
    work->callback([&action] { action = load_work; });

    const auto add_settings = [](CLI::App* command) {
        command->add_option("-t,--timeout", pad_options.timeout, "Seconds the pad waits for keys (6-255)")
            ->check(CLI::Range(6, 255))
            ->capture_default_str();
        command->add_option("-l,--length", pad_options.pin_length, "PIN length (1-18)")
            ->check(CLI::Range(1, 18))
            ->capture_default_str();
    };
    auto* setting = pad->add_subcommand("settings", "Set the pad's time-out and PIN length");
    add_settings(setting);
    setting->callback([&action] { action = settings; });

    auto* entry = pad->add_subcommand(
        "enter", "Have a PIN keyed on the pad; the pad answers an ISO 9564 format 0 block under a work key");
    add_key_number(entry, "Work key the pad enciphers under");
    entry->add_option("-d,--data", pad_options.card, "Six bytes of the card number in hexadecimal (12 digits)")
        ->capture_default_str();
    entry->add_option("-k,--key", pad_options.key, "The work key in the clear, to decipher the block and show the PIN");
    entry->add_option("--type", pad_options.pad_type, "Pad type: 1 for sub-commands 05/06, else 09/0A")
        ->capture_default_str();
    entry->add_flag("-a,--again", pad_options.again, "A repeated entry (to confirm a new PIN)");
    entry->add_flag("-c,--clear", pad_options.clear, "A clear entry: the pad answers the digits");
    add_settings(entry);
    entry->callback([&action] { action = enter; });
}

}  // namespace qzctl
