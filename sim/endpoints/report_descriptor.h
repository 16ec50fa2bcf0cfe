// The HID report descriptor the terminal presents: one vendor-defined
// collection with feature report 6 of the configured length.
#pragma once

#include <cstdint>
#include <vector>

namespace qz::sim {

// `report_length` counts the report id byte, as the host sees the report.
std::vector<std::uint8_t> report_descriptor(std::uint16_t report_length);

}  // namespace qz::sim
