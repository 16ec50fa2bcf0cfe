// The commands of the colour screen (class 0xCD): the payload head, the first
// command of a picture transfer and the block transfer that carries content.
#pragma once

#include <cstdint>
#include <span>

#include "link/command.h"

namespace qz::screen {

inline constexpr int screen_width = 800;
inline constexpr int screen_height = 480;
inline constexpr int page_count = 5;
inline constexpr std::size_t block_size = 4096;

enum class Instruction : std::uint8_t {
    fill = 0x01,
    clear = 0x04,
    clear_rect = 0x05,
    activate_page = 0x06,
    text_first = 0x10,
    text_data = 0x20,
    picture_first = 0x13,
    picture_data = 0x23,
    monochrome_first = 0x14,
    monochrome_data = 0x24,
    store_screen_first = 0x17,
    store_screen_data = 0x27,
    store_page_first = 0x16,
    store_page_data = 0x26,
    sleep_time = 0x30,
    vendor = 0x31,
};

// A first command and the data command that carries its blocks.
struct TransferCommands {
    Instruction first;
    Instruction data;
};

// 0xCD, the instruction, 0x00.
link::Payload screen_payload(Instruction instruction);

// One transaction whose reply data do not matter: its status.
int send_screen_command(int icdev, const link::Payload& payload);

// Raises an odd coordinate or size to the next even value.
constexpr int round_up_even(int value) { return value + (value & 1); }

// Where and how large a picture lands, and its content length in bytes.
struct PictureArea {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    std::uint32_t content_length = 0;
};

// The 17-byte first command of the picture family.
link::Payload picture_first_command(Instruction instruction, const PictureArea& area);

// Carries `content` in blocks of at most 4096 bytes with `data_instruction`, one
// transaction a block, and stops at the first failing one. When `paced`, each
// block runs under a read time-out of 2000 ms (15000 ms for the last), and
// 2000/0 stand after each block whatever its outcome.
int send_screen_blocks(int icdev, Instruction data_instruction, std::span<const std::uint8_t> content, bool paced);

// Sends a first command and, if the terminal takes it, the content behind it.
int send_transfer(int icdev, const link::Payload& first, Instruction data_instruction,
                  std::span<const std::uint8_t> content, bool paced);

// Clears a rectangle of the screen; `kind` 0..3. Positions and sizes are checked
// as given, then odd ones are raised by one.
int clear_screen_rect(int icdev, int kind, int x, int y, int width, int height);

}  // namespace qz::screen
