// AT88SC102: a 2-byte security code, two 64-byte application zones with 6-byte
// erase keys, 8-byte issuer and protect areas, fuses. Every command is C0, a
// command byte from 60 to 7F, 00, and what its table row adds.
#pragma once

#include <optional>

#include "cards/memory_command.h"

namespace qz::cards::at88sc102 {

inline constexpr unsigned zone_size = 64;
inline constexpr std::size_t code_length = 2;
inline constexpr std::size_t erase_key_length = 6;
inline constexpr std::size_t area_length = 8;
inline constexpr std::uint8_t erased_byte = 0xFF;
inline constexpr int status_not_erased = -52;

constexpr MemoryCommand command(std::uint8_t instruction, std::size_t key_length = 0, Yield yield = Yield::nothing) {
    return {.instruction = instruction, .key_length = key_length, .yield = yield, .reply_capacity = 512};
}

inline constexpr MemoryCommand code_check = command(0x60, code_length);
inline constexpr MemoryCommand code_modify = command(0x61, code_length);
inline constexpr MemoryCommand code_read = command(0x62, 0, Yield::reply);
inline constexpr MemoryCommand zone1_key_check = command(0x63, erase_key_length, Yield::reply);
inline constexpr MemoryCommand zone2_key_check = command(0x64, erase_key_length);
inline constexpr MemoryCommand zone1_key_modify = command(0x65, erase_key_length);
inline constexpr MemoryCommand zone2_key_modify = command(0x66, erase_key_length);
inline constexpr MemoryCommand zone1_key_read = command(0x67, 0, Yield::reply);
inline constexpr MemoryCommand zone2_key_read = command(0x68, 0, Yield::reply);
inline constexpr MemoryCommand code_error_count = command(0x69, 0, Yield::first_byte);
inline constexpr MemoryCommand zone2_fuse_count = command(0x6A, 0, Yield::first_byte);
inline constexpr MemoryCommand zone1_read = command(0x6F, 0, Yield::reply);
inline constexpr MemoryCommand zone2_read = command(0x70, 0, Yield::reply);
inline constexpr MemoryCommand zone1_erase = command(0x71);
inline constexpr MemoryCommand anafuse = command(0x74);
inline constexpr MemoryCommand anafuse_cancel = command(0x75);
inline constexpr MemoryCommand zone1_modify = command(0x76);
inline constexpr MemoryCommand issuer_fuse = command(0x79);
inline constexpr MemoryCommand ec2en_fuse = command(0x7A);
inline constexpr MemoryCommand type_read = command(0x7B, 0, Yield::reply);
inline constexpr MemoryCommand issuer_write = command(0x7C, area_length);
inline constexpr MemoryCommand issuer_read = command(0x7D, 0, Yield::reply);
inline constexpr MemoryCommand protect_write = command(0x7E, area_length);
inline constexpr MemoryCommand protect_read = command(0x7F, 0, Yield::reply);

// Commands picked by a selector 1..count: the first's byte, then one up each.
struct SelectedCommand {
    std::uint8_t first_instruction;
    std::uint8_t count;
    // The command for `sel`; nothing for a selector out of range.
    std::optional<MemoryCommand> pick(unsigned sel) const;
};
inline constexpr SelectedCommand protection_clear{0x6B, 4};
inline constexpr SelectedCommand zone2_erase{0x72, 2};
inline constexpr SelectedCommand zone2_modify{0x77, 2};

// A zone read or modify of `length` bytes at `offset`: -19 unless `offset` is
// below 64 and `length` 1 to 64 (their sum is the terminal's business).
int zone_transfer(int icdev, const std::optional<MemoryCommand>& command, unsigned offset, unsigned length,
                  const unsigned char* data, unsigned char* out);

// Erases a zone and reads all of it back with `read`: -52 when a byte isn't 0xFF.
int erase_zone(int icdev, const std::optional<MemoryCommand>& erase, const MemoryCommand& read);

}  // namespace qz::cards::at88sc102
