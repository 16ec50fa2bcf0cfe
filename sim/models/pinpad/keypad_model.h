// The terminal's own keypad. It answers class 0x00 instruction 0x08, which it
// shares with the serial number write of the control model (whose count byte, 20,
// stands where the keypad has its mode, and whose data needn't begin with ESC):
//
//   00 08 00 mode timeout ESC letter [row, wrapped session key]
//
// The letter is 'I' for a first entry or 'E' for a repeated one.
// mode 0, the clear way: the command is ESC and the letter; the reply is the digits keyed.
// mode 1, the protected way: ESC, the letter, a row number 0 to 9 and an 8-byte session
//   key enciphered under that row of the key table shared with the host. The reply is
//   the digits keyed, filled up with zeros to 8 bytes (16 when more than 8 digits were
//   keyed), each block enciphered under the session key.
// The keypad takes at most 16 keys an entry. With no entry left in the scenario it
// answers entry_timed_out, as when no one types before the time-out; while a
// person types, it waits the command's timeout (seconds) for them.
//
//   "keypad": { "entries": ["123456", "4321"] }
#pragma once

#include <vector>

#include <nlohmann/json.hpp>

#include "sim/models/pinpad/des_cipher.h"
#include "sim/models/pinpad/key_entries.h"
#include "sim/models/pinpad/keypad_key_table.h"
#include "sim/core/terminal.h"

namespace qz::sim {

struct KeypadConfig {
    KeyEntries entries;
};

// The "keypad" section of a scenario document (an empty keypad without one).
KeypadConfig parse_keypad(const nlohmann::json& document);

class KeypadModel final : public DeviceModel {
public:
    explicit KeypadModel(KeypadConfig config);

    std::vector<Route> routes() const override;
    bool takes(const Command& command) const override;
    Reply handle(const Command& command) override;

    // The letters of the most recent entries asked for, in order.
    const std::vector<char>& letters() const { return letters_; }
    std::size_t entries_left() const { return config_.entries.pending(); }

private:
    static Reply protected_entry(const DesBlock& session_key, const std::string& digits);

    KeypadConfig config_;
    std::array<KeypadKey, keypad_key_rows> key_table_;
    std::vector<char> letters_;
};

}  // namespace qz::sim
