#include <windows.h>

#include "platform/gbk.h"

namespace qz::platform {
namespace {

constexpr UINT gbk_code_page = 936;

}  // namespace

// One code unit at a time, so that the conversion stops before a character that
// would not fit whole and a unit without a GBK form (an unpaired surrogate
// among them) becomes '?' on its own.
std::size_t ucs2le_to_gbk(std::span<const std::uint8_t> ucs2le, std::span<char> out) {
    std::size_t written = 0;
    for (std::size_t at = 0; at + 1 < ucs2le.size(); at += 2) {
        const wchar_t unit = static_cast<wchar_t>(ucs2le[at] | (ucs2le[at + 1] << 8));
        if (unit == 0) break;
        char character[2];
        BOOL defaulted = FALSE;
        int length = WideCharToMultiByte(gbk_code_page, WC_NO_BEST_FIT_CHARS, &unit, 1, character, sizeof character,
                                         "?", &defaulted);
        if (length <= 0) {
            character[0] = '?';
            length = 1;
        }
        if (written + static_cast<std::size_t>(length) > out.size()) break;
        for (int i = 0; i < length; ++i) out[written++] = character[i];
    }
    return written;
}

}  // namespace qz::platform
