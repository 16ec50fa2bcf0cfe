// Card type detection, the slot choice and the is42 and is28 tests.
#include "cards/card_type.h"

#include <algorithm>

#include "cards/memory_command.h"
#include "cards/sle4428.h"
#include "cards/sle4442.h"
#include "link/command.h"
#include "link/export_lock.h"
#include "link/status.h"
#include "qz_32.h"

namespace qz::cards {
namespace {

constexpr std::uint8_t verify_instruction = 0x82;
constexpr std::uint8_t select_instruction = 0x3F;
constexpr std::array<TypeCode, 3> other_memory_codes{{{0x31, 0x3A}, {0x69, 0x35}, {0x16, 0x04}}};
constexpr std::array<TypeCode, 2> blank_codes{{{0x00, 0x00}, {0xFF, 0xFF}}};
// Where a card's own type code lies in its memory.
constexpr unsigned code_offset = 6;

bool among(std::span<const TypeCode> codes, const TypeCode& code) { return std::ranges::find(codes, code) != codes.end(); }

int read_sle4442_code(int icdev, unsigned char* code) {
    return sle4442::transfer(icdev, sle4442::read, sle4442::main_size, code_offset, 2, nullptr, code);
}

int read_sle4428_code(int icdev, unsigned char* code) {
    return sle4428::transfer(icdev, sle4428::read, code_offset, 2, nullptr, code);
}

}  // namespace

const TypeTest sle4442_test{card_type_sle4442, true, sle4442_codes, read_sle4442_code};
const TypeTest sle4428_test{card_type_sle4428, false, sle4428_codes, read_sle4428_code};

std::optional<CardType> type_of_code(const TypeCode& code) {
    if (among(sle4442_codes, code)) return card_type_sle4442;
    if (among(sle4428_codes, code)) return card_type_sle4428;
    if (among(blank_codes, code)) return card_type_blank;
    if (among(other_memory_codes, code)) return card_type_other_memory;
    return std::nullopt;
}

int verify_card_type(int icdev, unsigned char* type) {
    if (type == nullptr) return link::status_bad_argument;
    link::Reply<100> reply;
    const int result =
        reply.require(link::transact(icdev, link::Payload{memory_card_class, verify_instruction, 0x00}, reply), 2);
    if (result != 0) return result;
    const auto found = type_of_code({reply.area[0], reply.area[1]});
    if (!found) return status_unknown_card;
    *type = *found;
    return 0;
}

int test_card_type(int icdev, const TypeTest& test, unsigned char* flag) {
    if (flag == nullptr) return link::status_bad_argument;
    *flag = 1;
    unsigned char type = 0;
    if (verify_card_type(icdev, &type) == 0) {
        if (type == test.type) *flag = 0;
        if (type == card_type_blank && test.reports_blank) *flag = card_type_blank;
        return 0;
    }
    // Room for the longest reply either read accepts.
    std::array<unsigned char, std::max(sle4442::read.reply_capacity, sle4428::stride)> code{};
    const int result = test.read_code(icdev, code.data());
    if (result == 0 && among(test.codes, {code[0], code[1]})) *flag = 0;
    return result;
}

}  // namespace qz::cards

QZ_32_API int QZ_32_CALL contact_select(int icdev, unsigned char slot) {
    const qz::link::ExportLock lock;
    const std::array<std::uint8_t, 1> arguments{slot};
    return qz::cards::send_memory_command(icdev, {.instruction = qz::cards::select_instruction},
                                          {.arguments = arguments});
}

QZ_32_API int QZ_32_CALL contact_verify(int icdev, unsigned char* type) {
    const qz::link::ExportLock lock;
    return qz::cards::verify_card_type(icdev, type);
}

QZ_32_API int QZ_32_CALL sle4442_is42(int icdev, unsigned char* flag) {
    const qz::link::ExportLock lock;
    return qz::cards::test_card_type(icdev, qz::cards::sle4442_test, flag);
}

QZ_32_API int QZ_32_CALL sle4428_is28(int icdev, unsigned char* flag) {
    const qz::link::ExportLock lock;
    return qz::cards::test_card_type(icdev, qz::cards::sle4428_test, flag);
}
