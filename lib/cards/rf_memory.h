// Sector cards in the contactless field (the rf_ family): find the card,
// authenticate a sector, read and write 16-byte blocks, value blocks.
#pragma once

#include <cstddef>
#include <cstdint>

#include "cards/card_commands.h"
#include "cards/field_command.h"
#include "link/status.h"

namespace qz::cards::rf {

inline constexpr std::size_t block_size = 16;
inline constexpr std::size_t key_size = 6;
// Most serial number bytes that finding a card hands over.
inline constexpr std::size_t serial_room = 16;

inline constexpr int refused = link::status_bad_argument;
inline constexpr std::uint8_t no_parameter_byte = 0x00;
inline constexpr std::uint8_t terminal_class = 0x00;
inline constexpr std::uint8_t field_status_class = 0x32;
inline constexpr std::uint8_t antenna_parameter = 0x20;

constexpr FieldCommand command(std::uint8_t instruction, std::size_t room = field_reply_room, ReplyUse use = {}) {
    return {contactless_class, instruction, no_parameter_byte, room, use, refused};
}
inline constexpr ReplyUse first_byte{ReplyUse::bytes, 0, 1};

inline constexpr FieldCommand reset_field = command(instruction_reset_field);
inline constexpr FieldCommand find = command(instruction_select, serial_room, {ReplyUse::all});
inline constexpr FieldCommand authenticate = command(instruction_sector_authenticate);
inline constexpr FieldCommand read_block = command(instruction_read, block_size, {ReplyUse::bytes, 0, block_size});
inline constexpr FieldCommand write_block = command(instruction_write_block);
inline constexpr FieldCommand increment = command(instruction_increment);
inline constexpr FieldCommand decrement = command(instruction_decrement);
inline constexpr FieldCommand transfer = command(instruction_transfer);
inline constexpr FieldCommand restore = command(instruction_restore);
inline constexpr FieldCommand halt = command(instruction_halt);
inline constexpr FieldCommand deselect = command(instruction_deselect);
inline constexpr FieldCommand deselect_status = command(instruction_deselect, field_reply_room, first_byte);
inline constexpr FieldCommand field_status{
    field_status_class, instruction_field_status, no_parameter_byte, field_reply_room, first_byte, refused};
inline constexpr FieldCommand antenna{
    terminal_class, instruction_antenna, antenna_parameter, field_reply_room, first_byte, refused};
inline constexpr FieldCommand field_uids{
    terminal_class, instruction_field_uids, std::nullopt, field_reply_room, {ReplyUse::all}, refused};

// Finds the card in the field (C1 40 00 `mode`) and hands its serial number, the
// whole reply of at most serial_room bytes, to `serial`. Behind rf_card.
int find_card(int icdev, std::uint8_t mode, unsigned char* serial);

}  // namespace qz::cards::rf
