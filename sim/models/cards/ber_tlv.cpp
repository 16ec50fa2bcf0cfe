#include "sim/models/cards/ber_tlv.h"

#include "sim/core/json_values.h"

namespace qz::sim {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t multi_byte_tag = 0x1F;  // low five bits all set: further tag bytes follow
constexpr std::uint8_t more_tag_bytes = 0x80;  // in a further tag byte: yet another follows
constexpr std::uint8_t constructed = 0x20;

// Length of the BER tag at the start of `bytes`, or nothing when it is cut short.
std::optional<std::size_t> tag_length(std::span<const std::uint8_t> bytes) {
    if (bytes.empty()) return std::nullopt;
    if ((bytes[0] & multi_byte_tag) != multi_byte_tag) return 1;
    for (std::size_t i = 1; i < bytes.size(); ++i)
        if ((bytes[i] & more_tag_bytes) == 0) return i + 1;
    return std::nullopt;
}

}  // namespace

Bytes tlv(std::span<const std::uint8_t> tag, std::span<const std::uint8_t> value) {
    Bytes bytes(tag.begin(), tag.end());
    const std::size_t length = value.size();
    if (length >= 0x100) {
        bytes.insert(bytes.end(), {0x82, static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length)});
    } else {
        if (length >= 0x80) bytes.push_back(0x81);
        bytes.push_back(static_cast<std::uint8_t>(length));
    }
    bytes.insert(bytes.end(), value.begin(), value.end());
    return bytes;
}

Bytes tlv(std::uint16_t tag, std::span<const std::uint8_t> value) {
    Bytes tag_bytes;
    if (tag > 0xFF) tag_bytes.push_back(static_cast<std::uint8_t>(tag >> 8));
    tag_bytes.push_back(static_cast<std::uint8_t>(tag));
    return tlv(tag_bytes, value);
}

Bytes parse_tag(std::string_view text, const std::string& where) {
    Bytes tag;
    try {
        tag = json_bytes(nlohmann::json{{"hex", std::string(text)}}, where);
    } catch (const ScenarioError&) {
        throw ScenarioError(where + ": \"" + std::string(text) + "\" is no tag in hexadecimal");
    }
    if (tag_length(tag) != tag.size())
        throw ScenarioError(where + ": \"" + std::string(text) + "\" is not one whole BER tag");
    return tag;
}

Bytes tlv_list(const nlohmann::json& list, const std::string& where) {
    if (!list.is_array()) throw ScenarioError(where + ": expected a list of {\"tag\": value}");
    Bytes bytes;
    for (std::size_t i = 0; i < list.size(); ++i) {
        const std::string item_where = where + "[" + std::to_string(i) + "]";
        const auto& item = list[i];
        if (!item.is_object() || item.size() != 1) throw ScenarioError(item_where + ": expected one {\"tag\": value}");
        const std::string& key = item.begin().key();
        const nlohmann::json& value = item.begin().value();
        const Bytes tag = parse_tag(key, item_where);
        Bytes object;
        if (value.is_array()) {
            if ((tag[0] & constructed) == 0)
                throw ScenarioError(item_where + ": tag " + key + " is primitive and cannot hold a list");
            object = tlv(tag, tlv_list(value, item_where + "." + key));
        } else {
            object = tlv(tag, json_bytes(value, item_where + "." + key));
        }
        bytes.insert(bytes.end(), object.begin(), object.end());
    }
    return bytes;
}

std::optional<Bytes> find_tlv(std::span<const std::uint8_t> data, std::uint32_t tag) {
    std::size_t at = 0;
    while (at < data.size()) {
        const std::size_t tag_start = at;
        std::uint32_t found = data[at++];
        if ((found & multi_byte_tag) == multi_byte_tag) do {
                if (at >= data.size()) return std::nullopt;
                found = found << 8 | data[at];
            } while (data[at++] & more_tag_bytes);
        if (at >= data.size()) return std::nullopt;
        std::size_t length = data[at++];
        if (length == 0x80) return std::nullopt;  // indefinite: not in card data
        if (length > 0x80) {
            const std::size_t count = length & 0x7F;
            length = 0;
            for (std::size_t i = 0; i < count; ++i) {
                if (at >= data.size()) return std::nullopt;
                length = length << 8 | data[at++];
            }
        }
        if (length > data.size() - at) return std::nullopt;
        const auto value = data.subspan(at, length);
        if (found == tag) return Bytes(value.begin(), value.end());
        if (data[tag_start] & constructed)
            if (auto inner = find_tlv(value, tag)) return inner;
        at += length;
    }
    return std::nullopt;
}

std::optional<std::size_t> dol_length(std::span<const std::uint8_t> dol) {
    std::size_t total = 0;
    while (!dol.empty()) {
        const auto tag = tag_length(dol);
        if (!tag || *tag >= dol.size()) return std::nullopt;
        total += dol[*tag];
        dol = dol.subspan(*tag + 1);
    }
    return total;
}

}  // namespace qz::sim
