#include <windows.h>

#include "platform/paths.h"

namespace qz::platform {

// Attributes exactly those of a folder: hidden, read-only, system, reparse
// points (links) and the rest all disqualify.
bool is_plain_folder(const std::filesystem::path& folder) {
    const std::string name = folder.filename().string();
    if (name == "." || name == "..") return false;
    return GetFileAttributesA(folder.string().c_str()) == FILE_ATTRIBUTE_DIRECTORY;
}

// HID devices and COM ports are found through the system by name, not in folders.
std::filesystem::path default_hidraw_dir() { return {}; }
std::filesystem::path default_ports_dir() { return {}; }
std::filesystem::path default_log_root() { return "D:\\QZlog"; }

}  // namespace qz::platform
