// Places on disk that an installation or a test may move by environment variable.
#pragma once

#include <filesystem>

namespace qz::platform {

// Folder that holds the HID device nodes (QZ_32_HIDRAW_DIR, default /dev).
std::filesystem::path hidraw_dir();

// Folder of COMn links to serial devices (QZ_32_PORTS_DIR, default /etc/qz_32/ports).
std::filesystem::path ports_dir();

// Root of the diagnostic log; its existence switches the log on
// (QZ_32_LOG_ROOT, default /var/log/QZlog).
std::filesystem::path log_root();

}  // namespace qz::platform
