#include "hex_dump.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "output.h"
#include "session.h"

namespace qzctl {
namespace {

constexpr std::size_t row_length = 16;

}  // namespace

std::string hex_dump(const std::vector<unsigned char>& bytes, std::size_t first_address) {
    std::string text;
    for (std::size_t row = 0; row < bytes.size(); row += row_length) {
        const std::size_t count = std::min(row_length, bytes.size() - row);
        char address[16];
        std::snprintf(address, sizeof address, "\n%04zX ", first_address + row);
        text += address;
        for (std::size_t i = 0; i < row_length; ++i) {
            char cell[4] = "   ";
            if (i < count) std::snprintf(cell, sizeof cell, " %02X", bytes[row + i]);
            text += cell;
        }
        text += "  ";
        for (std::size_t i = 0; i < count; ++i) {
            const unsigned char c = bytes[row + i];
            text += c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '.';
        }
    }
    return text;
}

std::vector<unsigned char> hex_bytes(const std::string& text, const std::string& what) {
    std::string digits;
    std::ranges::copy_if(text, std::back_inserter(digits), [](char c) { return c != ' ' && c != ':'; });
    const bool hex = std::ranges::all_of(digits, [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); });
    if (!hex || digits.empty() || digits.size() % 2 != 0)
        throw Failure(exit_usage, what + " takes an even count of hexadecimal digits: " + text);
    std::vector<unsigned char> bytes(digits.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<unsigned char>(std::stoul(digits.substr(2 * i, 2), nullptr, 16));
    return bytes;
}

std::vector<unsigned char> hex_argument(const std::string& text, std::size_t length, const std::string& what) {
    auto bytes = hex_bytes(text, what);
    if (bytes.size() != length) throw Failure(exit_usage, what + " is " + std::to_string(length) + " bytes: " + text);
    return bytes;
}

}  // namespace qzctl
