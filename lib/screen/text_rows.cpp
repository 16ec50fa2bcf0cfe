#include "screen/text_rows.h"

namespace qz::screen {

std::vector<std::string> split_text_rows(std::string_view text) {
    std::vector<std::string> rows;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(row_separator), text.size());
        if (end > 0) rows.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(text.size(), end + row_separator.size()));
    }
    return rows;
}

std::vector<std::uint8_t> classify_glyphs(std::string_view row) {
    std::vector<std::uint8_t> classes;
    for (std::size_t at = 0; at < row.size();) {
        const bool wide = (static_cast<unsigned char>(row[at]) & 0x80) != 0;
        classes.push_back(wide ? full_width : half_width);
        at += wide ? 2 : 1;
    }
    return classes;
}

}  // namespace qz::screen
