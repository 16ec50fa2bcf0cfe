#include "bank/pan_name.h"

#include <algorithm>
#include <array>

#include "bank/emv_walk.h"
#include "bank/tlv.h"
#include "link/status.h"
#include "reader/hex.h"

namespace qz::bank {
namespace {

constexpr std::array<std::uint8_t, 2> tag_name{0x5F, 0x20};
constexpr std::array<std::uint8_t, 2> tag_extended_name{0x9F, 0x0B};
constexpr std::array<std::uint8_t, 1> tag_track2{0x57};
constexpr std::array<std::uint8_t, 1> tag_pan{0x5A};

// Longest PAN source taken: 19 bytes, 38 digits.
constexpr std::size_t max_pan_bytes = 19;

class PanAndNameReader final : public WalkReader {
public:
    PanAndNameReader(const PanAndName& out, const PathTraits& traits) : out_(out), traits_(traits) {}

    bool take_processing_options(std::span<const std::uint8_t> reply) override {
        if (!take_name(reply, tag_name)) name_optional_ = true;
        if (!find(reply, tag_track2) || value_length_ > max_pan_bytes) return false;
        // The digits in front of the field separator, then a terminator.
        char* text = reinterpret_cast<char*>(out_.pan);
        reader::to_hex(value(), {text, 2 * value_length_});
        const auto digits = std::find_if(text, text + 2 * value_length_, [](char c) { return c < '0' || c > '9'; });
        *digits = '\0';
        *out_.pan_length = static_cast<unsigned short>(digits - text);
        return true;
    }

    bool take_record(std::span<const std::uint8_t> reply) override {
        take_name(reply, tag_name);
        if (traits_.extended_name) take_name(reply, tag_extended_name);
        if (find(reply, tag_pan) && value_length_ <= max_pan_bytes) take_pan();
        return *out_.pan_length > 0 && (*out_.name_length > 0 || name_optional_);
    }

private:
    bool find(std::span<const std::uint8_t> data, std::span<const std::uint8_t> tag) {
        std::uint16_t length = 0;
        const bool found = TlvFind(data, tag, value_, length) == TlvResult::found;
        value_length_ = found ? length : 0;
        return found;
    }

    std::span<const std::uint8_t> value() const { return std::span(value_).first(value_length_); }

    bool take_name(std::span<const std::uint8_t> reply, std::span<const std::uint8_t> tag) {
        if (!find(reply, tag)) return false;
        std::ranges::copy(value(), out_.name);
        *out_.name_length = static_cast<unsigned short>(value_length_);
        return true;
    }

    // The hex digits of the value less one padding F, not terminated.
    void take_pan() {
        std::array<char, 2 * max_pan_bytes> text{};
        std::size_t digits = 2 * value_length_;
        reader::to_hex(value(), text);
        if (digits > 0 && text[digits - 1] == 'F') --digits;
        std::copy_n(text.begin(), digits, out_.pan);
        *out_.pan_length = static_cast<unsigned short>(digits);
    }

    PanAndName out_;
    const PathTraits& traits_;
    std::array<std::uint8_t, work_area_size> value_{};
    std::size_t value_length_ = 0;
    bool name_optional_ = false;
};

}  // namespace

int read_pan_and_name(CardPath& path, const PanAndName& out) {
    if (out.pan == nullptr || out.pan_length == nullptr || out.name == nullptr || out.name_length == nullptr)
        return link::status_bad_argument;
    *out.pan_length = 0;
    *out.name_length = 0;
    PanAndNameReader reader(out, path.traits());
    return walk_card(path, reader);
}

}  // namespace qz::bank
