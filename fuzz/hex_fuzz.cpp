// Hex text from a caller: asc_hex reads nothing past the first character that is
// not a digit, converts exactly the digit pairs before it, and writes no more than
// `length` bytes and a terminator.
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "qz_32.h"

// Input: the requested length (byte 0), then the text. The text is copied up to and
// including its first non-digit (or whole, with a terminator behind it) into a heap
// buffer of exactly that size, so AddressSanitizer sees a read past it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const unsigned length = data[0];
    std::vector<char> text;
    for (std::size_t i = 1; i < size; ++i) {
        text.push_back(static_cast<char>(data[i]));
        if (!std::isxdigit(data[i])) break;
    }
    if (text.empty() || std::isxdigit(static_cast<unsigned char>(text.back()))) text.push_back('\0');
    const std::size_t digits = text.size() - 1;

    std::vector<unsigned char> target(length + 1);
    const int result = asc_hex(text.data(), target.data(), length);
    const bool enough = digits >= 2 * std::size_t{length};
    if (result != (enough ? 0 : -1)) __builtin_trap();
    if (result == 0 && target[length] != 0) __builtin_trap();
    return 0;
}
