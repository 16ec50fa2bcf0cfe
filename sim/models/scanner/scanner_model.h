// The barcode scanner. Commands of the terminal (class 0xC6), whose instruction
// 0x01 it shares with the stripe reader (it takes the one with a wait byte):
//
//   C6 01 00 w        reads one code (the next of the scenario's), w 2..10 seconds
//   C6 02 00 w        continuous reading, w 2..10
//   C6 02 00 00 7E .. the start (.. 01 02 DA) and stop (.. 00 12 FB) frames of polled reading
//   C6 03 00 01 / 00  polled reading begins / ends
//   C6 02 00 01       poll: the acknowledgement 02 00 00 01 00 33 31, with the code
//                     behind it (or alone, then the code at the next poll)
//   C6 04 00 m        where the output goes
//
// Its own messages, class 0xC5 instruction 0x0F, then ESC 'H':
//
//   00 1B 48 51       version: 02, the text, 03
//   t 1B 48 50        reads a code within t tenths of a second: 02, the code, 03
//   p 1B 48 60 ...    the loader (scanner_loader.h)
//
// With no code left, a read is answered with entry_timed_out. An older scanner
// (no version in the scenario) answers neither its version nor the direct read.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "sim/core/terminal.h"
#include "sim/models/scanner/scanner_config.h"
#include "sim/models/scanner/scanner_loader.h"

namespace qz::sim {

class ScannerModel final : public DeviceModel {
public:
    explicit ScannerModel(ScannerConfig config) : config_(std::move(config)), loader_(config_) {}
    ScannerModel(const ScannerModel&) = delete;
    ScannerModel& operator=(const ScannerModel&) = delete;

    std::vector<Route> routes() const override;
    bool takes(const Command& command) const override;
    Reply handle(const Command& command) override;

    const ScannerLoader& loader() const { return loader_; }
    std::optional<std::uint8_t> output_mode() const { return output_mode_; }
    bool continuous() const { return continuous_; }
    // A code held to the scanner by hand: read after those already waiting.
    void scan(std::vector<std::uint8_t> code) { config_.codes.push_back(std::move(code)); }
    std::size_t codes_waiting() const { return config_.codes.size(); }

private:
    Reply terminal_command(const Command& command);
    Reply own_message(std::uint8_t parameter, std::span<const std::uint8_t> message);
    Reply poll();
    std::optional<std::vector<std::uint8_t>> next_code();

    ScannerConfig config_;
    ScannerLoader loader_;
    std::optional<std::uint8_t> output_mode_;
    bool continuous_ = false;
    bool polling_ = false;
    bool acknowledged_ = false;
};

}  // namespace qz::sim
