#include "platform/hid_descriptor.h"

#include <algorithm>
#include <array>
#include <vector>

namespace qz::platform {
namespace {

constexpr std::uint8_t long_item = 0xFE;

enum ItemKey : std::uint8_t {  // tag and type bits of a short item's prefix
    main_feature = 0xB0,
    global_report_size = 0x74,
    global_report_id = 0x84,
    global_report_count = 0x94,
    global_push = 0xA4,
    global_pop = 0xB4,
};

struct GlobalState {
    std::uint32_t report_size = 0;
    std::uint32_t report_count = 0;
    std::uint8_t report_id = 0;
};

std::uint32_t item_value(std::span<const std::uint8_t> data) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < data.size(); ++i) value |= std::uint32_t{data[i]} << (8 * i);
    return value;
}

}  // namespace

std::uint16_t feature_report_length(std::span<const std::uint8_t> descriptor) {
    std::array<std::uint64_t, 256> feature_bits{};
    bool any_feature = false;
    GlobalState global;
    std::vector<GlobalState> stack;

    for (std::size_t at = 0; at < descriptor.size();) {
        const std::uint8_t prefix = descriptor[at];
        if (prefix == long_item) {
            if (at + 1 >= descriptor.size()) break;
            at += 3 + descriptor[at + 1];
            continue;
        }
        static constexpr std::array<std::size_t, 4> sizes{0, 1, 2, 4};
        const std::size_t size = sizes[prefix & 0x03];
        if (at + 1 + size > descriptor.size()) break;
        const std::uint32_t value = item_value(descriptor.subspan(at + 1, size));
        switch (prefix & 0xFC) {
            case global_report_size: global.report_size = value; break;
            case global_report_count: global.report_count = value; break;
            case global_report_id: global.report_id = static_cast<std::uint8_t>(value); break;
            case global_push: stack.push_back(global); break;
            case global_pop:
                if (!stack.empty()) {
                    global = stack.back();
                    stack.pop_back();
                }
                break;
            case main_feature:
                feature_bits[global.report_id] += std::uint64_t{global.report_size} * global.report_count;
                any_feature = true;
                break;
            default: break;
        }
        at += 1 + size;
    }
    if (!any_feature) return 0;
    const std::uint64_t longest = *std::max_element(feature_bits.begin(), feature_bits.end());
    return static_cast<std::uint16_t>(std::min<std::uint64_t>((longest + 7) / 8 + 1, 0xFFFF));
}

}  // namespace qz::platform
