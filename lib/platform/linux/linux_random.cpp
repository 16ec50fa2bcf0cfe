#include <sys/random.h>

#include <cerrno>
#include <cstdlib>

#include "platform/random.h"

namespace qz::platform {

void random_bytes(std::span<std::uint8_t> bytes) {
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t got = ::getrandom(bytes.data() + filled, bytes.size() - filled, 0);
        if (got > 0) {
            filled += static_cast<std::size_t>(got);
        } else if (errno != EINTR) {
            // Without a random source a session key would be guessable: refuse to go on.
            std::abort();
        }
    }
}

}  // namespace qz::platform
