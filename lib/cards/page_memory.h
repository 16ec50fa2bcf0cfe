// Contactless cards of 4-byte pages: the Ultralight class (MF_) and the NTAG215
// (NTAG215_). The two families send the same commands in different forms: MF_
// puts a zero between the instruction and the page, NTAG215_ sends the page at once.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "cards/card_commands.h"
#include "cards/field_command.h"
#include "link/status.h"

namespace qz::cards::pages {

inline constexpr std::size_t page_size = 4;
inline constexpr std::size_t uid_size = 7;
// The families' own result for a refused parameter.
inline constexpr int refused = -1;

inline constexpr std::size_t authentication_reply_room = 60;
inline constexpr std::size_t base_info_reply_room = 512;
inline constexpr std::size_t ntag_open_reply_room = 1026;
// The key that MF_Authentication sends behind its length byte fits the send area.
inline constexpr std::size_t max_key_length = Arguments::capacity - 1;

constexpr FieldCommand mf(std::uint8_t instruction, std::size_t room = field_reply_room, ReplyUse use = {}) {
    return {contactless_class, instruction, 0x00, room, use, refused};
}
constexpr FieldCommand ntag(std::uint8_t instruction, std::size_t room = field_reply_room, ReplyUse use = {}) {
    return {contactless_class, instruction, std::nullopt, room, use, refused};
}

// The UID comes last byte first: bytes 0..6 of an Ultralight's reply, 1..7 of an NTAG215's.
inline constexpr FieldCommand mf_open = mf(instruction_select, field_reply_room, {ReplyUse::reversed, 0, uid_size});
inline constexpr FieldCommand mf_authenticate = mf(instruction_page_authenticate, authentication_reply_room);
inline constexpr FieldCommand mf_read = mf(instruction_read, field_reply_room, {ReplyUse::bytes, 0, page_size});
inline constexpr FieldCommand mf_write = mf(instruction_write_page);
inline constexpr FieldCommand ntag_open = mf(instruction_select, ntag_open_reply_room, {ReplyUse::reversed, 1, uid_size});
inline constexpr FieldCommand ntag_read = ntag(instruction_read, field_reply_room, {ReplyUse::all});
inline constexpr FieldCommand ntag_write = ntag(instruction_write_page);
inline constexpr FieldCommand ntag_authenticate = ntag(instruction_page_authenticate, authentication_reply_room);
inline constexpr FieldCommand ntag_read_pages = ntag(instruction_read_pages, base_info_reply_room, {ReplyUse::all});
inline constexpr FieldCommand activate{contactless_class, instruction_activate, 0x00, field_reply_room,
                                        {ReplyUse::all}, link::status_bad_argument};

// Ultralight page map.
inline constexpr std::uint8_t otp_page = 3;

// NTAG215 page map.
inline constexpr std::uint8_t base_info_first_page = 80;
inline constexpr std::uint8_t base_info_last_page = 127;
inline constexpr std::size_t base_info_size = (base_info_last_page - base_info_first_page + 1) * page_size;
inline constexpr std::uint8_t dynamic_lock_page = 130;
inline constexpr std::uint8_t password_page = 133;
inline constexpr std::array<std::uint8_t, page_size> dynamic_lock_bytes{0x70, 0x00, 0x00, 0x00};
inline constexpr std::array<std::uint8_t, page_size> factory_password{0xFF, 0xFF, 0xFF, 0xFF};

// The one bit of the Ultralight's lock pages that protects `page`: the lock page
// it lies in, the byte there and the bit's value. Nothing for a page without one.
struct LockBit {
    std::uint8_t page;
    std::size_t byte;
    std::uint8_t value;
};
std::optional<LockBit> lock_bit(std::uint8_t page);

// Writes 4 bytes to an NTAG215 page (C1 4C `page` data).
int ntag_write_page(int icdev, std::uint8_t page, const std::uint8_t* data);

// Personalises an NTAG215: factory password, new `key`, `text` to the base
// information pages, dynamic lock. Results as NTAG215_Init gives them.
int personalise(int icdev, const std::uint8_t* key, const char* text);

// Pages 80..127 to `out` as a terminated string of at most base_info_size characters.
int read_base_info(int icdev, std::uint8_t* out);

// ActiveCard: activates any card in the field and takes the reply apart;
// `*ats_length` is 0 unless it succeeds.
int activate_any(int icdev, std::uint8_t mode, std::uint8_t* type, std::uint8_t* uid, std::uint8_t* ats,
                 std::uint8_t* ats_length);

}  // namespace qz::cards::pages
