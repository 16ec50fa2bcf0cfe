// Photo component for the identity tests. The ".wlt" file it is given says what
// to do: "<value>" returns value; "<value> bmp" also writes the ".bmp" beside it,
// holding "<path it was given>\n" and then the ".wlt" file's bytes. A mode other
// than 2 returns 77. Built variants: QZ_TEST_GETBMP_REFUSING always returns 99
// and writes nothing; QZ_TEST_GETBMP_NO_ENTRY exports no GetBmp at all.
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#ifndef QZ_TEST_GETBMP_NO_ENTRY
extern "C" __attribute__((visibility("default"))) int GetBmp(const char* path, int mode) {
#ifdef QZ_TEST_GETBMP_REFUSING
    (void)path;
    (void)mode;
    return 99;
#else
    if (mode != 2) return 77;
    std::ifstream in(path, std::ios::binary);
    const std::string wlt((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::istringstream script(wlt);
    int value = 0;
    std::string action;
    script >> value >> action;
    if (action == "bmp") {
        std::string bmp(path);
        bmp.replace(bmp.size() - 4, 4, ".bmp");
        std::ofstream(bmp, std::ios::binary) << path << '\n' << wlt;
    }
    return value;
#endif
}
#endif
