// The system's random source, for keys that nobody may guess.
#pragma once

#include <cstdint>
#include <span>

namespace qz::platform {

// Fills `bytes` from the operating system's cryptographic random source. Waits for
// the source to be ready rather than hand out weaker bytes; never fails silently
// (a source that cannot be read ends the process).
void random_bytes(std::span<std::uint8_t> bytes);

}  // namespace qz::platform
