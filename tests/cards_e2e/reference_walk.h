// A careful reading of a bank card's PAN and holder's name, to set the number of
// APDUs the library spends beside what the card's data needs: it chooses the
// application by priority, answers the PDOL with the lengths the card asks for,
// reads format 1 and format 2 GPO replies by their tags, goes past a refused
// record, falls back to selecting by AID when there is no directory, and reads
// records only until it holds both the PAN and a name.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qz::test {

using Bytes = std::vector<std::uint8_t>;

// Sends one APDU and gives the card's whole answer, data and status words, after
// following its 61xx and 6Cxx answers.
class CardChannel {
public:
    virtual ~CardChannel() = default;
    virtual Bytes transceive(const Bytes& apdu) = 0;
};

// ICC_CommandExchange on a contact slot (it follows 61xx and 6Cxx itself).
class ContactChannel final : public CardChannel {
public:
    ContactChannel(int icdev, unsigned char slot) : icdev_(icdev), slot_(slot) {}
    Bytes transceive(const Bytes& apdu) override;

private:
    int icdev_;
    unsigned char slot_;
};

// ExchangePro to the card in the field, with GET RESPONSE and Le repeats done here.
class ContactlessChannel final : public CardChannel {
public:
    explicit ContactlessChannel(int icdev) : icdev_(icdev) {}
    Bytes transceive(const Bytes& apdu) override;

private:
    Bytes exchange(const Bytes& apdu);
    int icdev_;
};

struct Reading {
    std::string pan;            // digits
    std::optional<Bytes> name;  // 9F0B before 5F20
};

// Runs the reading on a freshly opened card; `directory` is "1PAY.SYS.DDF01" or "2PAY.SYS.DDF01".
Reading reference_walk(CardChannel& card, const std::string& directory);

}  // namespace qz::test
