#include "sim/models/rfcards/sector_card.h"

#include <algorithm>
#include <limits>

#include "sim/core/status.h"

namespace qz::sim {
namespace {

constexpr std::size_t blocks_per_sector = 4;
constexpr std::size_t trailer_index = 3;
constexpr std::size_t key_size = 6;
constexpr std::size_t access_offset = 6;
constexpr std::size_t access_size = 4;  // three bytes of access bits and a free byte
constexpr std::size_t key_b_offset = 10;
constexpr std::size_t value_size = 4;
constexpr std::size_t address_offset = 12;
constexpr std::uint8_t key_a_command = 0x60;
constexpr std::uint8_t key_b_command = 0x61;

constexpr std::uint8_t instruction_authenticate = 0x5F;
constexpr std::uint8_t instruction_read = 0x46;
constexpr std::uint8_t instruction_write = 0x47;
constexpr std::uint8_t instruction_increment = 0x48;
constexpr std::uint8_t instruction_decrement = 0x49;
constexpr std::uint8_t instruction_restore = 0x4A;
constexpr std::uint8_t instruction_transfer = 0x4B;

constexpr std::array<std::uint8_t, access_size> transport_access{0xFF, 0x07, 0x80, 0x69};
constexpr std::array<std::uint8_t, 8> manufacturer_data{'Q', 'Z', '3', '2', 'S', 'I', 'M', '1'};
constexpr std::array<std::uint8_t, 2> atqa{0x04, 0x00};

// Who may: key A, key B, either, nobody.
enum Who : std::uint8_t { nobody = 0, key_a = 1, key_b = 2, either = 3 };

// Data blocks by their access condition C1C2C3: read, write, increment, and
// decrement with transfer and restore.
enum DataOperation : std::size_t { read_data, write_data, increment_value, decrement_value };
constexpr std::array<std::array<std::uint8_t, 4>, 8> data_rules{{
    {either, either, either, either},  // 000
    {either, nobody, nobody, either},  // 001
    {either, nobody, nobody, nobody},  // 010
    {key_b, key_b, nobody, nobody},    // 011
    {either, key_b, nobody, nobody},   // 100
    {key_b, nobody, nobody, nobody},   // 101
    {either, key_b, key_b, either},    // 110
    {nobody, nobody, nobody, nobody},  // 111
}};

// Trailers by their access condition: write key A, read and write the access
// bits, read and write key B.
enum TrailerOperation : std::size_t { write_key_a, read_access, write_access, read_key_b, write_key_b };
constexpr std::array<std::array<std::uint8_t, 5>, 8> trailer_rules{{
    {key_a, key_a, nobody, key_a, key_a},  // 000
    {key_a, key_a, key_a, key_a, key_a},   // 001
    {nobody, key_a, nobody, key_a, nobody},  // 010
    {key_b, either, key_b, nobody, key_b},   // 011
    {key_b, either, nobody, nobody, key_b},  // 100
    {nobody, either, key_b, nobody, nobody},  // 101
    {nobody, either, nobody, nobody, nobody},  // 110
    {nobody, either, nobody, nobody, nobody},  // 111
}};

// The access condition C1C2C3 of block `index` (0..3) of the sector.
unsigned condition(std::span<const std::uint8_t, SectorCard::block_size> trailer, std::size_t index) {
    const unsigned c1 = (trailer[7] >> (4 + index)) & 1u;
    const unsigned c2 = (trailer[8] >> index) & 1u;
    const unsigned c3 = (trailer[8] >> (4 + index)) & 1u;
    return c1 << 2 | c2 << 1 | c3;
}

// Each condition bit is kept once plainly and once inverted; a card takes no other.
bool access_bits_valid(std::span<const std::uint8_t> bits) {
    const auto inverted = [](unsigned nibble) { return ~nibble & 0x0Fu; };
    return (bits[0] & 0x0Fu) == inverted(bits[1] >> 4) && (bits[0] >> 4) == inverted(bits[2] & 0x0Fu) &&
           (bits[1] & 0x0Fu) == inverted(bits[2] >> 4);
}

bool may(std::uint8_t who, bool with_key_b) { return (who & (with_key_b ? key_b : key_a)) != 0; }

}  // namespace

SectorCard::Memory SectorCard::factory_memory(std::span<const std::uint8_t, 4> uid) {
    Memory memory{};
    auto first = std::copy(uid.begin(), uid.end(), memory.begin());
    *first++ = static_cast<std::uint8_t>(uid[0] ^ uid[1] ^ uid[2] ^ uid[3]);
    *first++ = type_byte;
    first = std::copy(atqa.begin(), atqa.end(), first);
    std::copy(manufacturer_data.begin(), manufacturer_data.end(), first);
    for (std::size_t trailer = trailer_index; trailer < block_count; trailer += blocks_per_sector) {
        auto bytes = memory.begin() + static_cast<std::ptrdiff_t>(trailer * block_size);
        std::fill_n(bytes, block_size, 0xFF);
        std::copy(transport_access.begin(), transport_access.end(), bytes + access_offset);
    }
    return memory;
}

SectorCard::SectorCard(std::span<const std::uint8_t, 4> uid, const Memory& memory) : memory_(memory) {
    std::copy(uid.begin(), uid.end(), uid_.begin());
}

void SectorCard::power_cycle() {
    authenticated_.reset();
    pending_.reset();
}

std::span<const std::uint8_t, SectorCard::block_size> SectorCard::block(std::size_t number) const {
    return std::span(memory_).subspan(number * block_size).first<block_size>();
}

std::span<std::uint8_t, SectorCard::block_size> SectorCard::block_mut(std::size_t number) {
    return std::span(memory_).subspan(number * block_size).first<block_size>();
}

std::optional<Reply> SectorCard::handle(std::uint8_t instruction, std::span<const std::uint8_t> body) {
    Arguments arguments(body);
    if (arguments.byte() != 0) return Reply::failure(status::out_of_range);
    if (instruction == instruction_authenticate) return authenticate(arguments);
    const std::size_t number = arguments.byte();
    std::optional<Reply> reply;
    switch (instruction) {
        case instruction_read:
            arguments.finish();
            reply = number < block_count ? read(number) : Reply::failure(status::out_of_range);
            break;
        case instruction_write: {
            const auto data = arguments.take(block_size);
            arguments.finish();
            reply = number < block_count ? write(number, data) : Reply::failure(status::out_of_range);
            break;
        }
        case instruction_increment:
        case instruction_decrement: {
            const auto v = arguments.take(value_size);
            const std::int64_t amount = v[0] | v[1] << 8 | v[2] << 16 | static_cast<std::uint32_t>(v[3]) << 24;
            arguments.finish();
            reply = instruction == instruction_increment ? change(number, amount, increment_value)
                                                         : change(number, -amount, decrement_value);
            break;
        }
        case instruction_restore:
            arguments.finish();
            reply = change(number, 0, decrement_value);
            break;
        case instruction_transfer:
            arguments.finish();
            reply = transfer(number);
            break;
        default:
            break;
    }
    return reply;
}

Reply SectorCard::authenticate(Arguments& arguments) {
    const std::uint8_t which = arguments.byte();
    const std::size_t sector = arguments.byte();
    const auto key = arguments.take(key_size);
    arguments.finish();
    if ((which != key_a_command && which != key_b_command) || sector >= block_count / blocks_per_sector)
        return Reply::failure(status::out_of_range);
    const auto trailer = block(sector * blocks_per_sector + trailer_index);
    const auto stored = trailer.subspan(which == key_a_command ? 0 : key_b_offset, key_size);
    if (!std::ranges::equal(stored, key)) {
        authenticated_.reset();
        return Reply::failure(status::authentication_failed);
    }
    authenticated_ = Authenticated{sector, which == key_a_command ? Key::a : Key::b};
    return ok_reply();
}

std::uint16_t SectorCard::allowed(std::size_t number, std::size_t operation) const {
    if (!authenticated_ || authenticated_->sector != number / blocks_per_sector) return status::code_required;
    const auto trailer = block(number / blocks_per_sector * blocks_per_sector + trailer_index);
    const bool with_key_b = authenticated_->key == Key::b;
    // A key B that can be read is data, not a key: the card refuses access with it.
    const bool key_b_readable = trailer_rules[condition(trailer, trailer_index)][read_key_b] != nobody;
    if (with_key_b && key_b_readable) return status::refused;
    return may(data_rules[condition(trailer, number % blocks_per_sector)][operation], with_key_b) ? status::ok
                                                                                                   : status::refused;
}

Reply SectorCard::read(std::size_t number) const {
    if (number % blocks_per_sector != trailer_index) {
        const auto verdict = allowed(number, read_data);
        if (verdict != status::ok) return Reply::failure(verdict);
        return ok_reply_of(block(number));
    }
    if (!authenticated_ || authenticated_->sector != number / blocks_per_sector)
        return Reply::failure(status::code_required);
    const auto trailer = block(number);
    const auto& rules = trailer_rules[condition(trailer, trailer_index)];
    const bool with_key_b = authenticated_->key == Key::b;
    std::vector<std::uint8_t> shown(block_size, 0);  // key A never shows
    if (may(rules[read_access], with_key_b))
        std::copy_n(trailer.begin() + access_offset, access_size, shown.begin() + access_offset);
    if (may(rules[read_key_b], with_key_b))
        std::copy_n(trailer.begin() + key_b_offset, key_size, shown.begin() + key_b_offset);
    return ok_reply(std::move(shown));
}

Reply SectorCard::write(std::size_t number, std::span<const std::uint8_t> data) {
    if (number == 0) return Reply::failure(status::refused);
    if (number % blocks_per_sector != trailer_index) {
        const auto verdict = allowed(number, write_data);
        if (verdict != status::ok) return Reply::failure(verdict);
        std::ranges::copy(data, block_mut(number).begin());
        return ok_reply();
    }
    if (!authenticated_ || authenticated_->sector != number / blocks_per_sector)
        return Reply::failure(status::code_required);
    auto trailer = block_mut(number);
    const auto& rules = trailer_rules[condition(trailer, trailer_index)];
    const bool with_key_b = authenticated_->key == Key::b;
    const bool new_access = may(rules[write_access], with_key_b);
    // Access bits that contradict themselves would lock the sector for good.
    if (new_access && !access_bits_valid(data.subspan(access_offset, 3))) return Reply::failure(status::wrong_data);
    const bool new_key_a = may(rules[write_key_a], with_key_b);
    const bool new_key_b = may(rules[write_key_b], with_key_b);
    if (!new_access && !new_key_a && !new_key_b) return Reply::failure(status::refused);
    // Each part is written where the access bits allow it and kept elsewhere.
    if (new_key_a) std::copy_n(data.begin(), key_size, trailer.begin());
    if (new_access) std::copy_n(data.begin() + access_offset, access_size, trailer.begin() + access_offset);
    if (new_key_b) std::copy_n(data.begin() + key_b_offset, key_size, trailer.begin() + key_b_offset);
    return ok_reply();
}

std::optional<std::int32_t> SectorCard::value_of(std::size_t number) const {
    const auto bytes = block(number);
    for (std::size_t i = 0; i < value_size; ++i)
        if (bytes[i] != bytes[8 + i] || bytes[i] != static_cast<std::uint8_t>(~bytes[4 + i])) return std::nullopt;
    const auto address = bytes.subspan(address_offset);
    if (address[0] != address[2] || address[1] != address[3] || address[0] != static_cast<std::uint8_t>(~address[1]))
        return std::nullopt;
    return static_cast<std::int32_t>(bytes[0] | bytes[1] << 8 | bytes[2] << 16 |
                                     static_cast<std::uint32_t>(bytes[3]) << 24);
}

Reply SectorCard::change(std::size_t number, std::int64_t amount, std::size_t operation) {
    if (number >= block_count || number % blocks_per_sector == trailer_index)
        return Reply::failure(status::out_of_range);
    const auto verdict = allowed(number, operation);
    if (verdict != status::ok) return Reply::failure(verdict);
    const auto value = value_of(number);
    if (!value) return Reply::failure(status::wrong_data);
    const std::int64_t result = *value + amount;
    if (result > std::numeric_limits<std::int32_t>::max() || result < std::numeric_limits<std::int32_t>::min())
        return Reply::failure(status::refused);
    pending_ = Pending{static_cast<std::int32_t>(result), block(number)[address_offset]};
    return ok_reply();
}

Reply SectorCard::transfer(std::size_t number) {
    if (number >= block_count || number % blocks_per_sector == trailer_index || number == 0)
        return Reply::failure(status::out_of_range);
    const auto verdict = allowed(number, decrement_value);
    if (verdict != status::ok) return Reply::failure(verdict);
    if (!pending_) return Reply::failure(status::refused);
    auto bytes = block_mut(number);
    const auto value = static_cast<std::uint32_t>(pending_->value);
    for (std::size_t i = 0; i < value_size; ++i) {
        const auto byte = static_cast<std::uint8_t>(value >> (8 * i));
        bytes[i] = bytes[8 + i] = byte;
        bytes[4 + i] = static_cast<std::uint8_t>(~byte);
    }
    bytes[address_offset] = bytes[address_offset + 2] = pending_->address;
    bytes[address_offset + 1] = bytes[address_offset + 3] = static_cast<std::uint8_t>(~pending_->address);
    pending_.reset();
    return ok_reply();
}

}  // namespace qz::sim
