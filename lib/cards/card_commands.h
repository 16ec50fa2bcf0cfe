// Where a CPU card command goes (the class byte), what it does (the instruction),
// and the deactivation that both families share.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace qz::cards {

inline constexpr std::uint8_t contactless_class = 0xC1;

// Class byte of each contact slot; 0xC1 belongs to the contactless field, not to a slot.
inline constexpr std::array<std::uint8_t, 5> slot_classes{0xC0, 0xC2, 0xC3, 0xC4, 0xC5};

constexpr std::optional<std::uint8_t> slot_class(unsigned slot) {
    if (slot >= slot_classes.size()) return std::nullopt;
    return slot_classes[slot];
}

enum Instruction : std::uint8_t {
    instruction_activate = 0x30,
    instruction_exchange = 0x31,
    instruction_deactivate = 0x32,
};

// How many 61xx and 6Cxx answers of a card an exchange follows with a further
// command. A card still asking after that many is broken or hostile; its last
// reply is then handed over as it stands.
inline constexpr int max_followed_rounds = 64;

// Deactivates the card addressed by `card_class` (CloseCard, ICC_PowerOff).
int deactivate(int icdev, std::uint8_t card_class);

}  // namespace qz::cards
