#include "bank/afl.h"

#include <algorithm>

namespace qz::bank {

std::size_t ExtractAfl(std::span<const std::uint8_t> reply, std::span<std::uint8_t> entries) {
    constexpr std::size_t first_entry = 4;
    std::size_t copied = 0;
    for (std::size_t at = first_entry; at + afl_entry_size <= reply.size() && copied + afl_entry_size <= entries.size();
         at += afl_entry_size) {
        std::copy_n(reply.begin() + static_cast<std::ptrdiff_t>(at), afl_entry_size,
                    entries.begin() + static_cast<std::ptrdiff_t>(copied));
        copied += afl_entry_size;
    }
    return copied;
}

}  // namespace qz::bank
