#include "support/hex_bytes.h"

#include <cctype>
#include <stdexcept>
#include <string>

namespace qz::test {

Bytes hex(std::string_view text) {
    Bytes bytes;
    std::string digits;
    for (char c : text) {
        if (std::isspace(static_cast<unsigned char>(c))) continue;
        digits += c;
        if (digits.size() == 2) {
            bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits, nullptr, 16)));
            digits.clear();
        }
    }
    if (!digits.empty()) throw std::invalid_argument("odd hex text");
    return bytes;
}

}  // namespace qz::test
