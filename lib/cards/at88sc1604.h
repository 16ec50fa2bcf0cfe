// AT88SC1604: one flat numbering of addresses 0 to 2006 over a common area, four
// user zones (each with a security code and an erase key at its head) and a tail.
// Addresses and lengths go on the link as two bytes, high byte first.
#pragma once

#include <array>
#include <optional>

#include "cards/memory_command.h"

namespace qz::cards::at88sc1604 {

struct Zone {
    unsigned read_first;   // a read may start here
    unsigned write_first;  // a write or erase may start here: past the zone's codes
    unsigned last;
    std::optional<unsigned> code_at;       // the zone's security code
    std::optional<unsigned> erase_key_at;  // the zone's erase key
};

inline constexpr std::array<Zone, 6> zones{{
    {0, 0, 20, 10, std::nullopt},
    {21, 27, 1221, 21, 24},
    {1222, 1227, 1482, 1222, 1224},
    {1483, 1488, 1743, 1483, 1485},
    {1744, 1749, 2004, 1744, 1746},
    {2005, 2005, 2006, std::nullopt, std::nullopt},
}};

inline constexpr int code_length = 2;
// Code selectors of the code write: 0..4 a zone's security code, 5..8 the erase
// key of user zone 1..4.
inline constexpr int code_selectors = 9;

enum class Access { read, write };

// Whether `length` bytes at `offset` lie in `zone` for a read, or a write or erase.
bool range_fits(int zone, int offset, int length, Access access);

// Address of the code a code selector names; nothing for a selector out of range.
std::optional<unsigned> code_address(int selector);

}  // namespace qz::cards::at88sc1604
