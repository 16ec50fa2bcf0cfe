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

Bytes ScriptedCard::answer(const Bytes& apdu) {
    Bytes reply{0x6D, 0x00};
    switch (apdu.at(1)) {
        case 0xC0:
            if (pending_.empty()) return {0x69, 0x85};
            return with_9000(std::exchange(pending_, {}));
        case 0xA4: {
            const auto found = selects.find(Bytes(apdu.begin() + 5, apdu.begin() + 5 + apdu.at(4)));
            reply = found == selects.end() ? Bytes{0x6A, 0x82} : found->second;
            break;
        }
        case 0xA8:
            reply = processing_options;
            break;
        case 0xB2: {
            const auto found = records.find({apdu.at(3) >> 3, apdu.at(2)});
            if (found == records.end()) return {0x6A, 0x83};
            reply = found->second;
            if (wants_exact_length && apdu.at(4) == 0 && reply.size() > 2)
                return {0x6C, static_cast<std::uint8_t>(reply.size() - 2)};
            break;
        }
    }
    const bool good = reply.size() > 2 && reply[reply.size() - 2] == 0x90 && reply.back() == 0x00;
    if (!announces_data || !good) return reply;
    pending_.assign(reply.begin(), reply.end() - 2);
    return {0x61, static_cast<std::uint8_t>(pending_.size())};
}

}  // namespace qz::test
