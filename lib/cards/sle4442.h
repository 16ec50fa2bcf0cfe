// SLE4442: 256 bytes of main memory, 32 protection positions, a 3-byte PSC. The
// offset goes on the link as one byte, the length low byte first.
#pragma once

#include "cards/memory_command.h"

namespace qz::cards::sle4442 {

inline constexpr unsigned main_size = 256;
inline constexpr unsigned protection_size = 32;
inline constexpr std::size_t psc_length = 3;

inline constexpr MemoryCommand read{.instruction = 0x40, .yield = Yield::reply, .reply_capacity = 300};
inline constexpr MemoryCommand write{.instruction = 0x41};
inline constexpr MemoryCommand psc_check{.instruction = 0x42, .key_length = psc_length};
inline constexpr MemoryCommand psc_read{.instruction = 0x43, .yield = Yield::reply};
inline constexpr MemoryCommand psc_modify{.instruction = 0x44, .key_length = psc_length};
inline constexpr MemoryCommand protection_read{.instruction = 0x45, .yield = Yield::reply};
inline constexpr MemoryCommand protection_write{.instruction = 0x46};
inline constexpr MemoryCommand error_count_read{.instruction = 0x47, .yield = Yield::reply};

// A read or write of `length` positions at `offset` in an area of `area_size`:
// -19 unless `offset` + `length` stays within it (length 0 is sent).
int transfer(int icdev, const MemoryCommand& command, unsigned area_size, unsigned offset, unsigned length,
             const unsigned char* data, unsigned char* out);

}  // namespace qz::cards::sle4442
