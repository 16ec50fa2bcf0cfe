// GBK characters to Unicode code points, through iconv.
#pragma once

#include <cstdint>
#include <iconv.h>
#include <optional>
#include <string_view>

namespace fontmaker {

class GbkDecoder {
public:
    GbkDecoder();
    ~GbkDecoder();
    GbkDecoder(const GbkDecoder&) = delete;
    GbkDecoder& operator=(const GbkDecoder&) = delete;

    // The code point of one character of one or two bytes; nothing if GBK has none.
    std::optional<char32_t> decode(std::string_view character);

private:
    iconv_t converter_;
};

}  // namespace fontmaker
