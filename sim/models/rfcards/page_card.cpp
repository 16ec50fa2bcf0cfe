#include "sim/models/rfcards/page_card.h"

#include <algorithm>

#include "sim/core/status.h"

namespace qz::sim {
namespace {

constexpr std::uint8_t instruction_read = 0x46;
constexpr std::uint8_t instruction_write = 0x4C;
constexpr std::uint8_t instruction_authenticate = 0x4F;
constexpr std::uint8_t instruction_read_range = 0x50;
constexpr std::size_t pages_per_read = 4;
constexpr std::uint8_t cascade_tag = 0x88;

// Where a kind keeps its lock bits, secrets and protection settings.
struct Layout {
    std::size_t pages;
    std::size_t key_page;  // first page of the key or password
    std::size_t key_size;
    std::size_t secret_pages;  // pages from key_page on that read as zeros
    std::size_t auth0_page;    // byte 3 on an NTAG215, byte 0 on an Ultralight
    std::size_t auth0_byte;
    std::size_t read_guard_page;  // the bit that makes reads need authentication too
    std::size_t read_guard_byte;
    std::uint8_t read_guard_bit;
    bool read_guard_when_set;
    std::size_t lock_page;  // second lock page
};
constexpr Layout ultralight{48, 44, 16, 4, 42, 0, 43, 0, 0x01, false, 40};
constexpr Layout ntag215{135, 133, 4, 2, 131, 3, 132, 0, 0x80, true, 130};

const Layout& layout_of(PageCard::Kind kind) { return kind == PageCard::Kind::ultralight ? ultralight : ntag215; }

// A lock bit and the pages it locks.
struct LockBit {
    std::uint8_t page;
    std::uint8_t byte;
    std::uint8_t bit;
    std::uint8_t first;
    std::uint8_t last;
};
constexpr std::array<LockBit, 9> ultralight_locks{{
    {40, 0, 0x02, 16, 19}, {40, 0, 0x04, 20, 23}, {40, 0, 0x08, 24, 27},
    {40, 0, 0x20, 28, 31}, {40, 0, 0x40, 32, 35}, {40, 0, 0x80, 36, 39},
    {40, 1, 0x20, 42, 42}, {40, 1, 0x40, 43, 43}, {40, 1, 0x80, 44, 47},
}};
constexpr std::array<LockBit, 8> ntag215_locks{{
    {130, 0, 0x01, 16, 31}, {130, 0, 0x02, 32, 47}, {130, 0, 0x04, 48, 63},  {130, 0, 0x08, 64, 79},
    {130, 0, 0x10, 80, 95}, {130, 0, 0x20, 96, 111}, {130, 0, 0x40, 112, 127}, {130, 0, 0x80, 128, 129},
}};

// Bytes of a page that a write ORs in (lock bits, one-time bits); the others it ignores.
struct OnlySet {
    std::size_t page;
    std::uint8_t first_byte;
    std::uint8_t last_byte;
};
constexpr std::array<OnlySet, 2> common_only_set{{{2, 2, 3}, {3, 0, 3}}};

// Pages 0 and 1 are the UID; pages 2 and 3 bytes are settable only (see common_only_set).
constexpr std::size_t first_writable_page = 2;
constexpr std::size_t first_static_locked = 3;
constexpr std::size_t last_static_locked = 15;

}  // namespace

std::size_t PageCard::page_count(Kind kind) { return layout_of(kind).pages; }

std::vector<std::uint8_t> PageCard::factory_memory(Kind kind, std::span<const std::uint8_t, uid_size> uid) {
    const Layout& layout = layout_of(kind);
    std::vector<std::uint8_t> memory(layout.pages * page_size, 0);
    memory[0] = uid[0];
    memory[1] = uid[1];
    memory[2] = uid[2];
    memory[3] = static_cast<std::uint8_t>(cascade_tag ^ uid[0] ^ uid[1] ^ uid[2]);
    std::copy(uid.begin() + 3, uid.end(), memory.begin() + 4);
    memory[8] = static_cast<std::uint8_t>(uid[3] ^ uid[4] ^ uid[5] ^ uid[6]);
    // Nothing protected: AUTH0 beyond the last page.
    memory[layout.auth0_page * page_size + layout.auth0_byte] = 0xFF;
    if (kind == Kind::ntag215)
        std::fill_n(memory.begin() + static_cast<std::ptrdiff_t>(layout.key_page * page_size), layout.key_size, 0xFF);
    return memory;
}

PageCard::PageCard(Kind kind, std::span<const std::uint8_t, uid_size> uid, std::vector<std::uint8_t> memory)
    : kind_(kind), memory_(std::move(memory)) {
    std::copy(uid.begin(), uid.end(), uid_.begin());
}

std::vector<std::uint8_t> PageCard::serial() const {
    const std::size_t prefix = kind_ == Kind::ntag215 ? 1 : 0;
    std::vector<std::uint8_t> serial(prefix + uid_size, static_cast<std::uint8_t>(uid_size));
    std::reverse_copy(uid_.begin(), uid_.end(), serial.begin() + static_cast<std::ptrdiff_t>(prefix));
    return serial;
}

std::span<const std::uint8_t, PageCard::page_size> PageCard::page(std::size_t number) const {
    return std::span(memory_).subspan(number * page_size).first<page_size>();
}

std::optional<Reply> PageCard::handle(std::uint8_t instruction, std::span<const std::uint8_t> body) {
    // The Ultralight form has a zero in front of the page (or key length).
    const bool zero_form = !body.empty() && body[0] == 0;
    switch (instruction) {
        case instruction_read:
            if (body.size() == 2 && zero_form) return read(body[1], body[1] + pages_per_read - 1);
            if (body.size() == 1) return read(body[0], body[0] + pages_per_read - 1);
            return Reply::failure(status::wrong_length);
        case instruction_write:
            if (body.size() == 2 + page_size && zero_form) return write(body[1], body.subspan(2));
            if (body.size() == 1 + page_size) return write(body[0], body.subspan(1));
            return Reply::failure(status::wrong_length);
        case instruction_authenticate:
            if (zero_form && body.size() >= 2 && body[1] == body.size() - 2) return authenticate(body.subspan(2));
            if (body.size() == ntag215.key_size) return authenticate(body);
            return Reply::failure(status::wrong_length);
        case instruction_read_range:
            if (body.size() != 2) return Reply::failure(status::wrong_length);
            if (body[0] > body[1] || body[1] >= pages()) return Reply::failure(status::out_of_range);
            return read(body[0], body[1]);
        default:
            return std::nullopt;
    }
}

bool PageCard::locked(std::size_t number) const {
    if (number < first_writable_page) return true;
    if (number >= first_static_locked && number <= last_static_locked) {
        const std::size_t bit = number;  // page p: bit p of the 16-bit lock word in page 2 bytes 2 and 3
        const unsigned word = memory_[2 * page_size + 2] | memory_[2 * page_size + 3] << 8u;
        return (word >> bit & 1u) != 0;
    }
    const auto is_locked = [&](const LockBit& lock) {
        return number >= lock.first && number <= lock.last && (memory_[lock.page * page_size + lock.byte] & lock.bit);
    };
    return kind_ == Kind::ultralight ? std::ranges::any_of(ultralight_locks, is_locked)
                                     : std::ranges::any_of(ntag215_locks, is_locked);
}

bool PageCard::guarded(std::size_t number, bool reading) const {
    const Layout& layout = layout_of(kind_);
    if (authenticated_ || number < memory_[layout.auth0_page * page_size + layout.auth0_byte]) return false;
    if (!reading) return true;
    const bool bit = (memory_[layout.read_guard_page * page_size + layout.read_guard_byte] & layout.read_guard_bit) != 0;
    return bit == layout.read_guard_when_set;
}

Reply PageCard::read(std::size_t first, std::size_t last) const {
    if (first >= pages()) return Reply::failure(status::out_of_range);
    const Layout& layout = layout_of(kind_);
    std::vector<std::uint8_t> data;
    for (std::size_t at = first; at <= last; ++at) {
        const std::size_t number = at % pages();
        if (guarded(number, true)) return Reply::failure(status::code_required);
        const bool secret = number >= layout.key_page && number < layout.key_page + layout.secret_pages;
        const auto bytes = page(number);
        if (secret) data.insert(data.end(), page_size, 0);
        else data.insert(data.end(), bytes.begin(), bytes.end());
    }
    return ok_reply(std::move(data));
}

Reply PageCard::write(std::size_t number, std::span<const std::uint8_t> data) {
    if (number >= pages()) return Reply::failure(status::out_of_range);
    if (locked(number)) return Reply::failure(status::refused);
    if (guarded(number, false)) return Reply::failure(status::code_required);
    const Layout& layout = layout_of(kind_);
    auto target = memory_.begin() + static_cast<std::ptrdiff_t>(number * page_size);
    const auto only_set = std::ranges::find(common_only_set, number, &OnlySet::page);
    if (only_set != common_only_set.end()) {
        for (std::size_t i = only_set->first_byte; i <= only_set->last_byte; ++i) target[static_cast<std::ptrdiff_t>(i)] |= data[i];
    } else if (number == layout.lock_page) {
        // Lock bytes: 2 on an Ultralight, 3 on an NTAG215; the rest of the page stays.
        const std::size_t lock_bytes = kind_ == Kind::ultralight ? 2 : 3;
        for (std::size_t i = 0; i < lock_bytes; ++i) target[static_cast<std::ptrdiff_t>(i)] |= data[i];
    } else {
        std::ranges::copy(data, target);
    }
    return ok_reply();
}

Reply PageCard::authenticate(std::span<const std::uint8_t> key) {
    const Layout& layout = layout_of(kind_);
    const auto stored = std::span(memory_).subspan(layout.key_page * page_size, layout.key_size);
    authenticated_ = std::ranges::equal(stored, key);
    return authenticated_ ? ok_reply() : Reply::failure(status::authentication_failed);
}

}  // namespace qz::sim
