// The command frame: STX, LEN_HI, LEN_LO, payload, BCC, ETX.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace qz::link {

inline constexpr std::uint8_t stx = 0x02;
inline constexpr std::uint8_t etx = 0x03;
inline constexpr std::size_t frame_overhead = 5;
inline constexpr std::size_t max_frame_length = 65530;
inline constexpr std::size_t max_payload_length = max_frame_length - frame_overhead;

// XOR of the bytes, starting from 0.
std::uint8_t frame_bcc(std::span<const std::uint8_t> bytes);

// 0 if the bytes XOR to 0 (an empty range does), else the bad-BCC status.
int frame_check(std::span<const std::uint8_t> bytes);

// Writes the frame of `payload` to `frame`, which holds payload.size() + 5 bytes.
void build_frame(std::span<const std::uint8_t> payload, std::span<std::uint8_t> frame);

}  // namespace qz::link
