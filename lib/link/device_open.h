// Finding the terminal on USB HID or a serial port and opening the link to it.
#pragma once

#include <cstdint>
#include <string>

namespace qz::link {

inline constexpr std::uint16_t terminal_vendor = 0x23A4;
inline constexpr std::uint16_t terminal_product = 0x0305;
inline constexpr int hid_interfaces_searched = 64;
inline constexpr std::size_t device_path_capacity = 260;  // terminating zero included
inline constexpr int highest_port = 31;

// Name of serial port `port` (counted from 0): "COM1".."COM9", "\\.\COM10".."\\.\COM32".
std::string serial_port_name(int port);

// The speeds taken as given; every other value opens the port at 9600.
std::uint32_t serial_speed(int baud);

// The first HID interface whose vendor and product match and whose capabilities
// can be read: its handle, or 0. A non-zero feature report length is stored in
// the link state, together with the two time-outs.
int hid_open_terminal(std::uint32_t read_ms, std::uint32_t write_gap_ms, std::uint16_t vendor,
                      std::uint16_t product);
int hid_open_link(std::uint32_t read_ms, std::uint32_t write_gap_ms, std::uint16_t vendor, std::uint16_t product);

// A handle, or -19 (port above 31), -20 (in use), -21 (cannot be opened),
// -22 (state unreadable), -23 (state refused).
int serial_open_port(int port, int baud, std::uint8_t byte_size, std::uint8_t stop_bits, std::uint8_t parity);
int serial_open_link(int port, int baud);

}  // namespace qz::link
