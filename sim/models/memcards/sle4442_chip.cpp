// SLE4442: 256 bytes, the first 32 protectable, a 3-byte PSC with 3 tries.
//
//   C0 40 00 o lL lH         read l bytes at o (always allowed)
//   C0 41 00 o lL lH data    write (PSC presented; protected bytes refuse a change)
//   C0 42 00 psc             present the PSC: 63Cx for a wrong one, blocked at 0 tries
//   C0 43 00                 the PSC (00 00 00 until it has been presented)
//   C0 44 00 psc             change the PSC (PSC presented)
//   C0 45 00                 protection bits, 4 bytes: bit i of byte i/8 set while
//                            byte i is not protected
//   C0 46 00 o lL lH data    protect bytes o.. (PSC presented); data must equal them
//   C0 47 00                 tries left, one byte
#include <array>

#include "sim/core/status.h"
#include "sim/models/memcards/chips.h"
#include "sim/models/memcards/protected_memory.h"

namespace qz::sim {
namespace {

constexpr std::size_t memory_size = 256;
constexpr std::size_t protectable = 32;
constexpr std::size_t psc_length = 3;
constexpr unsigned tries = 3;
const std::vector<std::uint8_t> default_answer{0xA2, 0x13, 0x10, 0x91};

enum Instruction : std::uint8_t {
    read = 0x40,
    write = 0x41,
    psc_check = 0x42,
    psc_read = 0x43,
    psc_change = 0x44,
    protection_read = 0x45,
    protection_write = 0x46,
    tries_read = 0x47,
};

class Sle4442 final : public MemoryChip {
public:
    explicit Sle4442(const ChipConfig& config)
        : answer_(config.answer.value_or(default_answer)),
          psc_(configured_code(config, psc_length), tries, configured_tries(config, tries)),
          memory_(memory_size, protectable) {
        std::ranges::copy(answer_, memory_.bytes().begin());
        apply_writes(config, memory_.bytes());
        for (std::size_t position : config.protected_positions) {
            if (position >= protectable) throw ScenarioError(config.where + ".protected: positions 0 to 31");
            memory_.protect(position);
        }
    }

    std::vector<std::uint8_t> answer() const override { return answer_; }
    void power_up() override { psc_.close(); }

    std::optional<Reply> handle(std::uint8_t instruction, Arguments& arguments) override {
        switch (instruction) {
            case read:
            case write:
            case protection_write: {
                const bool writes = instruction != read;
                const auto range = take_range(arguments, instruction == protection_write ? protectable : memory_size, writes);
                if (!range) return Reply::failure(status::out_of_range);
                if (!writes) return ok_reply_of(memory_.read(range->offset, range->length));
                if (!psc_.open()) return Reply::failure(status::code_required);
                if (instruction == write) return Reply::failure(memory_.write(range->offset, range->data));
                return protect(range->offset, range->data);
            }
            case psc_check:
            case psc_change: {
                const auto psc = arguments.take(psc_length);
                arguments.finish();
                return Reply::failure(instruction == psc_check ? psc_.present(psc) : psc_.change(psc));
            }
            case psc_read:
                arguments.finish();
                return ok_reply(psc_.open() ? std::vector(psc_.value().begin(), psc_.value().end())
                                            : std::vector<std::uint8_t>(psc_length, 0));
            case protection_read:
                arguments.finish();
                return ok_reply(protection_bits());
            case tries_read:
                arguments.finish();
                return ok_reply({static_cast<std::uint8_t>(psc_.tries_left())});
            default:
                return std::nullopt;
        }
    }

private:
    struct Range {
        std::size_t offset;
        std::size_t length;
        std::span<const std::uint8_t> data;
    };
    // Offset, length low byte first and, for a write, the data; nothing when the
    // range passes the end of an area of `area` bytes.
    static std::optional<Range> take_range(Arguments& arguments, std::size_t area, bool with_data) {
        Range range{arguments.byte(), arguments.low_first(), {}};
        if (range.offset + range.length > area) return std::nullopt;
        if (with_data) range.data = arguments.take(range.length);
        arguments.finish();
        return range;
    }

    Reply protect(std::size_t offset, std::span<const std::uint8_t> data) {
        if (!std::ranges::equal(data, memory_.read(offset, data.size()))) return Reply::failure(status::wrong_data);
        for (std::size_t i = 0; i < data.size(); ++i) memory_.protect(offset + i);
        return ok_reply();
    }

    std::vector<std::uint8_t> protection_bits() const {
        std::vector<std::uint8_t> bits(protectable / 8);
        for (std::size_t i = 0; i < protectable; ++i)
            if (!memory_.is_protected(i)) bits[i / 8] = static_cast<std::uint8_t>(bits[i / 8] | 1u << (i % 8));
        return bits;
    }

    std::vector<std::uint8_t> answer_;
    GuardCode psc_;
    ProtectedMemory memory_;
};

}  // namespace

std::unique_ptr<MemoryChip> make_sle4442(const ChipConfig& config) { return std::make_unique<Sle4442>(config); }

}  // namespace qz::sim
