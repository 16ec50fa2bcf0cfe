#include "bank/tlv.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>
#include <optional>
#include <vector>

namespace qz::bank {
namespace {

constexpr std::uint8_t tag_number_mask = 0x1F;  // all set: more tag bytes follow
constexpr std::uint8_t tag_more_bytes = 0x80;   // in a later tag byte: another follows
constexpr std::uint8_t tag_constructed = 0x20;
constexpr std::uint8_t length_long_form = 0x80;

// End of the tag that starts at `at`, or nothing when it runs past `end`.
std::optional<std::size_t> tag_end(std::span<const std::uint8_t> data, std::size_t at, std::size_t end) {
    if ((data[at] & tag_number_mask) != tag_number_mask) return at + 1;
    for (std::size_t next = at + 1; next < end; ++next)
        if ((data[next] & tag_more_bytes) == 0) return next + 1;
    return std::nullopt;
}

struct Length {
    std::size_t value;
    std::size_t size;  // bytes of the length field
};

// The length field at `at`, or nothing when it runs past `end`. A long-form value
// too large for size_t saturates: no data can hold it.
std::optional<Length> length_at(std::span<const std::uint8_t> data, std::size_t at, std::size_t end) {
    if (at >= end) return std::nullopt;
    if ((data[at] & length_long_form) == 0) return Length{data[at], 1};
    const std::size_t count = data[at] & 0x7F;
    if (count > end - at - 1) return std::nullopt;
    constexpr std::size_t saturated = std::numeric_limits<std::size_t>::max();
    std::size_t value = 0;
    for (std::size_t i = 1; i <= count; ++i)
        value = value > (saturated >> 8) ? saturated : (value << 8) | data[at + i];
    return Length{value, 1 + count};
}

enum class Phase { tag, length, value };

// The scan of one level: the whole data, or the value of a constructed item that
// is being searched. A level ends with not found when its position reaches its end
// or an item runs past it; its parent then goes on behind the constructed item.
struct Level {
    std::size_t position;
    std::size_t end;
    Phase phase = Phase::tag;
    bool matched = false;
    std::size_t length = 0;  // of the current item
};

}  // namespace

TlvResult TlvFind(std::span<const std::uint8_t> data, std::span<const std::uint8_t> tag,
                  std::span<std::uint8_t> value, std::uint16_t& value_length) try {
    if (tag.empty()) return TlvResult::not_found;
    std::vector<Level> levels{Level{0, data.size()}};
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.position >= level.end) {
            levels.pop_back();
            continue;
        }
        switch (level.phase) {
            case Phase::tag: {
                const std::size_t start = level.position;
                const auto end_of_tag = tag_end(data, start, level.end);
                if (!end_of_tag) {
                    levels.pop_back();
                    break;
                }
                // As many bytes as the wanted tag has, whatever the length of this one.
                if (tag.size() <= level.end - start && std::equal(tag.begin(), tag.end(), data.begin() + start))
                    level.matched = true;
                level.length = 0;
                level.position = *end_of_tag;
                level.phase = Phase::length;
                if ((data[start] & tag_constructed) == 0 || level.matched) break;
                const auto length = length_at(data, level.position, level.end);
                if (!length || length->value > level.end - level.position - length->size) {
                    levels.pop_back();
                    break;
                }
                if (length->value > 0) {
                    const std::size_t inner = level.position + length->size;
                    levels.push_back(Level{inner, inner + length->value});  // `level` is stale from here
                }
                break;
            }
            case Phase::length: {
                const auto length = length_at(data, level.position, level.end);
                if (!length) {
                    levels.pop_back();
                    break;
                }
                level.position += length->size;
                level.length = length->value;
                level.phase = Phase::value;
                if (level.matched) value_length = static_cast<std::uint16_t>(length->value);
                break;
            }
            case Phase::value: {
                if (level.length > level.end - level.position || (level.matched && level.length > value.size())) {
                    levels.pop_back();
                    break;
                }
                if (level.matched) {
                    std::copy_n(data.begin() + static_cast<std::ptrdiff_t>(level.position), level.length,
                                value.begin());
                    return TlvResult::found;
                }
                level.position += level.length;
                level.phase = Phase::tag;
                break;
            }
        }
    }
    return TlvResult::not_found;
} catch (const std::bad_alloc&) {
    return TlvResult::not_found;  // nesting too deep for the memory at hand
}

}  // namespace qz::bank
