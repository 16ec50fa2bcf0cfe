// The code tables of identity card fields, as data. Names are written here in
// UTF-16 and handed out in GBK by name_tables.h.
#pragma once

#include <array>
#include <string_view>

namespace qz::identity {

struct GenderRow {
    char code;
    std::u16string_view ordinary;  // name on a resident identity card
    std::u16string_view foreign;   // name on a foreigner's permanent residence card
};

struct CountryRow {
    std::string_view code;  // three letters, compared exactly (one row is "STp")
    std::u16string_view name;
};

// Codes "0", "1", "2", "9"; any other gender code has the name " ".
extern const std::array<GenderRow, 4> gender_rows;

// Ethnic groups by number: element 0 is code 01, element 57 code 58.
extern const std::array<std::u16string_view, 58> ethnic_group_names;

// Searched in this order; the first exact match wins.
extern const std::array<CountryRow, 238> country_rows;

}  // namespace qz::identity
