#include "pinpad/pad_state.h"

#include <algorithm>

namespace qz::pinpad {
namespace {
PadState state;
}

PadState& pad_state() { return state; }

void reset_pad_state() { state = PadState{}; }

KeyRow* key_row(KeyTable& table, std::uint32_t number) { return number < table.size() ? &table[number] : nullptr; }

void store_key(KeyRow& row, std::uint8_t keymode, std::span<const std::uint8_t> key) {
    row[0] = keymode;
    std::ranges::copy(key.first(std::min(key.size(), row.size() - 1)), row.begin() + 1);
}

}  // namespace qz::pinpad
