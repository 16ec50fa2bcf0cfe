// Identity card fields from UCS-2 to GBK text: conversion with a byte limit, the
// cut at the padding, and the names for gender, ethnic group and country codes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace qz::identity {

// One raw field at the head of a zero-filled 256-byte area, so that its UCS-2
// little-endian code units always end in a zero unit.
using RawField = std::span<const std::uint8_t, 256>;

// Text of a field of an ordinary card, kind 0 (name) to 9 (reserved); empty for
// any other kind.
std::string IDFieldToText(int kind, RawField info);

// Text of a field of a foreigner's card, kind 1 (name in Latin letters) to 12
// (reserved); empty for any other kind.
std::string IDForeignFieldToText(int kind, RawField info);

// Length to keep of a blank-padded text: the position of the first blank that is
// followed by another blank within `width` bytes, else `width`.
std::int16_t TrimAtDoubleBlank(std::span<const char> text, int width);

// Name of the ethnic group whose two-character code is `code` (" " for a code
// outside 01 to 58 or with a bad character). Result: that of DecPairsToBytes.
int NationCodeToName(std::span<const char, 2> code, std::string& name);

// Each byte from two characters, either case: '0'-'9' count 0-9 and 'A'-'F'
// 10-15, and the byte is high * 10 + low (decimal pairs). Stops with -1 at the
// first other character (or the end of `text`), the bytes before it written.
int DecPairsToBytes(std::span<const char> text, std::span<std::uint8_t> bytes);

// Name of the country with exactly this code: 0; -19 and `name` untouched when
// the table does not hold the code.
int CountryCodeToName(std::string_view code, std::string& name);

}  // namespace qz::identity
