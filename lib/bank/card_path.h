// The two ways to a bank card, contactless and contact: their sessions, their APDU
// exchanges and what else differs between them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace qz::bank {

inline constexpr std::size_t work_area_size = 500;

// One of the walk's work areas: a card reply (status words included), a value or
// the PDOL answer. Nothing is ever put beyond its 500 bytes.
struct WorkArea {
    std::array<std::uint8_t, work_area_size> bytes{};
    std::size_t length = 0;

    std::span<const std::uint8_t> data() const { return std::span(bytes).first(length); }
};

struct PathTraits {
    std::string_view directory;      // name of the payment directory
    std::size_t gpo_apdu_capacity;   // room for the GET PROCESSING OPTIONS command
    bool directory_record_required;  // tag 88 and a directory record must be there
    bool reads_processing_options;   // Track 2 data and the name may stand in the GPO reply
    bool extended_name;              // tag 9F0B overrides 5F20
};

class CardPath {
public:
    virtual ~CardPath() = default;
    virtual const PathTraits& traits() const = 0;
    // Activates the card: 0 or the activation's status.
    virtual int open() = 0;
    // One APDU by the path's exchange operation, the reply into `reply` (empty on
    // failure): 0, a status, or status_reply_too_long for a reply over 500 bytes.
    virtual int exchange(std::span<const std::uint8_t> apdu, WorkArea& reply) = 0;
    virtual void close() noexcept = 0;
};

// The card in the contactless field, by OpenCard, ExchangePro and CloseCard.
class ContactlessPath final : public CardPath {
public:
    explicit ContactlessPath(int icdev) : icdev_(icdev) {}
    const PathTraits& traits() const override;
    int open() override;
    int exchange(std::span<const std::uint8_t> apdu, WorkArea& reply) override;
    void close() noexcept override;

private:
    int icdev_;
};

// The card in a contact slot, by ICC_PowerOn, ICC_CommandExchange and ICC_PowerOff.
class ContactPath final : public CardPath {
public:
    ContactPath(int icdev, unsigned slot) : icdev_(icdev), slot_(slot) {}
    const PathTraits& traits() const override;
    int open() override;
    int exchange(std::span<const std::uint8_t> apdu, WorkArea& reply) override;
    void close() noexcept override;

private:
    int icdev_;
    unsigned slot_;
};

}  // namespace qz::bank
