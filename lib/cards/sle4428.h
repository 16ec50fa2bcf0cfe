// SLE4428: 1024 bytes with a protection bit each, a 2-byte PSC. Offsets go on the
// link low byte first, lengths high byte first; long ranges move in chunks.
#pragma once

#include "cards/memory_command.h"

namespace qz::cards::sle4428 {

inline constexpr unsigned memory_size = 1024;
inline constexpr std::size_t psc_length = 2;
// Room each chunk has in the caller's buffer, whatever the chunk's size.
inline constexpr std::size_t stride = 256;

// A command that moves a range chunk by chunk, at most `chunk_size` positions a
// command. A chunk's reply longer than the stride is refused (-38).
struct ChunkedCommand {
    MemoryCommand command;
    unsigned chunk_size;
};

inline constexpr ChunkedCommand read{{.instruction = 0x85, .yield = Yield::reply, .reply_capacity = stride}, 256};
inline constexpr ChunkedCommand write{{.instruction = 0x86}, 256};
inline constexpr ChunkedCommand protection_read{
    {.instruction = 0x87, .yield = Yield::reply, .reply_capacity = stride}, 128};
inline constexpr ChunkedCommand protection_write{{.instruction = 0x88}, 256};

inline constexpr MemoryCommand psc_modify{.instruction = 0x83, .key_length = psc_length};
inline constexpr MemoryCommand psc_check{.instruction = 0x84, .key_length = psc_length};
inline constexpr MemoryCommand error_count_read{.instruction = 0x89, .yield = Yield::reply};

// -19 unless `length` is 1 or more and the range ends within the card; else the
// chunks in order, stopping at the first that fails (with its status). A read puts
// chunk i at out + i * stride, a write takes it from data + i * stride.
int transfer(int icdev, const ChunkedCommand& chunked, unsigned offset, unsigned length, const unsigned char* data,
             unsigned char* out);

}  // namespace qz::cards::sle4428
