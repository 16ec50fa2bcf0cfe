#include "reference_walk.h"

#include <algorithm>
#include <stdexcept>

#include "qz_32.h"
#include "sim/models/cards/ber_tlv.h"

namespace qz::test {
namespace {

using sim::find_tlv;

// The AID a terminal asks for when the card has no directory: a partial name,
// matching the payment applications of one scheme.
const Bytes candidate_aid{0xA0, 0x00, 0x00, 0x03, 0x33, 0x01, 0x01};

std::uint16_t status_words(const Bytes& response) {
    if (response.size() < 2) return 0;
    return static_cast<std::uint16_t>(response[response.size() - 2] << 8 | response.back());
}

Bytes data_of(const Bytes& response) {
    return response.size() < 2 ? Bytes{} : Bytes(response.begin(), response.end() - 2);
}

Bytes select(CardChannel& card, const Bytes& name) {
    Bytes apdu{0x00, 0xA4, 0x04, 0x00, static_cast<std::uint8_t>(name.size())};
    apdu.insert(apdu.end(), name.begin(), name.end());
    apdu.push_back(0x00);
    return card.transceive(apdu);
}

Bytes read_record(CardChannel& card, std::uint8_t sfi, std::uint8_t number) {
    return card.transceive({0x00, 0xB2, number, static_cast<std::uint8_t>(sfi << 3 | 4), 0x00});
}

// The items of a run of data objects that are not nested, e.g. the entries of a
// directory or the tags and lengths of a DOL read as (tag, length) pairs.
struct Item {
    std::uint32_t tag;
    Bytes value;
};

std::vector<Item> entries(const Bytes& data) {
    std::vector<Item> found;
    std::size_t at = 0;
    while (at + 2 <= data.size() && data[at] == 0x61) {
        const std::size_t length = data[at + 1];
        if (at + 2 + length > data.size()) break;
        found.push_back({0x61, Bytes(data.begin() + static_cast<std::ptrdiff_t>(at + 2),
                                     data.begin() + static_cast<std::ptrdiff_t>(at + 2 + length))});
        at += 2 + length;
    }
    return found;
}

// Zero bytes, as many as the PDOL asks for in all.
Bytes pdol_answer(const Bytes& pdol) {
    const auto length = sim::dol_length(pdol);
    if (!length) throw std::runtime_error("PDOL cut short");
    return Bytes(*length, 0x00);
}

std::string pan_digits(const Bytes& value) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    for (std::uint8_t byte : value) {
        text += digits[byte >> 4];
        text += digits[byte & 0x0F];
    }
    const auto end = std::find_if(text.begin(), text.end(), [](char c) { return c < '0' || c > '9'; });
    return {text.begin(), end};
}

// Takes what `data` holds of the PAN (5A, else track 2) and the name.
void take(const Bytes& data, Reading& reading) {
    if (const auto pan = find_tlv(data, 0x5A))
        reading.pan = pan_digits(*pan);
    else if (const auto track2 = find_tlv(data, 0x57); track2 && reading.pan.empty())
        reading.pan = pan_digits(*track2);
    if (const auto name = find_tlv(data, 0x9F0B))
        reading.name = name;
    else if (const auto short_name = find_tlv(data, 0x5F20); short_name && !reading.name)
        reading.name = short_name;
}

bool complete(const Reading& reading) { return !reading.pan.empty() && reading.name; }

// The AID of the entry with the highest priority (lowest 87; none is lowest).
std::optional<Bytes> chosen_application(const std::vector<Item>& listed) {
    std::optional<Bytes> best;
    unsigned best_priority = 0x100;
    for (const Item& entry : listed) {
        const auto aid = find_tlv(entry.value, 0x4F);
        const auto priority = find_tlv(entry.value, 0x87);
        const unsigned nibble = priority && !priority->empty() ? (*priority)[0] & 0x0Fu : 0u;
        const unsigned rank = nibble == 0 ? 0x10u : nibble;  // 0: no priority given
        if (aid && (!best || rank < best_priority)) {
            best = aid;
            best_priority = rank;
        }
    }
    return best;
}

std::vector<Item> directory_entries(CardChannel& card, const Bytes& fci) {
    if (const auto sfi = find_tlv(fci, 0x88); sfi && !sfi->empty()) {
        const Bytes record = read_record(card, sfi->back(), 1);
        if (status_words(record) != 0x9000) return {};
        return entries(find_tlv(data_of(record), 0x70).value_or(Bytes{}));
    }
    return entries(find_tlv(fci, 0xBF0C).value_or(Bytes{}));
}

}  // namespace

Bytes ContactChannel::transceive(const Bytes& apdu) {
    Bytes response(1024);
    unsigned short length = 0;
    if (ICC_CommandExchange(icdev_, slot_, apdu.data(), static_cast<unsigned short>(apdu.size()), response.data(),
                            &length) != 0)
        return {};
    response.resize(length);
    return response;
}

Bytes ContactlessChannel::exchange(const Bytes& apdu) {
    Bytes response(300);
    unsigned short length = 0;
    if (ExchangePro(icdev_, apdu.data(), static_cast<unsigned short>(apdu.size()), response.data(), &length) != 0)
        return {};
    response.resize(length);
    return response;
}

Bytes ContactlessChannel::transceive(const Bytes& apdu) {
    Bytes response = exchange(apdu);
    if (response.size() == 2 && response[0] == 0x6C) {
        Bytes again = apdu;
        again.back() = response[1];
        response = exchange(again);
    }
    Bytes gathered;
    while (response.size() >= 2 && response[response.size() - 2] == 0x61) {
        const Bytes data = data_of(response);
        gathered.insert(gathered.end(), data.begin(), data.end());
        response = exchange({0x00, 0xC0, 0x00, 0x00, response.back()});
    }
    gathered.insert(gathered.end(), response.begin(), response.end());
    return gathered;
}

Reading reference_walk(CardChannel& card, const std::string& directory) {
    Reading reading;
    const Bytes directory_fci = select(card, Bytes(directory.begin(), directory.end()));
    std::optional<Bytes> aid;
    if (status_words(directory_fci) == 0x9000)
        aid = chosen_application(directory_entries(card, data_of(directory_fci)));

    const Bytes fci = select(card, aid.value_or(candidate_aid));
    if (status_words(fci) != 0x9000) return reading;
    Bytes gpo_data{0x83};
    const Bytes answer = pdol_answer(find_tlv(data_of(fci), 0x9F38).value_or(Bytes{}));
    gpo_data.push_back(static_cast<std::uint8_t>(answer.size()));
    gpo_data.insert(gpo_data.end(), answer.begin(), answer.end());
    Bytes gpo{0x80, 0xA8, 0x00, 0x00, static_cast<std::uint8_t>(gpo_data.size())};
    gpo.insert(gpo.end(), gpo_data.begin(), gpo_data.end());
    gpo.push_back(0x00);
    const Bytes options = card.transceive(gpo);
    if (status_words(options) != 0x9000) return reading;
    const Bytes reply = data_of(options);
    take(reply, reading);
    if (complete(reading)) return reading;

    Bytes afl;
    if (const auto format_1 = find_tlv(reply, 0x80); format_1 && format_1->size() >= 2)
        afl.assign(format_1->begin() + 2, format_1->end());
    else
        afl = find_tlv(reply, 0x94).value_or(Bytes{});
    for (std::size_t entry = 0; entry + 4 <= afl.size(); entry += 4)
        for (unsigned number = afl[entry + 1]; number <= afl[entry + 2]; ++number) {
            const Bytes record = read_record(card, afl[entry] >> 3, static_cast<std::uint8_t>(number));
            if (status_words(record) != 0x9000) continue;
            take(data_of(record), reading);
            if (complete(reading)) return reading;
        }
    return reading;
}

}  // namespace qz::test
