// A card of 4-byte pages with a 7-byte UID: an Ultralight-class card (48 pages,
// 16-byte key in pages 44..47) or an NTAG215 (135 pages, 4-byte password in page
// 133). Pages 0 and 1 hold the UID and are never written; lock bits and the
// one-time page only ever gain bits; a page whose lock bit is set refuses writes;
// from the first protected page (AUTH0) on, writes (and reads, where configured)
// need an authentication since power came.
//
// Commands take either form: a zero and then the page (as Ultralight readers
// send them) or the page at once (as NTAG readers send them).
//
//   C1 46 [00] p         read 4 pages from p (16 bytes, from page 0 again past the end)
//   C1 4C [00] p data    write 4 bytes to page p
//   C1 4F 00 n key       authenticate with the n-byte key; C1 4F pwd: with the password
//   C1 50 f l            read pages f..l
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "sim/models/rfcards/field_card.h"

namespace qz::sim {

class PageCard final : public FieldCard {
public:
    enum class Kind { ultralight, ntag215 };
    static constexpr std::size_t page_size = 4;
    static constexpr std::size_t uid_size = 7;

    static std::size_t page_count(Kind kind);
    // The memory of a new card: UID and check bytes, nothing locked, nothing protected.
    static std::vector<std::uint8_t> factory_memory(Kind kind, std::span<const std::uint8_t, uid_size> uid);

    // `memory` holds page_count(kind) pages.
    PageCard(Kind kind, std::span<const std::uint8_t, uid_size> uid, std::vector<std::uint8_t> memory);

    static constexpr std::uint8_t type_byte = 0x00;

    std::span<const std::uint8_t> uid() const override { return uid_; }
    std::uint8_t sak() const override { return type_byte; }
    // The UID last byte first; an NTAG215 puts its length in front.
    std::vector<std::uint8_t> serial() const override;
    void power_cycle() override { authenticated_ = false; }
    std::optional<Reply> handle(std::uint8_t instruction, std::span<const std::uint8_t> body) override;

    std::span<const std::uint8_t, page_size> page(std::size_t number) const;

private:
    Reply read(std::size_t first, std::size_t last) const;
    Reply write(std::size_t number, std::span<const std::uint8_t> data);
    Reply authenticate(std::span<const std::uint8_t> key);
    bool locked(std::size_t number) const;
    bool guarded(std::size_t number, bool reading) const;
    std::size_t pages() const { return memory_.size() / page_size; }

    Kind kind_;
    std::array<std::uint8_t, uid_size> uid_;
    std::vector<std::uint8_t> memory_;
    bool authenticated_ = false;
};

}  // namespace qz::sim
