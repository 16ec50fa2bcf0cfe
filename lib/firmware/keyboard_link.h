// Messages to the keyboard behind the terminal: class 0xC5, instruction 0x0F,
// parameter 0, then the keyboard's own message.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace qz::firmware {

// Image bytes in one package of the loader.
inline constexpr std::size_t keyboard_package_size = 170;

using VersionText = std::vector<std::uint8_t>;

// Frame around a message for the keyboard: STX, length big-endian, payload, XOR, ETX.
std::vector<std::uint8_t> inner_frame(std::span<const std::uint8_t> payload);

// The firmware's version text ("KTLVN"): the reply data without their first and
// last byte. Result: the transaction's.
int keyboard_version(int icdev, VersionText& text);
// The loader's version text: from the inner frame the loader answers with, or
// read as keyboard_version reads it when the reply isn't one.
int iap_version(int icdev, VersionText& text);
// Orders the keyboard into its loader ("UPDATE"); the answer doesn't matter.
void enter_iap(int icdev);
// Upper-cases `text` in place; whether it names the loader ("IAP").
bool is_iap_version(VersionText& text);
// Sends package `number` (its low 8 bits) with `data`, once more when the
// keyboard refuses it. Result: a failed transaction's status, else the
// keyboard's inner status (0 taken, up to 65535).
int download_iap(int icdev, unsigned number, std::span<const std::uint8_t> data);

}  // namespace qz::firmware
