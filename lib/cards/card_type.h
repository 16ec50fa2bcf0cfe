// Which memory card sits in the selected contact slot, from the first two bytes of
// the terminal's answer to C0 82 00.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace qz::cards {

enum CardType : std::uint8_t {
    card_type_sle4428 = 3,
    card_type_sle4442 = 4,
    card_type_other_memory = 5,
    card_type_blank = 0xFF,  // the terminal read all zeros or all ones
};

using TypeCode = std::array<std::uint8_t, 2>;
inline constexpr std::array<TypeCode, 4> sle4442_codes{{{0x81, 0x15}, {0x88, 0x15}, {0xA0, 0x15}, {0xA2, 0x13}}};
inline constexpr std::array<TypeCode, 2> sle4428_codes{{{0x92, 0x23}, {0x81, 0x13}}};

// The type a code names; nothing for a code of no known card.
std::optional<CardType> type_of_code(const TypeCode& code);

inline constexpr int status_unknown_card = -20;

// contact_verify: `*type` on 0; -20 (type untouched) for an unknown code.
int verify_card_type(int icdev, unsigned char* type);

// sle4442_is42, sle4428_is28: `*flag` 0 when the card is of that type, else 1; 0xFF
// for a blank card where `reports_blank`. When the type can't be told, the code is
// read from the card's memory at offset 6 by `read_code`, whose status is the result.
struct TypeTest {
    CardType type;
    bool reports_blank;
    std::span<const TypeCode> codes;
    int (*read_code)(int icdev, unsigned char* code);
};
extern const TypeTest sle4442_test;
extern const TypeTest sle4428_test;
int test_card_type(int icdev, const TypeTest& test, unsigned char* flag);

}  // namespace qz::cards
