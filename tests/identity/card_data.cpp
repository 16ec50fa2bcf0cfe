#include "card_data.h"

#include <algorithm>
#include <stdexcept>

namespace qz::test {

Bytes ucs2_field(std::u16string_view text, std::size_t bytes) {
    Bytes field;
    for (char16_t unit : text) {
        field.push_back(static_cast<std::uint8_t>(unit));
        field.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    while (field.size() + 2 <= bytes) field.insert(field.end(), {' ', 0});
    field.resize(bytes);
    return field;
}

TextBlock text_block(std::initializer_list<Field> fields) {
    TextBlock block{};
    const Bytes blanks = ucs2_field(u"", block.size());
    std::copy(blanks.begin(), blanks.end(), block.begin());
    for (const Field& f : fields) {
        const Bytes bytes = ucs2_field(f.text, f.bytes);
        std::copy(bytes.begin(), bytes.end(), block.begin() + static_cast<std::ptrdiff_t>(f.offset));
    }
    return block;
}

TextBlock ordinary_card() {
    return text_block({{0, 30, u"欧阳 娜娜"},
                       {30, 2, u"2"},
                       {32, 4, u"05"},
                       {36, 16, u"19920813"},
                       {52, 70, u"新疆乌鲁木齐市天山区解放北路１２号"},
                       {122, 36, u"65010219920813002X"},
                       {158, 30, u"乌鲁木齐市公安局天山分局"},
                       {188, 16, u"20150301"},
                       {204, 16, u"20350301"}});
}

std::string ordinary_card_text() {
    return gbk("0|欧阳 娜娜|女|维吾尔|19920813|新疆乌鲁木齐市天山区解放北路１２号|65010219920813002X|"
               "乌鲁木齐市公安局天山分局|20150301|20350301||");
}

Bytes read_reply_data(const ReadReply& r) {
    const auto length_or = [](int given, std::size_t actual) {
        return static_cast<std::uint16_t>(given >= 0 ? static_cast<std::size_t>(given) : actual);
    };
    Bytes data{0x00, 0x00, r.status[0], r.status[1], r.status[2]};
    const auto put16 = [&](std::uint16_t v) { data.insert(data.end(), {static_cast<std::uint8_t>(v >> 8), static_cast<std::uint8_t>(v)}); };
    put16(length_or(r.text_length, r.text.size()));
    put16(length_or(r.photo_length, r.photo.size()));
    if (r.mode == 1) put16(length_or(r.finger_length, r.finger.size()));
    data.insert(data.end(), r.text.begin(), r.text.end());
    data.insert(data.end(), r.photo.begin(), r.photo.end());
    data.insert(data.end(), r.finger.begin(), r.finger.end());
    return data;
}

}  // namespace qz::test
