// A 1K sector card: 16 sectors of 4 blocks of 16 bytes. The last block of each
// sector is its trailer: key A, the access bits (and a free byte), key B. A block
// is read or written only after the card has authenticated its sector with a key
// that the access bits allow for that operation. Value blocks keep a signed
// 32-bit value that increment, decrement and restore put into the card's transfer
// buffer and transfer writes back.
//
//   C1 5F 00 k s key   authenticate sector s with key A (k 0x60) or B (k 0x61)
//   C1 46 00 b         read block b (16 bytes; keys read as zeros)
//   C1 47 00 b data    write block b (block 0 never)
//   C1 48 00 b v       increment value block b by v (4 bytes, low first) into the buffer
//   C1 49 00 b v       decrement likewise
//   C1 4A 00 b         restore: value block b into the buffer
//   C1 4B 00 b         transfer the buffer to value block b
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "sim/models/rfcards/field_card.h"

namespace qz::sim {

class SectorCard final : public FieldCard {
public:
    static constexpr std::size_t block_size = 16;
    static constexpr std::size_t block_count = 64;
    using Memory = std::array<std::uint8_t, block_size * block_count>;

    // The memory of a card fresh from the factory: block 0 from the UID, zero data,
    // trailers with keys FF..FF and the transport access bits.
    static Memory factory_memory(std::span<const std::uint8_t, 4> uid);

    SectorCard(std::span<const std::uint8_t, 4> uid, const Memory& memory);

    static constexpr std::uint8_t type_byte = 0x08;

    std::span<const std::uint8_t> uid() const override { return uid_; }
    std::uint8_t sak() const override { return type_byte; }
    std::vector<std::uint8_t> serial() const override { return {uid_.begin(), uid_.end()}; }
    void power_cycle() override;
    std::optional<Reply> handle(std::uint8_t instruction, std::span<const std::uint8_t> body) override;

    std::span<const std::uint8_t, block_size> block(std::size_t number) const;

private:
    enum class Key : std::uint8_t { a, b };
    struct Authenticated {
        std::size_t sector;
        Key key;
    };
    struct Pending {
        std::int32_t value;
        std::uint8_t address;
    };

    Reply authenticate(Arguments& arguments);
    Reply read(std::size_t number) const;
    Reply write(std::size_t number, std::span<const std::uint8_t> data);
    // Increment, decrement (`amount` below 0) and restore (0) under `operation`'s access rule.
    Reply change(std::size_t number, std::int64_t amount, std::size_t operation);
    Reply transfer(std::size_t number);
    // ok when the authenticated key may do `operation` on data block `number`.
    std::uint16_t allowed(std::size_t number, std::size_t operation) const;
    std::optional<std::int32_t> value_of(std::size_t number) const;
    std::span<std::uint8_t, block_size> block_mut(std::size_t number);

    std::array<std::uint8_t, 4> uid_;
    Memory memory_;
    std::optional<Authenticated> authenticated_;
    std::optional<Pending> pending_;
};

}  // namespace qz::sim
