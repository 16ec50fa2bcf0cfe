#include "output.h"

#include <cstdio>
#include <iostream>

namespace qzctl {

void Output::add(const std::string& key, const std::string& label, nlohmann::ordered_json value) {
    text_ += label + ": " + (value.is_string() ? value.get<std::string>() : value.dump()) + "\n";
    values_[key] = std::move(value);
}

void Output::print() const {
    if (json_)
        std::cout << values_.dump(2) << "\n";
    else
        std::cout << text_;
}

std::string to_hex(const unsigned char* bytes, std::size_t length) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(length * 2);
    for (std::size_t i = 0; i < length; ++i) {
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 0x0F];
    }
    return text;
}

std::string printable(const unsigned char* bytes, std::size_t length) {
    std::string text;
    for (std::size_t i = 0; i < length; ++i) {
        if (bytes[i] >= 0x20 && bytes[i] < 0x7F) {
            text += static_cast<char>(bytes[i]);
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", bytes[i]);
            text += escaped;
        }
    }
    return text;
}

}  // namespace qzctl
