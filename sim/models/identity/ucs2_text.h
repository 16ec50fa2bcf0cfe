// Text of the scenario file (UTF-8) as the identity module sends it: UCS-2 code units.
#pragma once

#include <string>
#include <string_view>

namespace qz::sim {

// The code units of `utf8`; std::invalid_argument for bytes that are not UTF-8
// and for characters beyond U+FFFF, which UCS-2 cannot hold.
std::u16string ucs2_from_utf8(std::string_view utf8);

}  // namespace qz::sim
