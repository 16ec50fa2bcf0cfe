// PIN entry on the terminal's own keypad (class 0x00, instruction 0x08): the
// general keypad exchange and the clear and protected entries built on it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "link/command.h"

namespace qz::pinpad {

inline constexpr std::uint8_t esc = 0x1B;

// The letter behind ESC: a first entry or a repeated one.
enum class EntryLetter : std::uint8_t { first = 'I', again = 'E' };

// The value of `mode` for each way of entry.
enum class KeypadMode : std::uint8_t { clear = 0, protected_entry = 1 };

inline constexpr std::size_t keypad_reply_capacity = 300;
using KeypadReply = link::Reply<keypad_reply_capacity>;

// Sends 00 08 00 mode timeout, then `command`. The link waits timeout * 1000 + 1000 ms
// when that is above 5000 (else the current wait stands) and 5000 ms afterwards,
// whatever the outcome.
int keypad_exchange(int icdev, std::uint8_t timeout, std::uint8_t mode, std::span<const std::uint8_t> command,
                    KeypadReply& reply);

// dev_pwdkb: the exchange with `*rlen` set to 0 first and, on success, the whole
// reply copied to `rdata` and the low byte of its length to `*rlen`.
int pwdkb_exchange(int icdev, std::uint8_t timeout, std::uint8_t mode, std::span<const std::uint8_t> command,
                   unsigned char* rlen, unsigned char* rdata);

// The clear entry: ESC and the letter in mode 0; the reply as the terminal gives it.
int clear_entry(int icdev, std::uint8_t timeout, EntryLetter letter, unsigned char* rlen, unsigned char* rdata);

// The protected entry: a fresh session key goes to the terminal wrapped under a row
// of the shared key table; the one or two blocks of the reply are decrypted under it.
// `rdata` gets 8 or 16 bytes; on failure `*rlen` stays 0.
int protected_entry(int icdev, std::uint8_t timeout, EntryLetter letter, unsigned char* rlen,
                    unsigned char* rdata);

}  // namespace qz::pinpad
