#include "screen/font_component.h"

#include "platform/module.h"

namespace qz::screen {
namespace {

using GetFontBit = int (*)(const char* row, int size, unsigned char* buffer, int* bitLen, int* textCount,
                           int* fontHeight);

}  // namespace

int load_font_bits(const std::string& row, int size, std::span<std::uint8_t> buffer, FontBits& bits,
                   std::string_view library) {
    platform::Module module = platform::Module::load(library);
    if (!module) module = platform::Module::load_from(platform::own_module_folder(), library);
    const auto get_font_bit = reinterpret_cast<GetFontBit>(module.symbol("getFontBit"));
    if (get_font_bit == nullptr) return 0;
    return get_font_bit(row.c_str(), size, buffer.data(), &bits.bit_length, &bits.text_count, &bits.font_height);
}

}  // namespace qz::screen
