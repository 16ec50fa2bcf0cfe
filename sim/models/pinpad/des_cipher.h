// DES (FIPS 46) and two-key triple DES on single blocks, for the devices of the
// simulated terminal that encipher: a plain textbook implementation, one bit
// position at a time from the standard's tables.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace qz::sim {

using DesBlock = std::array<std::uint8_t, 8>;

// One block under an 8-byte key (parity bits ignored).
DesBlock des_encrypt(const DesBlock& block, std::span<const std::uint8_t, 8> key);
DesBlock des_decrypt(const DesBlock& block, std::span<const std::uint8_t, 8> key);

// One block under a 16-byte key K1 K2: E(K1) D(K2) E(K1), and its inverse.
DesBlock tdes_encrypt(const DesBlock& block, std::span<const std::uint8_t, 16> key);
DesBlock tdes_decrypt(const DesBlock& block, std::span<const std::uint8_t, 16> key);

// Every whole 8-byte block of `data` in place, by DES under an 8-byte key or triple
// DES under a 16-byte one (any other key length is a logic error).
void encipher_blocks(std::span<std::uint8_t> data, std::span<const std::uint8_t> key);
void decipher_blocks(std::span<std::uint8_t> data, std::span<const std::uint8_t> key);

}  // namespace qz::sim
