#include <windows.h>
#include <bcrypt.h>

#include <cstdlib>

#include "platform/random.h"

namespace qz::platform {

void random_bytes(std::span<std::uint8_t> bytes) {
    if (bytes.empty()) return;
    // Without a random source a session key would be guessable: refuse to go on.
    if (BCryptGenRandom(nullptr, bytes.data(), static_cast<ULONG>(bytes.size()), BCRYPT_USE_SYSTEM_PREFERRED_RNG) != 0)
        std::abort();
}

}  // namespace qz::platform
