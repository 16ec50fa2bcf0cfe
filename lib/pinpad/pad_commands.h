// The external PIN pad's settings and key loads: commands of class 0xC5 that the
// terminal passes on to the pad.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "link/command.h"

namespace qz::pinpad {

inline constexpr std::uint8_t pad_class = 0xC5;
inline constexpr std::size_t pad_reply_capacity = 50;
using PadReply = link::Reply<pad_reply_capacity>;

inline constexpr std::uint8_t shortest_pad_timeout = 6;   // seconds
inline constexpr std::uint8_t longest_pin_length = 18;

// Sub-commands of the settings and key loads.
enum PadSetting : std::uint8_t {
    sub_timeout = 0x01,
    sub_pin_length = 0x02,
    sub_main_key = 0x03,
    sub_work_key = 0x04,
    sub_work_key_nb = 0x07,
    sub_output_mode = 0x0E,
};

// C5 `sub_command` 00 `value`: a one-byte setting.
int send_setting(int icdev, std::uint8_t sub_command, std::uint8_t value);

// The pad's time-out, at least 6 s; on success the link waits seconds * 1000 + 1000 ms
// from now on, for PIN entries too, and the first gate is open.
int settimeout(int icdev, std::uint8_t seconds);
// The PIN length, 1 to 18; on success the second gate is open.
int setpwdlen(int icdev, std::uint8_t length);

// The key loads: `keymode` 0 (8 key bytes) or 1 (16), else -19. The key bytes go to
// the pad as given. A main key of number 0 to 15 is copied to the host's table once
// the pad has taken it.
int load_mainkey(int icdev, std::uint8_t keymode, std::uint8_t mainno, const unsigned char* key);
int load_workkey(int icdev, std::uint8_t keymode, std::uint8_t mainno, std::uint8_t workno, const unsigned char* key);
int load_workkey_nb(int icdev, std::uint8_t keymode, std::uint8_t mainno, std::uint8_t workno,
                    const unsigned char* key);

// Takes the work key in the clear, wraps each 8-byte block of it under the host's
// copy of main key `mainno` (DES, or E-D-E for a 16-byte main key) and loads it as
// work key `workno` (sub-command 04). On success the host's work key table holds the
// clear key, for pwd_decrypt. The key numbers must name host rows (0 to 15), else -19.
int load_workkey_wrapped(int icdev, std::uint8_t keymode, std::uint8_t mainno, std::uint8_t workno,
                         const unsigned char* key);

}  // namespace qz::pinpad
