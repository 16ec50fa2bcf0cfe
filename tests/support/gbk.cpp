#include "support/gbk.h"

#include <iconv.h>

#include <stdexcept>

namespace qz::test {

std::string gbk(std::string_view utf8) {
    iconv_t cd = iconv_open("GBK", "UTF-8");
    if (cd == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("no UTF-8 to GBK conversion");
    std::string in(utf8), out(utf8.size() * 2 + 1, '\0');
    char* from = in.data();
    char* to = out.data();
    std::size_t in_left = in.size(), out_left = out.size();
    const auto done = iconv(cd, &from, &in_left, &to, &out_left);
    iconv_close(cd);
    if (done == static_cast<std::size_t>(-1)) throw std::runtime_error("text without a GBK form");
    out.resize(out.size() - out_left);
    return out;
}

}  // namespace qz::test
