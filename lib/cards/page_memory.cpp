#include "cards/page_memory.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace qz::cards::pages {
namespace {

// Lock page 2 holds a bit a page for pages 3 to 15; lock page 40 holds bits for
// blocks of pages from 16 on.
constexpr std::uint8_t first_page_lock_page = 2;
constexpr std::uint8_t block_lock_page = 40;

struct LockRange {
    std::uint8_t first;
    std::uint8_t last;
    LockBit bit;
};
constexpr std::array<LockRange, 9> block_locks{{
    {16, 19, {block_lock_page, 0, 0x02}},
    {20, 23, {block_lock_page, 0, 0x04}},
    {24, 27, {block_lock_page, 0, 0x08}},
    {28, 31, {block_lock_page, 0, 0x20}},
    {32, 35, {block_lock_page, 0, 0x40}},
    {36, 39, {block_lock_page, 0, 0x80}},
    {42, 42, {block_lock_page, 1, 0x20}},
    {43, 43, {block_lock_page, 1, 0x40}},
    {44, 47, {block_lock_page, 1, 0x80}},
}};

constexpr int init_authentication_failed = -1;
constexpr int init_password_failed = -2;
constexpr int init_text_failed = -3;
constexpr int init_lock_failed = -4;
constexpr int init_text_too_long = -5;

}  // namespace

std::optional<LockBit> lock_bit(std::uint8_t page) {
    if (page >= 3 && page <= 7) return LockBit{first_page_lock_page, 2, static_cast<std::uint8_t>(1u << page)};
    if (page >= 8 && page <= 15) return LockBit{first_page_lock_page, 3, static_cast<std::uint8_t>(1u << (page - 8))};
    for (const LockRange& range : block_locks)
        if (page >= range.first && page <= range.last) return range.bit;
    return std::nullopt;
}

int ntag_write_page(int icdev, std::uint8_t page, const std::uint8_t* data) {
    return run(icdev, ntag_write, Arguments{page}.add(data, page_size), nullptr);
}

int personalise(int icdev, const std::uint8_t* key, const char* text) {
    if (run(icdev, ntag_authenticate, Arguments{}.add(factory_password.data(), page_size), nullptr) != 0)
        return init_authentication_failed;
    if (ntag_write_page(icdev, password_page, key) != 0) return init_password_failed;
    const std::size_t length = strnlen(text, base_info_size + 1);
    if (length > base_info_size) return init_text_too_long;
    // The last page is filled with zeros behind the end of the text.
    for (std::size_t offset = 0; offset < length; offset += page_size) {
        std::array<std::uint8_t, page_size> chunk{};
        std::copy_n(text + offset, std::min(page_size, length - offset), chunk.begin());
        const auto page = static_cast<std::uint8_t>(base_info_first_page + offset / page_size);
        if (ntag_write_page(icdev, page, chunk.data()) != 0) return init_text_failed;
    }
    if (ntag_write_page(icdev, dynamic_lock_page, dynamic_lock_bytes.data()) != 0) return init_lock_failed;
    return 0;
}

int read_base_info(int icdev, std::uint8_t* out) {
    std::vector<std::uint8_t> reply;
    const int result =
        run_for_reply(icdev, ntag_read_pages, {base_info_first_page, base_info_last_page}, reply);
    if (result != 0) return result;
    const auto end = std::find(reply.begin(), reply.begin() + static_cast<std::ptrdiff_t>(std::min(reply.size(), base_info_size)), 0);
    *std::copy(reply.begin(), end, out) = 0;
    return 0;
}

int activate_any(int icdev, std::uint8_t mode, std::uint8_t* type, std::uint8_t* uid, std::uint8_t* ats,
                 std::uint8_t* ats_length) {
    *ats_length = 0;
    std::vector<std::uint8_t> reply;
    const int result = run_for_reply(icdev, activate, {mode}, reply);
    if (result != 0) return result;
    // Type, UID length, UID, answer length, answer: a length that runs past the end is refused.
    if (reply.size() < 2 || reply.size() < 3u + reply[1]) return link::status_reply_too_short;
    const std::size_t uid_length = reply[1];
    const std::size_t answer_length = reply[2 + uid_length];
    if (reply.size() < 3 + uid_length + answer_length) return link::status_reply_too_short;
    *type = reply[0];
    std::copy_n(reply.begin() + 2, uid_length, uid);
    std::copy_n(reply.begin() + 3 + static_cast<std::ptrdiff_t>(uid_length), answer_length, ats);
    *ats_length = static_cast<std::uint8_t>(answer_length);
    return 0;
}

}  // namespace qz::cards::pages
