#include <iconv.h>

#include <cerrno>

#include "platform/gbk.h"

namespace qz::platform {
namespace {

// One converter per thread: an iconv descriptor carries state and may not be shared.
class Converter {
public:
    Converter() : descriptor_(iconv_open("GBK", "UCS-2LE")) {}
    ~Converter() {
        if (valid()) iconv_close(descriptor_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool valid() const { return descriptor_ != reinterpret_cast<iconv_t>(-1); }
    iconv_t get() const { return descriptor_; }

private:
    iconv_t descriptor_;
};

std::size_t units_before_zero(std::span<const std::uint8_t> ucs2le) {
    std::size_t units = 0;
    while (units * 2 + 1 < ucs2le.size() && (ucs2le[units * 2] != 0 || ucs2le[units * 2 + 1] != 0)) ++units;
    return units;
}

}  // namespace

std::size_t ucs2le_to_gbk(std::span<const std::uint8_t> ucs2le, std::span<char> out) {
    thread_local Converter converter;
    if (!converter.valid()) return 0;
    iconv(converter.get(), nullptr, nullptr, nullptr, nullptr);

    // iconv's interface takes the input as non-const; it only reads it.
    char* in = reinterpret_cast<char*>(const_cast<std::uint8_t*>(ucs2le.data()));
    std::size_t in_left = units_before_zero(ucs2le) * 2;
    char* to = out.data();
    std::size_t out_left = out.size();
    while (in_left > 0) {
        if (iconv(converter.get(), &in, &in_left, &to, &out_left) != static_cast<std::size_t>(-1)) break;
        // E2BIG: the next character does not fit. Otherwise the unit at `in`
        // (an unpaired surrogate or a character outside GBK) has no GBK form.
        if (errno == E2BIG || out_left == 0) break;
        *to++ = '?';
        --out_left;
        in += 2;
        in_left -= 2;
    }
    return out.size() - out_left;
}

}  // namespace qz::platform
