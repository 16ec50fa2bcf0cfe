#include "gbk_decoder.h"

#include <array>

namespace fontmaker {

GbkDecoder::GbkDecoder() : converter_(iconv_open("UTF-32LE", "GBK")) {}

GbkDecoder::~GbkDecoder() {
    if (converter_ != reinterpret_cast<iconv_t>(-1)) iconv_close(converter_);
}

std::optional<char32_t> GbkDecoder::decode(std::string_view character) {
    if (converter_ == reinterpret_cast<iconv_t>(-1)) return std::nullopt;
    std::array<char, 2> in{};
    std::array<unsigned char, 8> out{};
    character.copy(in.data(), in.size());
    char* in_at = in.data();
    std::size_t in_left = character.size();
    char* out_at = reinterpret_cast<char*>(out.data());
    std::size_t out_left = out.size();
    iconv(converter_, nullptr, nullptr, nullptr, nullptr);
    if (iconv(converter_, &in_at, &in_left, &out_at, &out_left) == static_cast<std::size_t>(-1) || out_left != 4)
        return std::nullopt;
    return static_cast<char32_t>(out[0] | (out[1] << 8) | (out[2] << 16) | (out[3] << 24));
}

}  // namespace fontmaker
