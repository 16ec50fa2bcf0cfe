#include "sim/models/identity/ucs2_text.h"

#include <stdexcept>

namespace qz::sim {
namespace {

[[noreturn]] void not_utf8() { throw std::invalid_argument("not UTF-8"); }

// Number of continuation bytes after a lead byte, and the bits the lead byte carries.
struct Lead {
    int continuation;
    char32_t bits;
};

Lead lead_of(unsigned char byte) {
    if (byte < 0x80) return {0, byte};
    if ((byte & 0xE0) == 0xC0) return {1, byte & 0x1Fu};
    if ((byte & 0xF0) == 0xE0) return {2, byte & 0x0Fu};
    if ((byte & 0xF8) == 0xF0) return {3, byte & 0x07u};
    not_utf8();
}

}  // namespace

std::u16string ucs2_from_utf8(std::string_view utf8) {
    // The smallest code point that needs each sequence length; shorter forms of it are overlong.
    constexpr char32_t smallest[] = {0, 0x80, 0x800, 0x10000};
    std::u16string units;
    for (std::size_t i = 0; i < utf8.size();) {
        const Lead lead = lead_of(static_cast<unsigned char>(utf8[i++]));
        char32_t code = lead.bits;
        for (int k = 0; k < lead.continuation; ++k, ++i) {
            if (i >= utf8.size() || (static_cast<unsigned char>(utf8[i]) & 0xC0) != 0x80) not_utf8();
            code = code << 6 | (static_cast<unsigned char>(utf8[i]) & 0x3Fu);
        }
        if (code < smallest[lead.continuation] || (code >= 0xD800 && code <= 0xDFFF)) not_utf8();
        if (code > 0xFFFF) throw std::invalid_argument("a character beyond U+FFFF, which UCS-2 cannot hold");
        units.push_back(static_cast<char16_t>(code));
    }
    return units;
}

}  // namespace qz::sim
