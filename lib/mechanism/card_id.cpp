// The identity of the card in the mechanism: the contactless card is activated
// first (a failure there doesn't stop the read), then the mechanism is asked.
#include <array>

#include "cards/rf_memory.h"
#include "link/command.h"
#include "link/export_lock.h"
#include "reader/hex.h"
#include "qz_32.h"

namespace {

constexpr std::uint8_t pass_class = 0xC8;
constexpr std::uint8_t card_identity = 0x01;
constexpr std::uint8_t find_mode_idle = 0x00;

using IdentityReply = qz::link::Reply<20>;

int read_card_id(int icdev, IdentityReply& reply) {
    std::array<unsigned char, qz::cards::rf::serial_room> serial{};
    qz::cards::rf::find_card(icdev, find_mode_idle, serial.data());
    return qz::link::transact(icdev, qz::link::Payload{pass_class, card_identity, 0x00}, reply);
}

}  // namespace

QZ_32_API int QZ_32_CALL Get_CARD_ID(int icdev, unsigned char* out) {
    const qz::link::ExportLock lock;
    if (out == nullptr) return qz::link::status_bad_argument;
    IdentityReply reply;
    const int result = read_card_id(icdev, reply);
    if (result == 0) std::copy(reply.data().begin(), reply.data().end(), out);
    return result;
}

QZ_32_API int QZ_32_CALL Get_CARD_ID_hex(int icdev, char* out) {
    const qz::link::ExportLock lock;
    if (out == nullptr) return qz::link::status_bad_argument;
    IdentityReply reply;
    const int result = read_card_id(icdev, reply);
    if (result == 0) {
        qz::reader::to_hex(reply.data(), std::span(out, 2 * reply.data().size()));
        out[2 * reply.data().size()] = '\0';
    }
    return result;
}
