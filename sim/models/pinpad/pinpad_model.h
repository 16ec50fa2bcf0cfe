// The external PIN pad, behind class 0xC5. That class also carries contact slot 4
// and the keyboard's messages, so the pad answers only its own sub-commands:
//
//   C5 01 00 s                              time-out, s seconds
//   C5 02 00 n                              PIN length: an entry takes at most n digits (1 to 18)
//   C5 03 00 m k key                        main key k (m 0: 8 bytes, DES; 1: 16 bytes, triple DES)
//   C5 04 00 m k w key                      work key w, enciphered under main key k: the pad
//   C5 07 00 m k w key                        deciphers each block and keeps the clear key
//   C5 05|09 00 ESC L                       clear entry, L 'I' (first) or 'E' (again): the digits
//   C5 05|09 00 ESC 'H' s 0D 0A             the same with the selector s, "0" to "3"
//   C5 06|0A 00 ESC L w 00 00 card          encrypted entry under work key w: the PIN block
//   C5 06|0A 00 ESC 'H' s w 00 00 card
//   C5 08 00 ESC L w                        encrypted entry with no card number
//   C5 09|0A 00 00                          the next key press (on 0A a digit shows as '*')
//   C5 0E 00 m                              output mode
//
// A pad of type 1 answers sub-commands 05 and 06, any other type 09 and 0A.
// The PIN block is ISO 9564 format 0: 0, the PIN length and the digits, filled up
// with F, XOR the account field 00 00 and the six card number bytes; it is
// enciphered by DES under an 8-byte work key, by triple DES under a 16-byte one, and
// holds 4 to 12 digits (an entry is cut at 12; a shorter one than 4 gets wrong_data).
// Key numbers run from 0 to 15. With no entry left the pad answers entry_timed_out.
//
//   "pinpad": {
//     "type": 2, "timeout": 30, "pin_length": 12,
//     "main_keys": [ {"number": 0, "key": {"hex": "..."}} ],
//     "work_keys": [ {"number": 0, "key": {"hex": "..."}} ],   clear keys
//     "entries": ["123456"]
//   }
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "sim/models/pinpad/key_entries.h"
#include "sim/core/terminal.h"

namespace qz::sim {

inline constexpr std::size_t pad_key_count = 16;
using PadKeys = std::array<std::vector<std::uint8_t>, pad_key_count>;  // empty: not loaded

struct PinPadConfig {
    int type = 2;
    std::uint8_t timeout_seconds = 30;
    std::uint8_t pin_length = 12;
    PadKeys main_keys;
    PadKeys work_keys;
    KeyEntries entries;
};

// The "pinpad" section of a scenario document (a pad without keys or entries without one).
PinPadConfig parse_pinpad(const nlohmann::json& document);

class PinPadModel final : public DeviceModel {
public:
    explicit PinPadModel(PinPadConfig config) : config_(std::move(config)) {}

    std::vector<Route> routes() const override;
    Reply handle(const Command& command) override;

    // What the pad holds, for tests and for a host that reads back a PIN block.
    std::span<const std::uint8_t> main_key(std::size_t number) const { return config_.main_keys.at(number); }
    std::span<const std::uint8_t> work_key(std::size_t number) const { return config_.work_keys.at(number); }
    std::uint8_t timeout_seconds() const { return config_.timeout_seconds; }
    std::uint8_t pin_length() const { return config_.pin_length; }
    std::optional<std::uint8_t> output_mode() const { return output_mode_; }
    // How each entry opened: "I", "E" or "H" and the selector digit.
    const std::vector<std::string>& openings() const { return openings_; }
    std::size_t entries_left() const { return config_.entries.pending(); }

private:
    Reply set_timeout(std::span<const std::uint8_t> body);
    Reply set_pin_length(std::span<const std::uint8_t> body);
    Reply load_main_key(std::span<const std::uint8_t> body);
    Reply load_work_key(std::span<const std::uint8_t> body);
    Reply clear_entry(std::span<const std::uint8_t> body);
    Reply encrypted_entry(std::span<const std::uint8_t> body);
    Reply entry_without_card(std::span<const std::uint8_t> body);
    Reply set_output_mode(std::span<const std::uint8_t> body);

    Reply next_key(bool shown_as_star);
    // How long a person has for an entry.
    std::chrono::seconds wait() const;
    // The PIN block of the next entry under work key `work`, with `account` the
    // eight bytes of the account field.
    Reply pin_block(std::uint8_t work, std::span<const std::uint8_t> account);

    struct SubCommand {
        std::uint8_t code;
        std::optional<bool> type_one;  // set: only a pad of type 1 (true) or of another type answers
        Reply (PinPadModel::*run)(std::span<const std::uint8_t>);
        const char* name;
    };
    static const std::array<SubCommand, 11> sub_commands;

    PinPadConfig config_;
    std::optional<std::uint8_t> output_mode_;
    std::vector<std::string> openings_;
};

}  // namespace qz::sim
