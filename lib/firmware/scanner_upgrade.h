// Loading a new firmware file, unchanged, into the barcode scanner.
#pragma once

#include <filesystem>

#include "qz_32.h"

namespace qz::firmware {

inline constexpr std::uint32_t loader_limit_ms = 30000;
inline constexpr std::uint32_t wait_before_scanner_package_ms = 5;
inline constexpr int status_no_scanner_loader = -97;
inline constexpr int status_scanner_short_read = -2;

// Brings the scanner into its loader, sends the file in packages, reporting
// progress to `progress` (may be null), and lets the loader go. The first
// refused package ends it, with the scanner left in its loader.
int upgrade_scanner(int icdev, const std::filesystem::path& file, qz_32_upgrade_progress_callback progress);

}  // namespace qz::firmware
