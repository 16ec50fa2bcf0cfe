// Glyphs drawn once are kept, so text that repeats characters is cheap.
#pragma once

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "font_engine.h"

namespace fontmaker {

class GlyphCache {
public:
    // Sets the ink of `code` at `size` in a cell `width` pixels wide (rows of
    // `row_bytes` bytes), drawing it with `engine` the first time.
    void draw(FontEngine& engine, char32_t code, int size, int width, std::span<std::uint8_t> cell,
              std::size_t row_bytes);

private:
    std::unordered_map<std::uint64_t, std::vector<std::uint8_t>> glyphs_;
    std::size_t cached_bytes_ = 0;
};

}  // namespace fontmaker
