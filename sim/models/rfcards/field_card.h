// A contactless memory card in the field: its serial number as the terminal
// reports it on selection, its power cycle, and the commands it carries out
// itself while selected (reads, writes, authentication, value operations).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "sim/core/terminal.h"
#include "sim/models/memcards/memory_chip.h"

namespace qz::sim {

namespace status {
// The key or password given is not the card's: the authentication state is gone.
inline constexpr std::uint16_t authentication_failed = 0x6300;
}  // namespace status

class FieldCard {
public:
    virtual ~FieldCard() = default;
    virtual std::span<const std::uint8_t> uid() const = 0;
    // The card's type byte (SAK), which an activation reports.
    virtual std::uint8_t sak() const = 0;
    // What the terminal answers when it selects the card.
    virtual std::vector<std::uint8_t> serial() const = 0;
    // The card leaves the field's power and comes back: authentication and any
    // pending value are gone, the memory stays.
    virtual void power_cycle() = 0;
    // The card's reply to `instruction` with the command's `body` (parameter and
    // data); nothing when it is no command of this card.
    virtual std::optional<Reply> handle(std::uint8_t instruction, std::span<const std::uint8_t> body) = 0;
};

}  // namespace qz::sim
