// Reading a PIN block that the external pad built: ISO 9564 format 0.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace qzctl {

// The PIN digits of a deciphered format 0 block (0, the length, the digits, F to the
// end, XOR the account field); nothing when the block is no such block, as when it
// was deciphered under the wrong key.
std::optional<std::string> format0_pin(std::span<const std::uint8_t, 8> block,
                                       std::span<const std::uint8_t, 8> account);

}  // namespace qzctl
