// The contact CPU card exports, ICC_ family, for slots 0 to 4.
#include <algorithm>
#include <span>
#include <vector>

#include "cards/card_commands.h"
#include "cards/contact.h"
#include "link/export_lock.h"
#include "link/status.h"
#include "qz_32.h"

using qz::cards::Form;
using qz::link::status_bad_argument;
namespace cards = qz::cards;

QZ_32_API int QZ_32_CALL ICC_PowerOn(int icdev, unsigned char slot, unsigned char* atr, unsigned char* atr_length) {
    const qz::link::ExportLock lock;
    return cards::activate_contact(icdev, slot, cards::power_on_parameter, Form::bytes, atr, atr_length);
}

QZ_32_API int QZ_32_CALL ICC_PowerOn_hex(int icdev, unsigned char slot, char* atr, unsigned char* atr_length) {
    const qz::link::ExportLock lock;
    return cards::activate_contact(icdev, slot, cards::power_on_parameter, Form::hex, atr, atr_length);
}

QZ_32_API int QZ_32_CALL ICC_PowerOn_Baud(int icdev, unsigned char slot, unsigned char baud, unsigned char* atr,
                               unsigned char* atr_length) {
    const qz::link::ExportLock lock;
    return cards::activate_contact(icdev, slot, cards::speed_parameter(baud, cards::power_on_parameter), Form::bytes,
                                   atr, atr_length);
}

QZ_32_API int QZ_32_CALL ICC_Reset(int icdev, unsigned char slot, unsigned char* atr, unsigned char* atr_length) {
    const qz::link::ExportLock lock;
    return cards::activate_contact(icdev, slot, cards::reset_parameter, Form::bytes, atr, atr_length);
}

QZ_32_API int QZ_32_CALL ICC_Reset_Baud(int icdev, unsigned char slot, unsigned char baud, unsigned char* atr,
                             unsigned char* atr_length) {
    const qz::link::ExportLock lock;
    return cards::activate_contact(icdev, slot, cards::speed_parameter(baud, cards::reset_parameter), Form::bytes, atr,
                                   atr_length);
}

QZ_32_API int QZ_32_CALL ICC_CommandExchange(int icdev, unsigned char slot, const unsigned char* command,
                                  unsigned short command_length, unsigned char* response,
                                  unsigned short* response_length) {
    const qz::link::ExportLock lock;
    if (response == nullptr || response_length == nullptr) return status_bad_argument;
    *response_length = 0;
    if (command == nullptr && command_length != 0) return status_bad_argument;
    std::vector<std::uint8_t> answer;
    const int result = cards::exchange_contact(icdev, slot, std::span(command, command_length),
                                               cards::binary_exchange_limits, answer);
    if (result == 0) {
        std::ranges::copy(answer, response);
        *response_length = static_cast<unsigned short>(answer.size());
    }
    return result;
}

QZ_32_API int QZ_32_CALL ICC_CommandExchange_hex(int icdev, unsigned char slot, const char* command, char* response) {
    const qz::link::ExportLock lock;
    if (command == nullptr || response == nullptr) return status_bad_argument;
    const auto apdu = cards::bytes_of_hex(command);
    if (!apdu) return -1;
    std::vector<std::uint8_t> answer;
    const int result = cards::exchange_contact(icdev, slot, *apdu, cards::hex_exchange_limits, answer);
    if (result == 0) cards::hand_over(Form::hex, answer, response);
    return result;
}

QZ_32_API int QZ_32_CALL ICC_PowerOff(int icdev, unsigned char slot) {
    const qz::link::ExportLock lock;
    const auto card_class = cards::slot_class(slot);
    if (!card_class) return status_bad_argument;
    return cards::deactivate(icdev, *card_class);
}
