// The second interface to the external PIN pad: keys and card numbers as hex text,
// small key numbers, and the command form chosen by the pad type.
#include <algorithm>
#include <array>
#include <cstring>

#include "link/export_lock.h"
#include "link/link_state.h"
#include "link/status.h"
#include "pinpad/pad_commands.h"
#include "pinpad/pad_entry.h"
#include "pinpad/pad_state.h"
#include "pinpad/wiped_bytes.h"
#include "qz_32.h"
#include "reader/hex.h"

namespace qz::pinpad {
namespace {

constexpr int highest_main_key = 3;
constexpr int highest_work_key = 7;
constexpr int not_hex = -1;
// An encrypted PIN comes back as hex text of at most 33 characters with the terminator.
constexpr std::size_t longest_encrypted_reply = 16;

constexpr bool in_range(int value, int low, int high) { return value >= low && value <= high; }

// Exactly bytes.size() bytes from the front of `text`: -1 when it holds a non-digit
// there or ends sooner.
int bytes_from_text(const char* text, std::span<std::uint8_t> bytes) {
    const std::size_t digits = 2 * bytes.size();
    if (::strnlen(text, digits) < digits) return not_hex;
    return reader::from_hex({text, digits}, bytes) == bytes.size() ? 0 : not_hex;
}

// Checks `keymode`, turns `keytext` into its 8 or 16 bytes and hands them to `load`.
template <class Load>
int load_key_text(int keymode, const char* keytext, Load load) {
    if (!in_range(keymode, 0, highest_keymode) || keytext == nullptr) return link::status_bad_argument;
    const auto mode = static_cast<std::uint8_t>(keymode);
    WipedBytes<16> key;
    if (bytes_from_text(keytext, std::span(key.bytes).first(key_length(mode))) != 0) return not_hex;
    return load(mode, key.data());
}

// An encrypted entry whose cipher text comes back as hex text in `outtext`.
int encrypted_entry_text(int icdev, const EntryForm& form, const EntryArguments& arguments, char* outtext) {
    link::Reply<longest_encrypted_reply> reply;
    const int result = enter_pin(icdev, form, arguments, reply.area, reply.length);
    if (result != 0) return result;
    const auto cipher = reply.data();
    reader::to_hex(cipher, {outtext, 2 * cipher.size()});
    outtext[2 * cipher.size()] = '\0';
    return 0;
}

}  // namespace
}  // namespace qz::pinpad

using namespace qz::pinpad;
using qz::link::status_bad_argument;

QZ_32_API int QZ_32_CALL mw_kb_open(int, int) { return 0; }

QZ_32_API int QZ_32_CALL mw_kb_close(int) {
    const qz::link::ExportLock lock;
    qz::link::set_link_timeouts(5000, 0);
    return 0;
}

QZ_32_API void QZ_32_CALL set_kb_type(int type) { pad_state().kb_type = type; }

QZ_32_API int QZ_32_CALL set_kb_outputMode(int icdev, int mode) {
    const qz::link::ExportLock lock;
    return send_setting(icdev, sub_output_mode, static_cast<std::uint8_t>(mode));
}

QZ_32_API int QZ_32_CALL mw_kb_settimeout(int icdev, unsigned char seconds) {
    const qz::link::ExportLock lock;
    return settimeout(icdev, seconds);
}

QZ_32_API int QZ_32_CALL mw_kb_setpasslen(int icdev, unsigned char length) {
    const qz::link::ExportLock lock;
    return setpwdlen(icdev, length);
}

QZ_32_API int QZ_32_CALL mw_kb_downloadmainkey(int icdev, int keymode, int mainno, const char* keytext) {
    const qz::link::ExportLock lock;
    if (!in_range(mainno, 0, highest_main_key)) return status_bad_argument;
    return load_key_text(keymode, keytext, [&](std::uint8_t mode, const unsigned char* key) {
        return load_mainkey(icdev, mode, static_cast<std::uint8_t>(mainno), key);
    });
}

QZ_32_API int QZ_32_CALL mw_kb_downloaduserkey(int icdev, int keymode, int mainno, int workno, const char* keytext) {
    const qz::link::ExportLock lock;
    if (!in_range(mainno, 0, highest_main_key) || !in_range(workno, 0, highest_work_key)) return status_bad_argument;
    return load_key_text(keymode, keytext, [&](std::uint8_t mode, const unsigned char* key) {
        return load_workkey(icdev, mode, static_cast<std::uint8_t>(mainno), static_cast<std::uint8_t>(workno), key);
    });
}

QZ_32_API int QZ_32_CALL mw_kb_downloaduserkey_nb(int icdev, int keymode, unsigned char mainno, unsigned char workno,
                                       const char* keytext) {
    const qz::link::ExportLock lock;
    return load_key_text(keymode, keytext, [&](std::uint8_t mode, const unsigned char* key) {
        return load_workkey_nb(icdev, mode, mainno, workno, key);
    });
}

QZ_32_API int QZ_32_CALL mw_kb_activekey(int, int mainno, int workno) {
    if (!in_range(mainno, 0, highest_main_key) || !in_range(workno, 0, highest_work_key)) return status_bad_argument;
    pad_state().pwdkb_work_index = static_cast<std::uint32_t>(workno);
    return 0;
}

QZ_32_API int QZ_32_CALL mw_kb_getpin(int icdev, int mode, unsigned char* out) {
    const qz::link::ExportLock lock;
    if (!in_range(mode, 1, 4) || out == nullptr) return status_bad_argument;
    PadReply reply;
    const EntryForm form = entry_for_pad_type(pad_state().kb_type, mode, false);
    const int result = enter_pin(icdev, form, {.mode = mode}, reply.area, reply.length);
    if (result == 0) std::ranges::copy(reply.data(), out);
    return result;
}

QZ_32_API int QZ_32_CALL mw_kb_getenpin(int icdev, int mode, const char* cardtext, char* outtext) {
    const qz::link::ExportLock lock;
    if (!in_range(mode, 1, 4) || cardtext == nullptr || outtext == nullptr) return status_bad_argument;
    std::array<std::uint8_t, card_number_size> card{};
    if (bytes_from_text(cardtext, card) != 0) return -1;
    const PadState& state = pad_state();
    const EntryArguments arguments{
        .mode = mode, .keyno = static_cast<std::uint8_t>(state.pwdkb_work_index), .cardno = card.data()};
    return encrypted_entry_text(icdev, entry_for_pad_type(state.kb_type, mode, true), arguments, outtext);
}

QZ_32_API int QZ_32_CALL mw_kb_getenpin_nb(int icdev, int mode, unsigned char keyno, char* outtext) {
    const qz::link::ExportLock lock;
    if (!in_range(mode, 1, 2) || outtext == nullptr) return status_bad_argument;
    return encrypted_entry_text(icdev, mode == 1 ? form::getpwd_nb : form::getpwd_again_nb, {.keyno = keyno}, outtext);
}
