// The barcode scanner's own messages through the terminal (class 0xC5,
// instruction 0x0F, then ESC 'H'): its version and its loader.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace qz::firmware {

// The head of a message to the scanner through the terminal, and the scanner's
// orders behind it.
inline constexpr std::uint8_t pass_class = 0xC5;
inline constexpr std::uint8_t pass_instruction = 0x0F;
inline constexpr std::uint8_t esc = 0x1B;
inline constexpr std::uint8_t scanner_mark = 'H';
inline constexpr std::uint8_t read_order = 'P';
inline constexpr std::uint8_t version_order = 'Q';
inline constexpr std::uint8_t loader_order = 0x60;

// The scanner's own class on the terminal: continuous reading (polled) and
// reading switched on or off.
inline constexpr std::uint8_t scanner_class = 0xC6;
inline constexpr std::uint8_t scanner_read_continuously = 0x02;
inline constexpr std::uint8_t scanner_reading = 0x03;

// Firmware bytes in one package of the loader; the last package is padded with zeros.
inline constexpr std::size_t scanner_package_size = 256;
inline constexpr std::uint32_t wait_after_switch_ms = 1500;
inline constexpr std::uint32_t wait_between_preparing_ms = 60;
// A short pause between polls of the loader, so a scanner that keeps saying no
// is not flooded.
inline constexpr std::uint32_t wait_between_polls_ms = 10;

// Refusals of the loader: the negated command value of the preparing step, and
// a refused package.
inline constexpr int status_package_refused = -96;

// The scanner's version text: the reply data without their first and last byte,
// when they have at least 3 bytes. Sets the link time-outs to 5000 and 0.
int scanner_version(int icdev, std::vector<std::uint8_t>& text);

// Switches the scanner to its loader and polls until it answers, for at most `limit_ms`.
bool enter_scanner_loader(int icdev, std::uint32_t limit_ms);
// The five preparing steps: 0, a failed transaction's status, or the step's refusal.
int prepare_scanner_upgrade(int icdev);
// Sends one package of scanner_package_size bytes with its CRC: 0, a failed
// transaction's status, or status_package_refused.
int download_scaner_upgrade_data(int icdev, std::span<const std::uint8_t> package);
// Tells the loader the upgrade is over: the transaction's status.
int leave_scanner_loader(int icdev);

}  // namespace qz::firmware
