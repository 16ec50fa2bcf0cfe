#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

#include "platform/image.h"

namespace qz::platform {
namespace {

struct Tap {
    int source;
    float weight;
};

// For each target index, the source indices it covers and their shares, which add up to 1.
std::vector<std::vector<Tap>> area_taps(int source_length, int target_length) {
    std::vector<std::vector<Tap>> taps(static_cast<std::size_t>(target_length));
    const double scale = static_cast<double>(source_length) / target_length;
    for (int t = 0; t < target_length; ++t) {
        const double start = t * scale;
        const double end = (t + 1) * scale;
        const int last = std::min(source_length, static_cast<int>(std::ceil(end)));
        for (int s = static_cast<int>(start); s < last; ++s) {
            const double overlap = std::min<double>(s + 1, end) - std::max<double>(s, start);
            if (overlap > 0) taps[static_cast<std::size_t>(t)].push_back({s, static_cast<float>(overlap / scale)});
        }
    }
    return taps;
}

}  // namespace

std::optional<Image> stretch_image(Image source, int width, int height) {
    if (width == source.width && height == source.height) return source;
    const auto columns = area_taps(source.width, width);
    const auto rows = area_taps(source.height, height);

    // Across first, into a float image of the target width and the source height.
    const std::size_t across_count = static_cast<std::size_t>(width) * static_cast<std::size_t>(source.height) * 3;
    PixelBytes across_bytes(across_count * sizeof(float));
    Image target{width, height, PixelBytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3)};
    if (across_bytes.empty() || target.rgb.empty()) return std::nullopt;
    const std::span across(reinterpret_cast<float*>(across_bytes.data()), across_count);
    std::fill(across.begin(), across.end(), 0.0f);
    for (int y = 0; y < source.height; ++y)
        for (int x = 0; x < width; ++x) {
            float* out = &across[(static_cast<std::size_t>(y) * width + x) * 3];
            for (const Tap& tap : columns[static_cast<std::size_t>(x)]) {
                const std::uint8_t* in = source.pixel(tap.source, y);
                for (int c = 0; c < 3; ++c) out[c] += in[c] * tap.weight;
            }
        }

    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            float sum[3] = {};
            for (const Tap& tap : rows[static_cast<std::size_t>(y)]) {
                const float* in = &across[(static_cast<std::size_t>(tap.source) * width + x) * 3];
                for (int c = 0; c < 3; ++c) sum[c] += in[c] * tap.weight;
            }
            std::uint8_t* out = &target.rgb[(static_cast<std::size_t>(y) * width + x) * 3];
            for (int c = 0; c < 3; ++c) out[c] = static_cast<std::uint8_t>(std::clamp(std::lround(sum[c]), 0L, 255L));
        }
    return target;
}

}  // namespace qz::platform
