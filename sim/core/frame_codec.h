// The terminal's side of the command frame: STX, LEN_HI, LEN_LO, payload, BCC, ETX.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace qz::sim {

inline constexpr std::uint8_t stx = 0x02;
inline constexpr std::uint8_t etx = 0x03;
inline constexpr std::size_t frame_overhead = 5;
inline constexpr std::size_t header_length = 3;  // STX, LEN_HI, LEN_LO
inline constexpr std::size_t max_frame_length = 65530;

// XOR of the bytes, starting from 0.
std::uint8_t bcc(std::span<const std::uint8_t> bytes);

// The frame that carries `payload`; std::length_error if it would exceed
// max_frame_length.
std::vector<std::uint8_t> encode_frame(std::span<const std::uint8_t> payload);

// The reply payload: status_hi, status_lo, a reserved byte (0), the data.
std::vector<std::uint8_t> reply_payload(std::uint16_t status, std::span<const std::uint8_t> data);

// The payload of a whole frame, or nothing when its ETX or BCC is wrong.
std::optional<std::span<const std::uint8_t>> frame_payload(std::span<const std::uint8_t> frame);

// Collects one frame from bytes arriving in portions of any size. Bytes before
// an STX are dropped; LEN tells where the frame ends.
class FrameCollector {
public:
    // Takes bytes until the frame is whole and tells how many of `bytes` it took.
    std::size_t feed(std::span<const std::uint8_t> bytes);

    bool started() const { return !bytes_.empty(); }
    bool complete() const;
    // The frame collected so far; whole once complete() holds.
    std::span<const std::uint8_t> frame() const { return bytes_; }
    void reset() { bytes_.clear(); }

private:
    std::size_t wanted() const;  // frame length once the header is in, else the header's

    std::vector<std::uint8_t> bytes_;
};

}  // namespace qz::sim
