// The contactless CPU card exports: OpenCard family, ExchangePro family, CloseCard.
#include <algorithm>
#include <span>

#include "cards/card_commands.h"
#include "cards/contactless.h"
#include "link/export_lock.h"
#include "link/status.h"
#include "qz_32.h"

using qz::cards::Form;
using qz::link::status_bad_argument;

QZ_32_API int QZ_32_CALL OpenCard(int icdev, unsigned char mode, unsigned char* uid, unsigned char* ats,
                       unsigned char* ats_length) {
    const qz::link::ExportLock lock;
    return qz::cards::open_card(icdev, mode, Form::bytes, uid, ats, ats_length);
}

QZ_32_API int QZ_32_CALL OpenCard_hex(int icdev, unsigned char mode, char* uid, char* ats, unsigned char* ats_length) {
    const qz::link::ExportLock lock;
    return qz::cards::open_card(icdev, mode, Form::hex, uid, ats, ats_length);
}

QZ_32_API int QZ_32_CALL Open_Card(int icdev, unsigned char mode, unsigned char* uid) {
    const qz::link::ExportLock lock;
    return qz::cards::open_card_keeping_answer(icdev, mode, uid);
}

QZ_32_API int QZ_32_CALL Reset_Card(int, unsigned char* ats, unsigned char* ats_length) {
    const qz::link::ExportLock lock;
    return qz::cards::kept_answer(ats, ats_length);
}

QZ_32_API int QZ_32_CALL ExchangePro(int icdev, const unsigned char* command, unsigned short command_length,
                          unsigned char* response, unsigned short* response_length) {
    const qz::link::ExportLock lock;
    if (response == nullptr || response_length == nullptr || (command == nullptr && command_length != 0))
        return status_bad_argument;
    *response_length = 0;
    qz::cards::ExchangeProReply reply;
    const int result = qz::cards::exchange_pro(icdev, std::span(command, command_length), reply);
    if (result == 0) {
        std::ranges::copy(reply.data(), response);
        *response_length = static_cast<unsigned short>(reply.data().size());
    }
    return result;
}

QZ_32_API int QZ_32_CALL ExchangePro_hex(int icdev, const char* command, char* response) {
    const qz::link::ExportLock lock;
    if (command == nullptr || response == nullptr) return status_bad_argument;
    const auto apdu = qz::cards::bytes_of_hex(command);
    if (!apdu) return -1;
    qz::cards::ExchangeProReply reply;
    const int result = qz::cards::exchange_contactless(icdev, *apdu, reply);
    if (result == 0) qz::cards::hand_over(Form::hex, reply.data(), response);
    return result;
}

QZ_32_API int QZ_32_CALL CloseCard(int icdev) {
    const qz::link::ExportLock lock;
    return qz::cards::deactivate(icdev, qz::cards::contactless_class);
}
