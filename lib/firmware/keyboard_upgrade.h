// Loading a new firmware image into the keyboard from an Intel HEX file.
#pragma once

#include <cstdint>
#include <filesystem>

namespace qz::firmware {

// The keyboard never reported its loader.
inline constexpr int status_no_loader = -86;

// Waits the keyboard's loader needs: before and after the order to enter it,
// before each image package, and after the last package.
inline constexpr std::uint32_t wait_before_loader_ms = 500;
inline constexpr std::uint32_t wait_after_loader_ms = 5000;
inline constexpr std::uint32_t wait_before_package_ms = 50;
inline constexpr std::uint32_t wait_after_image_ms = 5000;

// Brings the keyboard into its loader, sends the image of `file` in packages
// and gives the result of a last version query. A refused package is logged and
// the rest still go out.
int upgrade_keyboard(int icdev, const std::filesystem::path& file);

}  // namespace qz::firmware
