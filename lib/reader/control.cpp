// The terminal's own control commands (class 0x00): speed, buzzer, display mode,
// card state, serial and registration numbers, EEPROM.
#include <algorithm>
#include <array>

#include "link/command.h"
#include "link/export_lock.h"
#include "link/status.h"
#include "link/terminal_commands.h"
#include "qz_32.h"

namespace qz::reader {
namespace {

using link::Payload;
using link::Reply;
using link::terminal_class;
namespace terminal = link::terminal;

constexpr std::size_t serial_number_size = 20;
constexpr unsigned eeprom_limit = 200;  // highest offset and longest range
constexpr std::size_t eeprom_reply_capacity = 256;

int command(int icdev, const Payload& payload) {
    Reply<64> reply;
    return link::transact(icdev, payload, reply);
}

bool eeprom_range_ok(unsigned offset, unsigned length) {
    return offset <= eeprom_limit && length != 0 && length <= eeprom_limit;
}

Payload eeprom_command(std::uint8_t instruction, unsigned start, unsigned count) {
    Payload payload{terminal_class, instruction, 0x00};
    payload.add(static_cast<std::uint8_t>(start / 2)).add_be16(static_cast<std::uint16_t>(count));
    return payload;
}

// Reads whole words around [offset, offset + length) and hands over just the range.
int read_eeprom(int icdev, unsigned offset, unsigned length, unsigned char* data) {
    if (!eeprom_range_ok(offset, length) || data == nullptr) return link::status_bad_argument;
    const bool odd_start = (offset & 1) != 0;
    const unsigned start = offset - (odd_start ? 1 : 0);
    unsigned count = length + (odd_start ? 1 : 0);
    count += count & 1;
    Reply<eeprom_reply_capacity> reply;
    const std::size_t skipped = odd_start ? 1 : 0;
    const int result = reply.require(link::transact(icdev, eeprom_command(terminal::read_eeprom, start, count), reply), skipped + length);
    if (result == 0) std::copy_n(reply.area.begin() + static_cast<std::ptrdiff_t>(skipped), length, data);
    return result;
}

// Writes whole words: bytes sharing a word with the range keep the value read first.
int write_eeprom(int icdev, unsigned offset, unsigned length, const unsigned char* data) {
    if (!eeprom_range_ok(offset, length) || data == nullptr) return link::status_bad_argument;
    const bool head = (offset & 1) != 0;            // the range starts inside a word
    const bool tail = ((offset + length) & 1) != 0;  // and/or ends inside one
    const unsigned start = offset - (head ? 1 : 0);
    const unsigned count = length + (head ? 1 : 0) + (tail ? 1 : 0);

    std::array<unsigned char, eeprom_reply_capacity> kept{};
    unsigned char head_byte = 0;
    unsigned char tail_byte = 0;
    if (head || tail) {
        // One read of the whole range when both ends are partial, else the one word.
        const unsigned read_start = head ? start : start + count - 2;
        const unsigned read_count = head && tail ? count : 2;
        const int result = read_eeprom(icdev, read_start, read_count, kept.data());
        if (result != 0) return result;
        head_byte = kept[0];
        tail_byte = kept[read_count - 1];
    }

    Payload payload = eeprom_command(terminal::write_eeprom, start, count);
    if (head) payload.add(head_byte);
    payload.add(std::span(data, length));
    if (tail) payload.add(tail_byte);
    return command(icdev, payload);
}

}  // namespace
}  // namespace qz::reader

using qz::link::Payload;
using qz::link::status_bad_argument;
using qz::link::terminal_class;
namespace terminal = qz::link::terminal;

QZ_32_API int QZ_32_CALL dev_setbaud(int icdev, unsigned char baud_code) {
    const qz::link::ExportLock lock;
    if (baud_code > 4) return status_bad_argument;
    return qz::reader::command(icdev, Payload{terminal_class, terminal::speed, 0x00, baud_code});
}

QZ_32_API int QZ_32_CALL dev_beep(int icdev, unsigned char beep_a, unsigned char beep_b, unsigned char beep_c) {
    const qz::link::ExportLock lock;
    return qz::reader::command(icdev, Payload{terminal_class, terminal::beep, 0x00, beep_c, beep_b, beep_a});
}

QZ_32_API int QZ_32_CALL dev_disp(int icdev, unsigned char mode) {
    const qz::link::ExportLock lock;
    return qz::reader::command(icdev, Payload{terminal_class, terminal::display, 0x00, mode});
}

QZ_32_API int QZ_32_CALL dev_cardstate(int icdev, unsigned char* state) {
    const qz::link::ExportLock lock;
    if (state == nullptr) return status_bad_argument;
    qz::link::Reply<64> reply;
    const int result =
        reply.require(qz::link::transact(icdev, Payload{terminal_class, terminal::card_state, 0x00}, reply), 1);
    if (result == 0) *state = reply.area[0];
    return result;
}

QZ_32_API int QZ_32_CALL dev_writesnr(int icdev, unsigned char length, const unsigned char* data) {
    const qz::link::ExportLock lock;
    if (length == 0 || length > qz::reader::serial_number_size || data == nullptr) return status_bad_argument;
    Payload payload{terminal_class, terminal::write_serial_number, 0x00,
                    static_cast<std::uint8_t>(qz::reader::serial_number_size)};
    payload.add(std::span(data, length)).add_zeros(qz::reader::serial_number_size - length);
    return qz::reader::command(icdev, payload);
}

QZ_32_API int QZ_32_CALL dev_readsnr(int icdev, unsigned char length, unsigned char* data) {
    const qz::link::ExportLock lock;
    if (length == 0 || length > qz::reader::serial_number_size || data == nullptr) return status_bad_argument;
    const auto count = static_cast<std::uint8_t>(length + (length & 1));
    qz::link::Reply<64> reply;
    const int result = reply.require(
        qz::link::transact(icdev, Payload{terminal_class, terminal::read_serial_number, 0x00, count}, reply), length);
    if (result == 0) std::copy_n(reply.area.begin(), length, data);
    return result;
}

QZ_32_API int QZ_32_CALL dev_readregno(int icdev, unsigned char* length, unsigned char* data) {
    const qz::link::ExportLock lock;
    if (length == nullptr || data == nullptr) return status_bad_argument;
    *length = 0;
    qz::link::Reply<255> reply;
    int result;
    {
        qz::link::TimeoutsForCommand timeouts(100, 0);
        result = qz::link::transact(icdev, Payload{terminal_class, terminal::registration_number, 0x00}, reply);
    }
    if (result == 0) {
        *length = static_cast<unsigned char>(reply.length);
        std::copy(reply.data().begin(), reply.data().end(), data);
    }
    return result;
}

QZ_32_API int QZ_32_CALL dev_readeeprom(int icdev, unsigned short offset, unsigned short length, unsigned char* data) {
    const qz::link::ExportLock lock;
    return qz::reader::read_eeprom(icdev, offset, length, data);
}

QZ_32_API int QZ_32_CALL dev_writeeeprom(int icdev, unsigned short offset, unsigned short length, const unsigned char* data) {
    const qz::link::ExportLock lock;
    return qz::reader::write_eeprom(icdev, offset, length, data);
}
