// The library's texts are GBK; people read them in their terminal's encoding,
// scripts read UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace qzctl {

// GBK to the encoding of the user's locale (setlocale(LC_ALL, "") is done on
// first use). Characters that encoding lacks are approximated or become '?'.
std::string gbk_to_terminal(std::string_view gbk);

// GBK to UTF-8. A byte that does not begin a GBK character becomes '?'.
std::string gbk_to_utf8(std::string_view gbk);

// UTF-8 (what command lines carry) to GBK, for texts the terminal shows.
// Each byte that cannot be converted becomes '?'.
std::string utf8_to_gbk(std::string_view utf8);

}  // namespace qzctl
