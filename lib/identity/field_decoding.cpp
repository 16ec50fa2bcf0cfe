#include "identity/field_decoding.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <optional>

#include "identity/name_tables.h"
#include "platform/gbk.h"

namespace qz::identity {
namespace {

// What happens to a field after its conversion to GBK.
enum class Finish : std::uint8_t {
    trim,         // cut at the first double blank
    first_bytes,  // keep a fixed number of bytes
    gender,       // the first byte through the gender table
    nation,       // the first two bytes through the ethnic group table
};

struct FieldRule {
    std::size_t limit;  // byte limit of the conversion
    Finish finish;
    std::size_t keep = 0;  // for first_bytes
};

constexpr std::array<FieldRule, 10> ordinary_rules{{
    {30, Finish::trim},             // 0 name
    {2, Finish::gender},            // 1 gender
    {4, Finish::nation},            // 2 ethnic group
    {16, Finish::first_bytes, 8},   // 3 date of birth
    {70, Finish::trim},             // 4 address
    {36, Finish::first_bytes, 18},  // 5 identity number
    {30, Finish::trim},             // 6 issuing authority
    {16, Finish::first_bytes, 8},   // 7 start of validity
    {16, Finish::first_bytes, 8},   // 8 end of validity
    {36, Finish::trim},             // 9 reserved
}};

constexpr int first_foreign_kind = 1;
constexpr std::array<FieldRule, 12> foreign_rules{{
    {120, Finish::trim},  // 1 name in Latin letters
    {2, Finish::gender},  // 2 gender
    {30, Finish::trim},   // 3 card number
    {6, Finish::trim},    // 4 country code
    {30, Finish::trim},   // 5 name in Chinese
    {16, Finish::trim},   // 6 start of validity
    {16, Finish::trim},   // 7 end of validity
    {16, Finish::trim},   // 8 date of birth
    {4, Finish::trim},    // 9 card version
    {8, Finish::trim},    // 10 issuing authority code
    {2, Finish::trim},    // 11 card type
    {6, Finish::trim},    // 12 reserved
}};

template <std::size_t N>
std::optional<FieldRule> rule_of(const std::array<FieldRule, N>& rules, int index) {
    if (index < 0 || index >= static_cast<int>(N)) return std::nullopt;
    return rules[static_cast<std::size_t>(index)];
}

std::string decode(const FieldRule& rule, RawField info, RecordKind kind) {
    std::array<char, 256> gbk{};
    platform::ucs2le_to_gbk(info, std::span(gbk).first(rule.limit));
    const auto text_of = [&](std::size_t keep) { return std::string(gbk.data(), strnlen(gbk.data(), keep)); };
    switch (rule.finish) {
        case Finish::trim:
            return text_of(static_cast<std::size_t>(TrimAtDoubleBlank(gbk, static_cast<int>(rule.limit))));
        case Finish::first_bytes:
            return text_of(rule.keep);
        case Finish::gender:
            return gender_name(gbk[0], kind);
        case Finish::nation: {
            std::string name;
            NationCodeToName(std::span(gbk).first<2>(), name);
            return name;
        }
    }
    return {};
}

std::optional<std::uint8_t> digit_value(char c) {
    const char upper = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (upper >= '0' && upper <= '9') return static_cast<std::uint8_t>(upper - '0');
    if (upper >= 'A' && upper <= 'F') return static_cast<std::uint8_t>(upper - 'A' + 10);
    return std::nullopt;
}

}  // namespace

std::string IDFieldToText(int kind, RawField info) {
    const auto rule = rule_of(ordinary_rules, kind);
    return rule ? decode(*rule, info, RecordKind::ordinary) : std::string();
}

std::string IDForeignFieldToText(int kind, RawField info) {
    const auto rule = rule_of(foreign_rules, kind - first_foreign_kind);
    return rule ? decode(*rule, info, RecordKind::foreign) : std::string();
}

std::int16_t TrimAtDoubleBlank(std::span<const char> text, int width) {
    const auto end = static_cast<std::size_t>(std::clamp(width, 0, static_cast<int>(text.size())));
    for (std::size_t at = 0; at + 1 < end; ++at)
        if (text[at] == ' ' && text[at + 1] == ' ') return static_cast<std::int16_t>(at);
    return static_cast<std::int16_t>(width);
}

int NationCodeToName(std::span<const char, 2> code, std::string& name) {
    std::uint8_t number = 0;
    const int result = DecPairsToBytes(code, std::span(&number, 1));
    name = ethnic_group_name(number);
    return result;
}

int DecPairsToBytes(std::span<const char> text, std::span<std::uint8_t> bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (2 * i + 1 >= text.size()) return -1;
        const auto high = digit_value(text[2 * i]);
        const auto low = digit_value(text[2 * i + 1]);
        if (!high || !low) return -1;
        bytes[i] = static_cast<std::uint8_t>(*high * 10 + *low);
    }
    return 0;
}

int CountryCodeToName(std::string_view code, std::string& name) {
    const std::string* found = country_name(code);
    if (found == nullptr) return -19;
    name = *found;
    return 0;
}

}  // namespace qz::identity
