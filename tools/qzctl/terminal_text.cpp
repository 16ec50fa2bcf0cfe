#include "terminal_text.h"

#include <iconv.h>
#include <langinfo.h>

#include <cerrno>
#include <clocale>
#include <stdexcept>

namespace qzctl {
namespace {

class Converter {
public:
    Converter(const std::string& to, const char* from) : cd_(iconv_open(to.c_str(), from)) {
        if (cd_ == invalid()) throw std::runtime_error("no conversion from " + std::string(from) + " to " + to);
    }
    ~Converter() { iconv_close(cd_); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    std::string convert(std::string_view text) const {
        std::string in(text), out;
        char* from = in.data();
        std::size_t from_left = in.size();
        char buffer[256];
        while (from_left > 0) {
            char* to = buffer;
            std::size_t to_left = sizeof buffer;
            const bool failed = iconv(cd_, &from, &from_left, &to, &to_left) == static_cast<std::size_t>(-1);
            out.append(buffer, to);
            if (failed && errno != E2BIG) {
                // A byte that starts no character, or a character cut off at the end.
                out += '?';
                ++from;
                --from_left;
            }
        }
        return out;
    }

private:
    static iconv_t invalid() { return reinterpret_cast<iconv_t>(-1); }
    iconv_t cd_;
};

std::string locale_codeset() {
    std::setlocale(LC_ALL, "");
    return nl_langinfo(CODESET);
}

}  // namespace

std::string gbk_to_terminal(std::string_view gbk) {
    static const Converter converter(locale_codeset() + "//TRANSLIT", "GBK");
    return converter.convert(gbk);
}

std::string gbk_to_utf8(std::string_view gbk) {
    static const Converter converter("UTF-8", "GBK");
    return converter.convert(gbk);
}

std::string utf8_to_gbk(std::string_view utf8) {
    static const Converter converter("GBK", "UTF-8");
    return converter.convert(utf8);
}

}  // namespace qzctl
