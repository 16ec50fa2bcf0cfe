// The scanner's loader, reached by its own messages ESC 'H' 0x60, a length
// (big-endian) and the content:
//
//   switch      ten bytes, the last two the two's complement of the sum of the
//               first eight: the scanner restarts into its loader (no answer looked for)
//   21          poll: '$' once the loader runs
//   34, 03, "#ver#", 01, 00 23 B5 00
//               the preparing steps, in this order: '$' each, the loader's
//               version text for "#ver#"; a step out of order is refused
//   package     parameter byte 02, length 258: 256 firmware bytes and their
//               CRC-16 (polynomial 0x1021, initial 0), high byte first:
//               '$' when the CRC holds, else refused
//   "#exit#"    (length field 8): leaves the loader; the firmware received, if
//               any, becomes the scanner's firmware and version
//
// Answers are 02, '$' or '!', 03.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "sim/core/terminal.h"
#include "sim/models/scanner/scanner_config.h"

namespace qz::sim {

class ScannerLoader {
public:
    explicit ScannerLoader(ScannerConfig& config) : config_(config) {}

    // `parameter` is the byte in front of ESC; `message` starts behind ESC 'H' 0x60.
    Reply handle(std::uint8_t parameter, std::span<const std::uint8_t> message);

    bool running() const { return running_; }
    const std::vector<std::uint8_t>& firmware() const { return firmware_; }
    unsigned packages_taken() const { return packages_; }

private:
    Reply take_package(std::span<const std::uint8_t> content);

    ScannerConfig& config_;
    bool running_ = false;
    std::size_t steps_done_ = 0;
    unsigned packages_ = 0;
    bool silent_ = false;
    std::vector<std::uint8_t> received_;
    std::vector<std::uint8_t> firmware_;
};

}  // namespace qz::sim
