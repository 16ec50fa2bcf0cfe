// AT88SC1604: 2007 bytes in one numbering: the common area 0..20 (its security code
// at 10), four user zones each headed by a 2-byte security code and a 2-byte erase
// key, and a tail 2005..2006. Every code has 4 tries. A write only clears bits; an
// erase sets bytes to FF. Addresses and lengths come high byte first.
//
//   C0 90 00 a a l l           read (always allowed)
//   C0 91 00 a a l l data      write within one zone: that zone's code presented (the
//                              common area and the tail: the common code); the common
//                              area takes none after personalisation
//   C0 92 00 z a a l l data    write a code, z 0..8: its zone's code presented
//   C0 93 00 z a a l l         erase within one zone, z 0..8: the zone's code presented
//                              and, past a user zone's head, its erase key too
//   C0 94 00 z a a 00 02 code  present the security code of zone z (0..4) at a
//   C0 95 00 z a a 00 02 key   present the erase key of user zone z (1..4) at a
//   C0 96 00 v                 set the fake fuse to v (0 or 1)
//   C0 97 00                   personalise (the common code presented)
#include <algorithm>
#include <array>

#include "sim/core/status.h"
#include "sim/models/memcards/chips.h"

namespace qz::sim {
namespace {

constexpr std::size_t memory_size = 2007;
constexpr std::size_t code_length = 2;
constexpr unsigned tries = 4;
constexpr std::uint8_t highest_code_selector = 8;
const std::vector<std::uint8_t> default_answer{0x16, 0x04, 0x10, 0x00};

struct Zone {
    std::size_t first;
    std::size_t head_end;  // the first address past the zone's codes
    std::size_t last;
    std::size_t code_at;
    std::size_t key_at;  // 0: no erase key
};
constexpr std::array<Zone, 6> zones{{{0, 0, 20, 10, 0},
                                     {21, 27, 1221, 21, 24},
                                     {1222, 1227, 1482, 1222, 1224},
                                     {1483, 1488, 1743, 1483, 1485},
                                     {1744, 1749, 2004, 1744, 1746},
                                     {2005, 2005, 2006, 10, 0}}};
constexpr std::size_t user_zones = 4;
constexpr std::size_t tail_zone = 5;

enum Instruction : std::uint8_t {
    read = 0x90,
    write = 0x91,
    code_write = 0x92,
    erase = 0x93,
    code_check = 0x94,
    key_check = 0x95,
    fake_fuse = 0x96,
    personalise = 0x97,
};

// The zone that holds all of [address, address + length); nothing when none does.
std::optional<std::size_t> zone_of(std::size_t address, std::size_t length) {
    for (std::size_t z = 0; z < zones.size(); ++z)
        if (address >= zones[z].first && length >= 1 && address + length <= zones[z].last + 1) return z;
    return std::nullopt;
}

class At88sc1604 final : public MemoryChip {
public:
    explicit At88sc1604(const ChipConfig& config) : answer_(config.answer.value_or(default_answer)) {
        memory_.fill(0xFF);
        apply_writes(config, memory_);
        const unsigned left = configured_tries(config, tries);
        for (std::size_t z = 0; z <= user_zones; ++z) codes_.push_back({stored(zones[z].code_at), tries, left});
    }

    std::vector<std::uint8_t> answer() const override { return answer_; }
    void power_up() override {
        for (GuardCode& code : codes_) code.close();
        key_open_ = {};
    }

    std::optional<Reply> handle(std::uint8_t instruction, Arguments& arguments) override {
        switch (instruction) {
            case read:
            case write:
                return transfer(instruction, arguments);
            case code_write:
            case erase:
            case code_check:
            case key_check:
                return zone_command(instruction, arguments);
            case fake_fuse: {
                const std::uint8_t value = arguments.byte();
                arguments.finish();
                if (value > 1) return Reply::failure(status::out_of_range);
                return ok_reply();
            }
            case personalise:
                arguments.finish();
                if (!codes_[0].open()) return Reply::failure(status::code_required);
                personalised_ = true;
                return ok_reply();
            default:
                return std::nullopt;
        }
    }

private:
    std::vector<std::uint8_t> stored(std::size_t at) const {
        return {memory_.begin() + static_cast<std::ptrdiff_t>(at),
                memory_.begin() + static_cast<std::ptrdiff_t>(at + code_length)};
    }

    // The code guarding a zone: the tail shares the common area's.
    GuardCode& guard(std::size_t zone) { return codes_[zone == tail_zone ? 0 : zone]; }

    Reply transfer(std::uint8_t instruction, Arguments& arguments) {
        const std::size_t address = arguments.high_first();
        const std::size_t length = arguments.high_first();
        const auto zone = zone_of(address, length);
        if (!zone) return Reply::failure(status::out_of_range);
        const auto data = arguments.take(instruction == write ? length : 0);
        arguments.finish();
        if (instruction == read) return ok_reply_of(std::span(memory_).subspan(address, length));
        if (!guard(*zone).open()) return Reply::failure(status::code_required);
        if (*zone == 0 && personalised_) return Reply::failure(status::refused);
        clear_bits(address, data);
        return ok_reply();
    }

    Reply zone_command(std::uint8_t instruction, Arguments& arguments) {
        const std::size_t selector = arguments.byte();
        const std::size_t address = arguments.high_first();
        const std::size_t length = arguments.high_first();
        const auto zone = zone_of(address, length);
        const auto data = arguments.take(instruction == erase ? 0 : length);
        arguments.finish();
        if (selector > highest_code_selector || !zone) return Reply::failure(status::out_of_range);
        switch (instruction) {
            case code_check:
                if (selector > user_zones || address != zones[selector].code_at) return Reply::failure(status::out_of_range);
                codes_[selector].store(stored(address));  // a code write may have changed it
                return Reply::failure(codes_[selector].present(data));
            case key_check:
                if (selector < 1 || selector > user_zones || address != zones[selector].key_at)
                    return Reply::failure(status::out_of_range);
                key_open_[selector - 1] = std::ranges::equal(data, stored(address));
                return Reply::failure(key_open_[selector - 1] ? status::ok : status::wrong_data);
            case code_write:
                if (!guard(*zone).open()) return Reply::failure(status::code_required);
                clear_bits(address, data);
                return ok_reply();
            default: {  // erase
                const bool past_head = address + length > zones[*zone].head_end;
                const bool user_zone = *zone >= 1 && *zone <= user_zones;
                if (!guard(*zone).open() || (user_zone && past_head && !key_open_[*zone - 1]))
                    return Reply::failure(status::code_required);
                std::fill_n(memory_.begin() + static_cast<std::ptrdiff_t>(address), length, 0xFF);
                return ok_reply();
            }
        }
    }

    void clear_bits(std::size_t address, std::span<const std::uint8_t> data) {
        for (std::size_t i = 0; i < data.size(); ++i) memory_[address + i] &= data[i];
    }

    std::vector<std::uint8_t> answer_;
    std::array<std::uint8_t, memory_size> memory_{};
    std::vector<GuardCode> codes_;  // the common area's, then the user zones'
    std::array<bool, user_zones> key_open_{};
    bool personalised_ = false;
};

}  // namespace

std::unique_ptr<MemoryChip> make_at88sc1604(const ChipConfig& config) { return std::make_unique<At88sc1604>(config); }

}  // namespace qz::sim
