#include "pinpad/keypad.h"

#include <algorithm>
#include <array>

#include "link/link_state.h"
#include "link/terminal_commands.h"
#include "link/status.h"
#include "pinpad/keypad_table.h"
#include "pinpad/wiped_bytes.h"
#include "platform/random.h"
#include "reader/des.h"

namespace qz::pinpad {
namespace {

using reader::des_block;
using reader::des_block_size;

constexpr std::uint32_t default_read_ms = 5000;
constexpr std::uint8_t keypad_entry = 0x08;
constexpr std::size_t protected_command_size = 3 + des_block_size;  // ESC, letter, row, wrapped key
constexpr std::size_t longest_protected_reply = 2 * des_block_size;

// Bytes from the system's random source, each kept modulo `modulus`; the terminal
// only needs a row number below the table's size and a key without 0xFF.
void random_fill(std::span<std::uint8_t> bytes, unsigned modulus) {
    platform::random_bytes(bytes);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(byte % modulus);
}

}  // namespace

int keypad_exchange(int icdev, std::uint8_t timeout, std::uint8_t mode, std::span<const std::uint8_t> command,
                    KeypadReply& reply) {
    // A wait longer than the usual read time-out gets its own; the usual one follows.
    const std::uint32_t wait_ms = timeout * 1000u + 1000u;
    const auto& current = link::link_state();
    const bool longer = wait_ms > default_read_ms;
    const link::TimeoutsForCommand timeouts(longer ? wait_ms : current.read_ms, longer ? 0 : current.write_gap_ms,
                                            default_read_ms, 0);
    link::Payload payload{link::terminal_class, keypad_entry, 0x00, mode, timeout};
    payload.add(command);
    return link::transact(icdev, payload, reply);
}

int pwdkb_exchange(int icdev, std::uint8_t timeout, std::uint8_t mode, std::span<const std::uint8_t> command,
                   unsigned char* rlen, unsigned char* rdata) {
    if (rlen == nullptr || rdata == nullptr) return link::status_bad_argument;
    *rlen = 0;
    KeypadReply reply;
    const int result = keypad_exchange(icdev, timeout, mode, command, reply);
    if (result == 0) {
        *rlen = static_cast<unsigned char>(reply.length);
        std::ranges::copy(reply.data(), rdata);
    }
    return result;
}

int clear_entry(int icdev, std::uint8_t timeout, EntryLetter letter, unsigned char* rlen, unsigned char* rdata) {
    const std::array<std::uint8_t, 3> sPwdCmd{esc, static_cast<std::uint8_t>(letter), 0x00};
    return pwdkb_exchange(icdev, timeout, static_cast<std::uint8_t>(KeypadMode::clear), std::span(sPwdCmd).first(2),
                          rlen, rdata);
}

int protected_entry(int icdev, std::uint8_t timeout, EntryLetter letter, unsigned char* rlen,
                    unsigned char* rdata) {
    if (rlen == nullptr || rdata == nullptr) return link::status_bad_argument;
    *rlen = 0;
    const KeypadKeyTable table;

    std::array<std::uint8_t, 1> nMainIndex{};
    random_fill(nMainIndex, keypad_table_rows);
    WipedBytes<des_block_size> sWorkPwd;
    random_fill(sWorkPwd.bytes, 255);  // never 0xFF
    WipedBytes<des_block_size> sWorkKey;
    sWorkKey.bytes = sWorkPwd.bytes;
    des_block(sWorkPwd.data(), table.row(nMainIndex[0]).data(), reader::des_mode_encrypt);

    std::array<std::uint8_t, protected_command_size> command{esc, static_cast<std::uint8_t>(letter), nMainIndex[0]};
    std::ranges::copy(sWorkPwd.bytes, command.begin() + 3);  // sWorkPwd_Encrypt

    KeypadReply reply;
    // A reply without a whole cipher block holds no PIN.
    const int result = reply.require(
        keypad_exchange(icdev, timeout, static_cast<std::uint8_t>(KeypadMode::protected_entry), command, reply),
        des_block_size);
    if (result != 0) return result;

    // 9 to 15 bytes make two blocks, the zeros of the reply area filling up the second.
    const std::size_t length = reply.length > static_cast<int>(des_block_size) ? longest_protected_reply : des_block_size;
    for (std::size_t offset = 0; offset < length; offset += des_block_size)
        des_block(reply.area.data() + offset, sWorkKey.data(), reader::des_mode_decrypt);
    std::copy_n(reply.area.begin(), length, rdata);
    wipe(std::span(reply.area).first(length));
    *rlen = static_cast<unsigned char>(length);
    return 0;
}

}  // namespace qz::pinpad
