// What the library keeps of the external PIN pad, once for the process: the two
// settings gates, the link wait for PIN entries, the current work key, the host's
// copies of the keys and the pad type.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace qz::pinpad {

// Key row: the type byte (0 a single DES key of 8 bytes, 1 a triple-DES key of 16),
// then the key.
inline constexpr std::size_t key_rows = 16;
inline constexpr std::size_t key_row_size = 17;
using KeyRow = std::array<std::uint8_t, key_row_size>;
using KeyTable = std::array<KeyRow, key_rows>;

inline constexpr std::uint8_t highest_keymode = 1;

constexpr std::size_t key_length(std::uint8_t keymode) { return keymode == 0 ? 8 : 16; }

struct PadState {
    bool pwdkb_timeout_set = false;
    bool pwdkb_pwdlen_set = false;
    std::uint32_t pwdkb_link_timeout = 5000;
    std::uint32_t pwdkb_work_index = 0;
    KeyTable pwdkb_main_keys{};
    KeyTable pwdkb_work_keys{};
    std::int32_t kb_type = 0;
};

PadState& pad_state();

// Puts the state back to its values at load (for tests).
void reset_pad_state();

// Row `number` of `table`, or nullptr for numbers of 16 and above: the host keeps
// no copy of such keys.
KeyRow* key_row(KeyTable& table, std::uint32_t number);

// Writes the type byte and the key's 8 or 16 bytes. An 8-byte key leaves the
// second half of a longer key stored before it as it was.
void store_key(KeyRow& row, std::uint8_t keymode, std::span<const std::uint8_t> key);

}  // namespace qz::pinpad
