// GBK forms of expected texts, converted with iconv from UTF-8, not through the
// library's own conversion.
#pragma once

#include <string>
#include <string_view>

namespace qz::test {

std::string gbk(std::string_view utf8);

}  // namespace qz::test
