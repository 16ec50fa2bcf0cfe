#include "sim/core/json_values.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace qz::sim {
namespace {

[[noreturn]] void fail(const std::string& where, const std::string& what) { throw ScenarioError(where + ": " + what); }

std::vector<std::uint8_t> from_hex(const std::string& text, const std::string& where) {
    std::string digits;
    for (char c : text)
        if (!std::isspace(static_cast<unsigned char>(c))) digits += c;
    if (digits.size() % 2 != 0) fail(where, "odd number of hexadecimal digits");
    std::vector<std::uint8_t> bytes(digits.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char* first = digits.data() + 2 * i;
        if (!std::isxdigit(static_cast<unsigned char>(first[0])) || !std::isxdigit(static_cast<unsigned char>(first[1])))
            fail(where, "not a hexadecimal digit in \"" + text + "\"");
        std::from_chars(first, first + 2, bytes[i], 16);
    }
    return bytes;
}

}  // namespace

std::vector<std::uint8_t> json_bytes(const nlohmann::json& value, const std::string& where) {
    if (value.is_string()) {
        const auto& text = value.get_ref<const std::string&>();
        return {text.begin(), text.end()};
    }
    if (value.is_object() && value.size() == 1 && value.contains("hex") && value["hex"].is_string())
        return from_hex(value["hex"].get<std::string>(), where);
    fail(where, "expected a text or {\"hex\": \"...\"}");
}

std::uint64_t json_number(const nlohmann::json& value, std::uint64_t max, const std::string& where) {
    std::uint64_t number = 0;
    if (value.is_number_unsigned()) {
        number = value.get<std::uint64_t>();
    } else if (value.is_string()) {
        const auto& text = value.get_ref<const std::string&>();
        const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
        const char* end = text.data() + text.size();
        if (!hex || std::from_chars(text.data() + 2, end, number, 16).ptr != end)
            fail(where, "expected a number or \"0x...\", not \"" + text + "\"");
    } else {
        fail(where, "expected a number or \"0x...\"");
    }
    if (number > max) fail(where, "above " + std::to_string(max));
    return number;
}

const nlohmann::json& json_object(const nlohmann::json& value, std::initializer_list<std::string_view> known,
                                  const std::string& where) {
    if (!value.is_object()) fail(where, "expected an object");
    for (const auto& [key, item] : value.items())
        if (std::find(known.begin(), known.end(), key) == known.end()) fail(where, "unknown key \"" + key + "\"");
    return value;
}

}  // namespace qz::sim
