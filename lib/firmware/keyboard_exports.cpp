// The keyboard behind the terminal: its version and its firmware upgrade.
#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>

#include "firmware/firmware_file.h"
#include "firmware/keyboard_link.h"
#include "firmware/keyboard_upgrade.h"
#include "link/export_lock.h"
#include "link/status.h"
#include "qz_32.h"

QZ_32_API int QZ_32_CALL get_cktkb_verion(int icdev, unsigned int* length, unsigned char* version) {
    const qz::link::ExportLock lock;
    if (length == nullptr || version == nullptr) return qz::link::status_bad_argument;
    *length = 0;
    qz::firmware::VersionText text;
    const int result = qz::firmware::keyboard_version(icdev, text);
    if (result == 0) {
        *length = static_cast<unsigned int>(text.size());
        std::copy(text.begin(), text.end(), version);
    }
    return result;
}

QZ_32_API int QZ_32_CALL upgrade_keyboard(int icdev, char* path) {
    const qz::link::ExportLock lock;
    if (path == nullptr) return qz::link::status_bad_argument;
    // The caller's text is upper-cased, as callers expect; the file is opened by
    // the name it was given, since file names are case-sensitive here.
    const std::string file_name(path);
    for (char* letter = path; *letter != '\0'; ++letter)
        *letter = static_cast<char>(std::toupper(static_cast<unsigned char>(*letter)));
    if (std::string_view(path).find(".HEX") == std::string_view::npos)
        return qz::firmware::status_file_unopenable;
    return qz::firmware::upgrade_keyboard(icdev, file_name);
}
