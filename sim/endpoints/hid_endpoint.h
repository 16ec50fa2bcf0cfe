// The terminal's USB side: feature report 6 carries request pieces in and reply
// pieces out, each right behind the report id.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "sim/core/frame_codec.h"
#include "sim/core/responder.h"

namespace qz::sim {

inline constexpr std::uint16_t usb_vendor = 0x23A4;
inline constexpr std::uint16_t usb_product = 0x0305;
inline constexpr std::uint8_t feature_report_id = 6;
inline constexpr std::size_t hid_piece_length = 254;
// Feature report length, report id included.
inline constexpr std::uint16_t min_report_length = 255;
inline constexpr std::uint16_t max_report_length = 300;
inline constexpr std::uint16_t default_report_length = 256;

class HidEndpoint {
public:
    // `report_length` must lie within min_report_length..max_report_length.
    HidEndpoint(Responder& terminal, std::uint16_t report_length);

    std::uint16_t report_length() const { return report_length_; }

    // Takes one written report. Refused (false) unless it is report 6 of the
    // full length. A report that does not continue a frame and does not begin
    // one with STX is taken and ignored.
    bool set_feature(std::span<const std::uint8_t> report);

    // Fills `report` (byte 0 names the report wanted) with the next reply piece
    // and gives the report length. Fails at once when no reply piece is ready,
    // for another report id, or for a buffer shorter than the report.
    std::optional<std::size_t> get_feature(std::span<std::uint8_t> report);

    bool reply_pending() const { return sent_ < reply_.size(); }

private:
    Responder& terminal_;
    std::uint16_t report_length_;
    FrameCollector request_;
    std::vector<std::uint8_t> reply_;
    std::size_t sent_ = 0;
};

}  // namespace qz::sim
