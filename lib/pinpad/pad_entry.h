// PIN entry on the external pad. All the entry commands share one shape,
//   C5 sub-command 00, an opening, a tail,
// so each form is a row of data and one routine builds and runs them all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "link/command.h"
#include "pinpad/pad_commands.h"

namespace qz::pinpad {

// What opens the entry command.
enum class Opening : std::uint8_t {
    first,      // ESC 'I'
    again,      // ESC 'E'
    selector,   // ESC 'H' and the selector digit drawn from the mode
    next_key,   // a single 00: collect the pad's next key press
};

// What follows the opening.
enum class Tail : std::uint8_t {
    none,
    crlf,          // 0D 0A
    key_and_card,  // work key number, 00 00, six bytes of the card number
    key,           // work key number alone
};

struct EntryForm {
    std::uint8_t sub_command;
    Opening opening;
    Tail tail;

    // The entries that name a work key and a card record the key number as the
    // current work key when they succeed.
    constexpr bool records_work_key() const { return tail == Tail::key_and_card; }
    constexpr bool operator==(const EntryForm&) const = default;
};

namespace form {
// Clear result.
inline constexpr EntryForm getpwd{0x05, Opening::first, Tail::none};
inline constexpr EntryForm getpwd_again{0x05, Opening::again, Tail::none};
inline constexpr EntryForm getpwd2{0x09, Opening::first, Tail::none};
inline constexpr EntryForm getpwd_again2{0x09, Opening::again, Tail::none};
inline constexpr EntryForm getpwd_new{0x05, Opening::selector, Tail::crlf};
inline constexpr EntryForm getpwd_new2{0x09, Opening::selector, Tail::crlf};
inline constexpr EntryForm getpwd_new2_next_key{0x09, Opening::next_key, Tail::none};
// Encrypted result.
inline constexpr EntryForm getpwd_encrypt{0x06, Opening::first, Tail::key_and_card};
inline constexpr EntryForm getpwd_again_encrypt{0x06, Opening::again, Tail::key_and_card};
inline constexpr EntryForm getpwd_encrypt2{0x0A, Opening::first, Tail::key_and_card};
inline constexpr EntryForm getpwd_again_encrypt2{0x0A, Opening::again, Tail::key_and_card};
inline constexpr EntryForm getpwd_encrypt_new{0x06, Opening::selector, Tail::key_and_card};
inline constexpr EntryForm getpwd_encrypt_new2{0x0A, Opening::selector, Tail::key_and_card};
inline constexpr EntryForm getpwd_encrypt_new2_next_key{0x0A, Opening::next_key, Tail::none};
// Encrypted result under the work key given, no card (sub-command 08).
inline constexpr EntryForm getpwd_nb{0x08, Opening::first, Tail::key};
inline constexpr EntryForm getpwd_again_nb{0x08, Opening::again, Tail::key};
}  // namespace form

inline constexpr std::size_t card_number_size = 6;

struct EntryArguments {
    int mode = 0;                          // for Opening::selector
    std::uint8_t keyno = 0;                // for the tails that name a work key
    const unsigned char* cardno = nullptr;  // card_number_size bytes, for Tail::key_and_card
};

// The selector digit of a mode: 1 "0", 2 "2", 3 "1", any other "3".
std::uint8_t selector_digit(int mode);

link::Payload entry_payload(const EntryForm& form, const EntryArguments& arguments);

// One entry: -66 while the pad's time-out hasn't been set, -65 while its PIN length
// hasn't, then the link wait of the pad applied (and left in force), the command sent
// and the reply put in `reply_area` (a longer reply is refused with -38).
int enter_pin(int icdev, const EntryForm& form, const EntryArguments& arguments, std::span<std::uint8_t> reply_area,
              int& reply_length);

// enter_pin for the pwdkb_ exports: on success the reply goes to `rdata`, the low
// byte of its length to `*rlen`. Null pointers give -19.
int enter_pin(int icdev, const EntryForm& form, const EntryArguments& arguments, unsigned char* rlen,
              unsigned char* rdata);

// The form that the second interface uses for a pad type and a mode (1 to 4): pad
// type 1 has sub-commands 05 and 06 with separate first and repeated entries, every
// other type 09 and 0A with the selector.
EntryForm entry_for_pad_type(std::int32_t kb_type, int mode, bool encrypted);

}  // namespace qz::pinpad
