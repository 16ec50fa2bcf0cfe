// AT88SC102: a 2-byte security code with 4 tries, two 64-byte zones with 6-byte
// erase keys, an issuer and a protect area of 8 bytes, fuses. A write only clears
// bits (new = old AND data); an erase sets a whole zone to FF. Everything but the
// reads of unprotected zones and the counters needs the security code presented.
//
//   C0 60|61 00 code         present | change the security code
//   C0 62 00                 the security code
//   C0 63|64 00 key          present the erase key of zone 1 | 2
//   C0 65|66 00 key          change the erase key of zone 1 | 2
//   C0 67|68 00              the erase key of zone 1 | 2
//   C0 69 00, C0 6A 00       tries left of the code; erases left of zone 2 (one byte)
//   C0 6B..6E 00             clear protection selector 1..4 for good: 1 zone 1 takes no
//                            writes, 2 zone 1 reads need the code, 3 and 4 the same for zone 2
//   C0 6F|70 00 o l          read l bytes at o of zone 1 | 2 (o + l at most 64)
//   C0 71 00                 erase zone 1 (its erase key presented)
//   C0 72 00                 erase zone 2 (its erase key presented); with the EC2EN fuse
//                            blown each erase counts down from 128 and none is left at 0
//   C0 73 00                 erase zone 2 while the issuer fuse is intact, by the code alone
//   C0 74|75 00              set | clear the Anafuse flag (the code presented)
//   C0 76|77 00 o l data     write zone 1 | 2 (clearing bits)
//   C0 78 00 o l data        write zone 2 whole bytes, while the issuer fuse is intact
//   C0 79|7A 00              blow the issuer | EC2EN fuse
//   C0 7B 00                 the card's answer (its type code)
//   C0 7C|7E 00 data         write the issuer area (issuer fuse intact) | protect area
//   C0 7D|7F 00              read the issuer | protect area
#include <algorithm>
#include <array>

#include "sim/core/status.h"
#include "sim/models/memcards/chips.h"

namespace qz::sim {
namespace {

constexpr std::size_t zone_size = 64;
constexpr std::size_t area_size = 8;
constexpr std::size_t issuer_at = 2 * zone_size;
constexpr std::size_t protect_at = issuer_at + area_size;
constexpr std::size_t memory_size = protect_at + area_size;
constexpr std::size_t code_length = 2;
constexpr std::size_t key_length = 6;
constexpr unsigned tries = 4;
constexpr std::uint8_t zone2_erases = 128;
const std::vector<std::uint8_t> default_answer{0x31, 0x3A, 0x10, 0x02};

enum Instruction : std::uint8_t {
    code_check = 0x60,
    code_change = 0x61,
    code_read = 0x62,
    key1_check = 0x63,
    key2_check = 0x64,
    key1_change = 0x65,
    key2_change = 0x66,
    key1_read = 0x67,
    key2_read = 0x68,
    tries_read = 0x69,
    erases_read = 0x6A,
    selector1_clear = 0x6B,
    selector4_clear = 0x6E,
    zone1_read = 0x6F,
    zone2_read = 0x70,
    zone1_erase = 0x71,
    zone2_erase = 0x72,
    zone2_issuer_erase = 0x73,
    anafuse_set = 0x74,
    anafuse_clear = 0x75,
    zone1_write = 0x76,
    zone2_write = 0x77,
    zone2_issuer_write = 0x78,
    issuer_fuse_blow = 0x79,
    ec2en_fuse_blow = 0x7A,
    answer_read = 0x7B,
    issuer_write = 0x7C,
    issuer_read = 0x7D,
    protect_write = 0x7E,
    protect_read = 0x7F,
};

// Protection selectors, cleared for good: what each one shuts.
enum Selector : std::size_t { zone1_no_writes, zone1_read_needs_code, zone2_no_writes, zone2_read_needs_code };

class At88sc102 final : public MemoryChip {
public:
    explicit At88sc102(const ChipConfig& config)
        : answer_(config.answer.value_or(default_answer)),
          code_(configured_code(config, code_length), tries, configured_tries(config, tries)),
          issuer_fuse_(config.issuer_fuse),
          ec2en_fuse_(config.ec2en_fuse) {
        memory_.fill(0xFF);
        apply_writes(config, memory_);
        for (std::size_t zone = 0; zone < 2; ++zone) {
            const auto key = config.erase_keys[zone].value_or(std::vector<std::uint8_t>(key_length, 0xFF));
            if (key.size() != key_length) throw ScenarioError(config.where + ".erase_keys: 6 bytes each");
            std::ranges::copy(key, keys_[zone].begin());
        }
    }

    std::vector<std::uint8_t> answer() const override { return answer_; }
    void power_up() override {
        code_.close();
        key_open_ = {};
    }

    std::optional<Reply> handle(std::uint8_t instruction, Arguments& arguments) override {
        if (instruction < code_check || instruction > protect_read) return std::nullopt;
        switch (instruction) {
            case code_check:
            case code_change: {
                const auto code = take_all(arguments, code_length);
                return Reply::failure(instruction == code_check ? code_.present(code) : code_.change(code));
            }
            case key1_check:
            case key2_check:
                return check_key(instruction - key1_check, take_all(arguments, key_length));
            case zone1_read:
            case zone2_read:
                return read_zone(instruction - zone1_read, arguments);
            case zone1_write:
            case zone2_write:
            case zone2_issuer_write:
                return write_zone(instruction, arguments);
            case tries_read:
                return finished(arguments, ok_reply({static_cast<std::uint8_t>(code_.tries_left())}));
            case erases_read:
                return finished(arguments, ok_reply({erases_left_}));
            case answer_read:
                return finished(arguments, ok_reply(answer_));
            case issuer_read:
                return finished(arguments, ok_reply_of(area(issuer_at, area_size)));
            case protect_read:
                return finished(arguments, ok_reply_of(area(protect_at, area_size)));
            default:
                return with_code(instruction, arguments);
        }
    }

private:
    static Reply finished(const Arguments& arguments, Reply reply) {
        arguments.finish();
        return reply;
    }

    static std::span<const std::uint8_t> take_all(Arguments& arguments, std::size_t count) {
        const auto taken = arguments.take(count);
        arguments.finish();
        return taken;
    }

    std::span<std::uint8_t> area(std::size_t at, std::size_t size) { return std::span(memory_).subspan(at, size); }

    Reply check_key(std::size_t zone, std::span<const std::uint8_t> key) {
        key_open_[zone] = std::ranges::equal(key, keys_[zone]);
        return Reply::failure(key_open_[zone] ? status::ok : status::wrong_data);
    }

    Reply read_zone(std::size_t zone, Arguments& arguments) {
        const std::size_t offset = arguments.byte();
        const std::size_t length = take_all(arguments, 1)[0];
        if (offset + length > zone_size) return Reply::failure(status::out_of_range);
        if (selectors_[zone == 0 ? zone1_read_needs_code : zone2_read_needs_code] && !code_.open())
            return Reply::failure(status::code_required);
        return ok_reply_of(area(zone * zone_size + offset, length));
    }

    Reply write_zone(std::uint8_t instruction, Arguments& arguments) {
        const std::size_t zone = instruction == zone1_write ? 0 : 1;
        const std::size_t offset = arguments.byte();
        const std::size_t length = arguments.byte();
        if (offset + length > zone_size) return Reply::failure(status::out_of_range);
        const auto data = take_all(arguments, length);
        if (!code_.open()) return Reply::failure(status::code_required);
        const bool whole_bytes = instruction == zone2_issuer_write;
        if (selectors_[zone == 0 ? zone1_no_writes : zone2_no_writes] || (whole_bytes && issuer_fuse_))
            return Reply::failure(status::refused);
        const auto target = area(zone * zone_size + offset, length);
        for (std::size_t i = 0; i < length; ++i) target[i] = whole_bytes ? data[i] : target[i] & data[i];
        return ok_reply();
    }

    // The commands that need the security code presented.
    Reply with_code(std::uint8_t instruction, Arguments& arguments) {
        const bool changes_key = instruction == key1_change || instruction == key2_change;
        const bool writes_area = instruction == issuer_write || instruction == protect_write;
        const auto data = take_all(arguments, changes_key ? key_length : writes_area ? area_size : 0);
        if (!code_.open()) return Reply::failure(status::code_required);
        switch (instruction) {
            case code_read:
                return ok_reply_of(code_.value());
            case key1_change:
            case key2_change:
                std::ranges::copy(data, keys_[instruction - key1_change].begin());
                return ok_reply();
            case key1_read:
            case key2_read:
                return ok_reply_of(keys_[instruction - key1_read]);
            case zone1_erase:
            case zone2_erase:
            case zone2_issuer_erase:
                return erase(instruction);
            case anafuse_set:
            case anafuse_clear:  // the terminal keeps this flag; the chip only wants the code
                return ok_reply();
            case issuer_fuse_blow:
                issuer_fuse_ = true;
                return ok_reply();
            case ec2en_fuse_blow:
                ec2en_fuse_ = true;
                return ok_reply();
            case issuer_write:
                if (issuer_fuse_) return Reply::failure(status::refused);
                std::ranges::copy(data, area(issuer_at, area_size).begin());
                return ok_reply();
            case protect_write:
                std::ranges::copy(data, area(protect_at, area_size).begin());
                return ok_reply();
            default:  // the protection selectors
                selectors_[instruction - selector1_clear] = true;
                return ok_reply();
        }
    }

    Reply erase(std::uint8_t instruction) {
        const std::size_t zone = instruction == zone1_erase ? 0 : 1;
        if (instruction == zone2_issuer_erase) {
            if (issuer_fuse_) return Reply::failure(status::refused);
        } else {
            if (!key_open_[zone]) return Reply::failure(status::code_required);
            if (zone == 1 && ec2en_fuse_) {
                if (erases_left_ == 0) return Reply::failure(status::refused);
                --erases_left_;
            }
        }
        std::ranges::fill(area(zone * zone_size, zone_size), 0xFF);
        return ok_reply();
    }

    std::vector<std::uint8_t> answer_;
    GuardCode code_;
    std::array<std::uint8_t, memory_size> memory_{};
    std::array<std::array<std::uint8_t, key_length>, 2> keys_{};
    std::array<bool, 2> key_open_{};
    std::array<bool, 4> selectors_{};
    std::uint8_t erases_left_ = zone2_erases;
    bool issuer_fuse_;
    bool ec2en_fuse_;
};

static_assert(selector4_clear - selector1_clear + 1 == 4);

}  // namespace

std::unique_ptr<MemoryChip> make_at88sc102(const ChipConfig& config) { return std::make_unique<At88sc102>(config); }

}  // namespace qz::sim
