// Places on disk that an installation or a test may move by environment variable.
#pragma once

#include <filesystem>

namespace qz::platform {

// Folder that holds the HID device nodes (QZ_32_HIDRAW_DIR).
std::filesystem::path hidraw_dir();

// Folder of COMn links to serial devices (QZ_32_PORTS_DIR).
std::filesystem::path ports_dir();

// Root of the diagnostic log; its existence switches the log on (QZ_32_LOG_ROOT).
std::filesystem::path log_root();

// A folder with none of the system's marks: not hidden, not read-only, not a
// link, nothing else set. The log's cleaning touches only these.
bool is_plain_folder(const std::filesystem::path& folder);

// The system's defaults for the three, defined in the system's folder.
std::filesystem::path default_hidraw_dir();
std::filesystem::path default_ports_dir();
std::filesystem::path default_log_root();

}  // namespace qz::platform
