#include "glyph_cache.h"

#include <algorithm>

namespace fontmaker {
namespace {

constexpr std::size_t cache_limit = 8u << 20;  // bytes of cached glyphs before the cache starts afresh

}  // namespace

void GlyphCache::draw(FontEngine& engine, char32_t code, int size, int width, std::span<std::uint8_t> cell,
                      std::size_t row_bytes) {
    // size and width are below 256, the row length follows from the size
    const std::uint64_t key = (std::uint64_t{code} << 16) | (static_cast<std::uint64_t>(size & 0xFF) << 8) |
                              static_cast<std::uint64_t>(width & 0xFF);
    auto found = glyphs_.find(key);
    if (found == glyphs_.end()) {
        std::vector<std::uint8_t> glyph(static_cast<std::size_t>(size) * row_bytes);
        engine.render(code, size, width, glyph, row_bytes);
        if (cached_bytes_ + glyph.size() > cache_limit) {
            glyphs_.clear();
            cached_bytes_ = 0;
        }
        cached_bytes_ += glyph.size();
        found = glyphs_.emplace(key, std::move(glyph)).first;
    }
    const std::vector<std::uint8_t>& glyph = found->second;
    const std::size_t count = std::min(glyph.size(), cell.size());
    for (std::size_t at = 0; at < count; ++at) cell[at] |= glyph[at];
}

}  // namespace fontmaker
