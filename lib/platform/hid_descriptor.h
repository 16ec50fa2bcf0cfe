// Reading a HID report descriptor for the length of its feature reports.
#pragma once

#include <cstdint>
#include <span>

namespace qz::platform {

// Length in bytes of the longest feature report described, the report id byte
// included (as it travels in a feature request); 0 if there is no feature report.
std::uint16_t feature_report_length(std::span<const std::uint8_t> descriptor);

}  // namespace qz::platform
