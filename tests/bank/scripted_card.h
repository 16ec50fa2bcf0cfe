// A bank card behind the scripted terminal: it decodes the APDU of each request
// frame and answers like a card, from files that each test fills.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "support/payloads.h"

namespace qz::test {

// BER-TLV item with the shortest length form.
Bytes tlv(const Bytes& tag, const Bytes& value);
Bytes with_9000(const Bytes& data);
Bytes bytes_of(const std::string& text);

class ScriptedCard {
public:
    // Answers to SELECT by name (status words included); other names get 6A 82.
    std::map<Bytes, Bytes> selects;
    // Answer to GET PROCESSING OPTIONS.
    Bytes processing_options;
    // Answers to READ RECORD by (SFI, record); others get 6A 83.
    std::map<std::pair<int, int>, Bytes> records;

    // What the card was sent, in order.
    std::vector<Bytes> apdus;
    // Classes of the activation and deactivation requests, in order.
    std::vector<std::uint8_t> activations;
    std::vector<std::uint8_t> deactivations;

    // The reply frame to a request frame.
    Bytes respond(const Bytes& request);

private:
    Bytes answer(const Bytes& apdu) const;
};

}  // namespace qz::test
