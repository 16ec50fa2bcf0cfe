// A microprocessor card: what a reader learns when it activates the card, and
// the transmission of APDUs, whose rules decide how the response data of the
// card's application goes back (at once, or behind 61xx for GET RESPONSE).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "sim/models/cards/apdu.h"

namespace qz::sim {

// How a card hands out response data.
enum class ResponseRules {
    // T=0: Le is not sent with command data, so a command with data that has an
    // answer gets 61xx and the answer waits for GET RESPONSE; a command without
    // data must ask for the exact length (6Cxx names it), or for less (the rest
    // waits behind 61xx).
    t0,
    // T=1 and ISO 14443-4: the data comes with the answer as far as Le allows; what
    // is left (all of it when Le is absent) waits behind 61xx.
    direct,
};

// The logic of the card behind the transmission.
class CardApplication {
public:
    virtual ~CardApplication() = default;
    virtual CardResponse process(const Apdu& apdu) = 0;
    // A new activation: back to the state after reset.
    virtual void reset() = 0;
};

// What an activation reports: the answer to reset in a contact slot, the UID,
// the answer to select and the SAK in the contactless field.
struct CardFace {
    std::vector<std::uint8_t> atr;
    std::vector<std::uint8_t> uid;
    std::vector<std::uint8_t> ats;
    std::uint8_t sak = 0x20;  // ISO 14443-4 compliant
};

class Iso7816Card {
public:
    // `chunk`: the most a card hands out per GET RESPONSE (1 to 256); 61xx
    // announces no more than that, so longer answers come in a chain.
    Iso7816Card(CardFace face, ResponseRules rules, std::size_t chunk, std::unique_ptr<CardApplication> application);

    const CardFace& face() const { return face_; }
    ResponseRules rules() const { return rules_; }

    // The card is activated (again): the application resets, waiting data is lost.
    void reset();
    // One command APDU in, the response data and status words out.
    std::vector<std::uint8_t> transmit(std::span<const std::uint8_t> apdu);

    // The most recent command APDUs received (recent_history_limit), in order,
    // GET RESPONSE included.
    const std::vector<std::vector<std::uint8_t>>& received() const { return received_; }

private:
    std::vector<std::uint8_t> deliver(const Apdu& apdu, CardResponse response);
    std::vector<std::uint8_t> get_response(const Apdu& apdu);
    // Takes `count` waiting bytes and ends them with the final status, or 61xx
    // when more is waiting.
    std::vector<std::uint8_t> hand_out(std::size_t count);
    std::size_t announced() const;

    CardFace face_;
    ResponseRules rules_;
    std::size_t chunk_;
    std::unique_ptr<CardApplication> application_;
    std::vector<std::uint8_t> waiting_;
    std::uint16_t waiting_sw_ = card_sw::success;
    std::vector<std::vector<std::uint8_t>> received_;
};

}  // namespace qz::sim
