// Names for the codes of identity card fields, in GBK.
#pragma once

#include <string>
#include <string_view>

namespace qz::identity {

enum class RecordKind : int { ordinary = 0, foreign = 1 };

// Name of a gender code in the wording of that kind of card; " " for an unknown code.
const std::string& gender_name(char code, RecordKind kind);

// Name of an ethnic group, 1 to 58; " " for any other number.
const std::string& ethnic_group_name(int number);

// Name of the country with exactly this code, or nullptr when no row has it.
const std::string* country_name(std::string_view code);

}  // namespace qz::identity
