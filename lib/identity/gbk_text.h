// GBK form of the library's own texts, written in the sources as UTF-16.
#pragma once

#include <string>
#include <string_view>

namespace qz::identity {

std::string to_gbk(std::u16string_view text);

}  // namespace qz::identity
