#include "scripted_card.h"

namespace qz::test {

Bytes tlv(const Bytes& tag, const Bytes& value) {
    Bytes item = tag;
    const std::size_t n = value.size();
    if (n >= 0x100) item.insert(item.end(), {0x82, static_cast<std::uint8_t>(n >> 8), static_cast<std::uint8_t>(n)});
    else if (n >= 0x80) item.insert(item.end(), {0x81, static_cast<std::uint8_t>(n)});
    else item.push_back(static_cast<std::uint8_t>(n));
    item.insert(item.end(), value.begin(), value.end());
    return item;
}

Bytes with_9000(const Bytes& data) { return concat({data, {0x90, 0x00}}); }

Bytes bytes_of(const std::string& text) { return Bytes(text.begin(), text.end()); }

Bytes ScriptedCard::respond(const Bytes& request) {
    const Bytes payload(request.begin() + 3, request.end() - 2);
    switch (payload.at(1)) {
        case 0x30:
            activations.push_back(payload[0]);
            if (payload[0] == 0xC1) return make_reply(0, {0x00, 0x04, 0x11, 0x22, 0x33, 0x44, 0x02, 0x05, 0x78});
            return make_reply(0, {0x3B, 0x6E, 0x00, 0x00});
        case 0x31: {
            const Bytes apdu(payload.begin() + 3, payload.end());
            apdus.push_back(apdu);
            return make_reply(0, answer(apdu));
        }
        default:
            deactivations.push_back(payload[0]);
            return make_reply(0);
    }
}

Bytes ScriptedCard::answer(const Bytes& apdu) const {
    switch (apdu.at(1)) {
        case 0xA4: {
            const auto found = selects.find(Bytes(apdu.begin() + 5, apdu.begin() + 5 + apdu.at(4)));
            return found == selects.end() ? Bytes{0x6A, 0x82} : found->second;
        }
        case 0xA8:
            return processing_options;
        case 0xB2: {
            const auto found = records.find({apdu.at(3) >> 3, apdu.at(2)});
            return found == records.end() ? Bytes{0x6A, 0x83} : found->second;
        }
    }
    return {0x6D, 0x00};
}

}  // namespace qz::test
