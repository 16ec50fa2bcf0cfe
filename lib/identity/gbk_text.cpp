#include "identity/gbk_text.h"

#include <cstdint>
#include <vector>

#include "platform/gbk.h"

namespace qz::identity {

std::string to_gbk(std::u16string_view text) {
    std::vector<std::uint8_t> units;
    units.reserve(text.size() * 2);
    for (char16_t unit : text) {
        units.push_back(static_cast<std::uint8_t>(unit));
        units.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    // A GBK character takes at most two bytes for the one code unit it came from.
    std::string gbk(text.size() * 2, '\0');
    gbk.resize(platform::ucs2le_to_gbk(units, gbk));
    return gbk;
}

}  // namespace qz::identity
