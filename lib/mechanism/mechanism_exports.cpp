// The card transport mechanism: its commands (class 0x00), the device status,
// and the pass-through to it (class 0xC8). The meaning of every value lies in
// the terminal; the library relays them.
#include <algorithm>

#include "link/command.h"
#include "link/export_lock.h"
#include "qz_32.h"

namespace {

using qz::link::Payload;
using qz::link::status_bad_argument;

constexpr std::uint8_t mechanism_class = 0x00;
constexpr std::uint8_t device_status = 0x0E;
constexpr std::uint8_t return_to_gate = 0x10;
constexpr std::uint8_t gate_test = 0x11;
constexpr std::uint8_t motor = 0x12;
constexpr std::uint8_t query = 0x13;
constexpr std::uint8_t aging = 0x14;
constexpr std::uint8_t move = 0x15;
constexpr std::uint8_t pass_class = 0xC8;
constexpr std::uint8_t pass_data = 0x00;
// The pass-through's buffers hold 1000 bytes: the 3-byte head and up to 997 data bytes.
constexpr std::size_t pass_capacity = 1000;
constexpr unsigned short longest_pass = 997;

// A mechanism command whose reply must fit the mechanism's 20-byte reply area.
using MechanismReply = qz::link::Reply<20>;

int command(int icdev, Payload payload) {
    MechanismReply reply;
    return qz::link::transact(icdev, payload, reply);
}

// A command whose first reply byte goes to `*status`, widened, on success only.
int status_command(int icdev, Payload payload, unsigned int* status) {
    if (status == nullptr) return status_bad_argument;
    MechanismReply reply;
    const int result = reply.require(qz::link::transact(icdev, payload, reply), 1);
    if (result == 0) *status = reply.area[0];
    return result;
}

}  // namespace

QZ_32_API int QZ_32_CALL ds_command_trn(int icdev, const unsigned char* data, unsigned short length, unsigned char* out,
                             unsigned short* rlen) {
    const qz::link::ExportLock lock;
    if (rlen != nullptr) *rlen = 0;
    if (length == 0 || length > longest_pass || data == nullptr || out == nullptr || rlen == nullptr)
        return status_bad_argument;
    Payload payload{pass_class, pass_data, 0x00};
    payload.add(std::span(data, length));
    qz::link::Reply<pass_capacity> reply;
    const int result = qz::link::transact(icdev, payload, reply);
    if (result == 0) {
        std::copy(reply.data().begin(), reply.data().end(), out);
        *rlen = static_cast<unsigned short>(reply.data().size());
    }
    return result;
}

QZ_32_API int QZ_32_CALL return_card(int icdev) {
    const qz::link::ExportLock lock;
    return command(icdev, Payload{mechanism_class, return_to_gate, 0x00});
}

QZ_32_API int QZ_32_CALL magnetic_gate_test(int icdev, unsigned char value) {
    const qz::link::ExportLock lock;
    return command(icdev, Payload{mechanism_class, gate_test, 0x00, value});
}

QZ_32_API int QZ_32_CALL motor_test(int icdev, unsigned char first, unsigned char second) {
    const qz::link::ExportLock lock;
    return command(icdev, Payload{mechanism_class, motor, 0x00, first, second});
}

QZ_32_API int QZ_32_CALL Query_status(int icdev, unsigned int* status) {
    const qz::link::ExportLock lock;
    return status_command(icdev, Payload{mechanism_class, query, 0x00}, status);
}

QZ_32_API int QZ_32_CALL AGING_test(int icdev, unsigned char value, unsigned int* status) {
    const qz::link::ExportLock lock;
    return status_command(icdev, Payload{mechanism_class, aging, 0x00, value}, status);
}

QZ_32_API int QZ_32_CALL Move_Card(int icdev, int direction) {
    const qz::link::ExportLock lock;
    if (direction != 0 && direction != 1) return status_bad_argument;
    return command(icdev, Payload{mechanism_class, move, 0x00, static_cast<std::uint8_t>(direction)});
}

// The status byte is written whatever the outcome: 0 after a failure.
QZ_32_API int QZ_32_CALL get_device_status(int icdev, unsigned char* status) {
    const qz::link::ExportLock lock;
    if (status == nullptr) return status_bad_argument;
    qz::link::Reply<50> reply;
    const int result = reply.require(qz::link::transact(icdev, Payload{mechanism_class, device_status, 0x00}, reply), 1);
    *status = reply.area[0];
    return result;
}
