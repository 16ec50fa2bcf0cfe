#include "pinpad/pad_commands.h"

#include <algorithm>
#include <initializer_list>

#include "link/link_state.h"
#include "link/status.h"
#include "pinpad/pad_state.h"
#include "pinpad/wiped_bytes.h"
#include "reader/des.h"

namespace qz::pinpad {
namespace {

using link::Payload;
using reader::des_block;
using reader::des_block_size;

int send(int icdev, const Payload& payload) {
    PadReply reply;
    return link::transact(icdev, payload, reply);
}

// C5 `sub_command` 00 `keymode`, the key numbers, then the key.
int send_key(int icdev, std::uint8_t sub_command, std::uint8_t keymode, std::initializer_list<std::uint8_t> numbers,
             std::span<const std::uint8_t> key) {
    Payload payload{pad_class, sub_command, 0x00, keymode};
    for (std::uint8_t number : numbers) payload.add(number);
    return send(icdev, payload.add(key));
}

bool key_arguments_ok(std::uint8_t keymode, const unsigned char* key) {
    return keymode <= highest_keymode && key != nullptr;
}

// Enciphers each block of `key` in place under `main`: DES under its bytes 1 to 8 for
// type 0; else encrypt under bytes 1 to 8, decrypt under 9 to 16, encrypt under 1 to 8.
void wrap(std::span<std::uint8_t> key, const KeyRow& main) {
    const std::uint8_t* first_half = main.data() + 1;
    const std::uint8_t* second_half = first_half + des_block_size;
    for (std::size_t offset = 0; offset < key.size(); offset += des_block_size) {
        std::uint8_t* block = key.data() + offset;
        des_block(block, first_half, reader::des_mode_encrypt);
        if (main[0] == 0) continue;
        des_block(block, second_half, reader::des_mode_decrypt);
        des_block(block, first_half, reader::des_mode_encrypt);
    }
}

}  // namespace

int send_setting(int icdev, std::uint8_t sub_command, std::uint8_t value) {
    return send(icdev, Payload{pad_class, sub_command, 0x00, value});
}

int settimeout(int icdev, std::uint8_t seconds) {
    if (seconds < shortest_pad_timeout) return link::status_bad_argument;
    const int result = send_setting(icdev, sub_timeout, seconds);
    if (result != 0) return result;
    const std::uint32_t wait_ms = seconds * 1000u + 1000u;
    PadState& state = pad_state();
    state.pwdkb_timeout_set = true;
    link::set_link_timeouts(wait_ms, 0);
    state.pwdkb_link_timeout = wait_ms;
    return 0;
}

int setpwdlen(int icdev, std::uint8_t length) {
    if (length == 0 || length > longest_pin_length) return link::status_bad_argument;
    const int result = send_setting(icdev, sub_pin_length, length);
    if (result == 0) pad_state().pwdkb_pwdlen_set = true;
    return result;
}

int load_mainkey(int icdev, std::uint8_t keymode, std::uint8_t mainno, const unsigned char* key) {
    if (!key_arguments_ok(keymode, key)) return link::status_bad_argument;
    const std::span<const std::uint8_t> bytes(key, key_length(keymode));
    const int result = send_key(icdev, sub_main_key, keymode, {mainno}, bytes);
    if (result != 0) return result;
    if (KeyRow* row = key_row(pad_state().pwdkb_main_keys, mainno)) store_key(*row, keymode, bytes);
    return 0;
}

int load_workkey(int icdev, std::uint8_t keymode, std::uint8_t mainno, std::uint8_t workno, const unsigned char* key) {
    if (!key_arguments_ok(keymode, key)) return link::status_bad_argument;
    return send_key(icdev, sub_work_key, keymode, {mainno, workno}, {key, key_length(keymode)});
}

int load_workkey_nb(int icdev, std::uint8_t keymode, std::uint8_t mainno, std::uint8_t workno,
                    const unsigned char* key) {
    if (!key_arguments_ok(keymode, key)) return link::status_bad_argument;
    return send_key(icdev, sub_work_key_nb, keymode, {mainno, workno}, {key, key_length(keymode)});
}

int load_workkey_wrapped(int icdev, std::uint8_t keymode, std::uint8_t mainno, std::uint8_t workno,
                         const unsigned char* key) {
    PadState& state = pad_state();
    const KeyRow* main = key_row(state.pwdkb_main_keys, mainno);
    KeyRow* work = key_row(state.pwdkb_work_keys, workno);
    if (!key_arguments_ok(keymode, key) || main == nullptr || work == nullptr) return link::status_bad_argument;
    const std::span<const std::uint8_t> clear(key, key_length(keymode));
    WipedBytes<2 * des_block_size> wrapped;
    const auto wrapped_key = std::span(wrapped.bytes).first(clear.size());
    std::ranges::copy(clear, wrapped_key.begin());
    wrap(wrapped_key, *main);
    const int result = send_key(icdev, sub_work_key, keymode, {mainno, workno}, wrapped_key);
    if (result == 0) store_key(*work, keymode, clear);
    return result;
}

}  // namespace qz::pinpad
