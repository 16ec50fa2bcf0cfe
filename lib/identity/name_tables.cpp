#include "identity/name_tables.h"

#include <algorithm>
#include <array>
#include <vector>

#include "identity/gbk_text.h"
#include "identity/identity_tables.h"

namespace qz::identity {
namespace {

const std::string& blank() {
    static const std::string text = " ";
    return text;
}

// The tables in GBK, converted once.
struct GbkTables {
    struct Gender {
        char code;
        std::array<std::string, 2> names;  // by RecordKind
    };
    struct Country {
        std::string_view code;
        std::string name;
    };
    std::vector<Gender> genders;
    std::vector<std::string> ethnic_groups;
    std::vector<Country> countries;

    GbkTables() {
        for (const GenderRow& row : gender_rows) genders.push_back({row.code, {to_gbk(row.ordinary), to_gbk(row.foreign)}});
        for (std::u16string_view name : ethnic_group_names) ethnic_groups.push_back(to_gbk(name));
        for (const CountryRow& row : country_rows) countries.push_back({row.code, to_gbk(row.name)});
    }
};

const GbkTables& tables() {
    static const GbkTables converted;
    return converted;
}

}  // namespace

const std::string& gender_name(char code, RecordKind kind) {
    const auto& genders = tables().genders;
    const auto row = std::find_if(genders.begin(), genders.end(), [&](const auto& g) { return g.code == code; });
    return row == genders.end() ? blank() : row->names[static_cast<std::size_t>(kind)];
}

const std::string& ethnic_group_name(int number) {
    const auto& names = tables().ethnic_groups;
    if (number < 1 || number > static_cast<int>(names.size())) return blank();
    return names[static_cast<std::size_t>(number - 1)];
}

const std::string* country_name(std::string_view code) {
    const auto& countries = tables().countries;
    const auto row = std::find_if(countries.begin(), countries.end(), [&](const auto& c) { return c.code == code; });
    return row == countries.end() ? nullptr : &row->name;
}

}  // namespace qz::identity
