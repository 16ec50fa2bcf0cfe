// SLE4428: 1024 bytes, each with a protection bit, a 2-byte PSC with 8 tries.
// Offsets come low byte first, lengths high byte first.
//
//   C0 83 00 psc              change the PSC (PSC presented)
//   C0 84 00 psc              present the PSC: 63Cx for a wrong one, blocked at 0 tries
//   C0 85 00 oL oH lH lL      read l bytes (1 to 256) at o (always allowed)
//   C0 86 00 oL oH lH lL data write (PSC presented; protected bytes refuse a change)
//   C0 87 00 oL oH lH lL      read l bytes (1 to 128) with their protection: two bytes a
//                             position, the byte and 01 if protected, else 00
//   C0 88 00 oL oH lH lL data write and protect (PSC presented; a protected byte
//                             refuses a change)
//   C0 89 00                  tries left, one byte
#include "sim/core/status.h"
#include "sim/models/memcards/chips.h"
#include "sim/models/memcards/protected_memory.h"

namespace qz::sim {
namespace {

constexpr std::size_t memory_size = 1024;
constexpr std::size_t psc_length = 2;
constexpr unsigned tries = 8;
constexpr std::size_t longest_transfer = 256;
constexpr std::size_t longest_protection_read = 128;
const std::vector<std::uint8_t> default_answer{0x92, 0x23, 0x10, 0x91};

enum Instruction : std::uint8_t {
    psc_change = 0x83,
    psc_check = 0x84,
    read = 0x85,
    write = 0x86,
    protection_read = 0x87,
    protection_write = 0x88,
    tries_read = 0x89,
};

class Sle4428 final : public MemoryChip {
public:
    explicit Sle4428(const ChipConfig& config)
        : answer_(config.answer.value_or(default_answer)),
          psc_(configured_code(config, psc_length), tries, configured_tries(config, tries)),
          memory_(memory_size, memory_size) {
        std::ranges::copy(answer_, memory_.bytes().begin());
        apply_writes(config, memory_.bytes());
        for (std::size_t position : config.protected_positions) {
            if (position >= memory_size) throw ScenarioError(config.where + ".protected: positions 0 to 1023");
            memory_.protect(position);
        }
    }

    std::vector<std::uint8_t> answer() const override { return answer_; }
    void power_up() override { psc_.close(); }

    std::optional<Reply> handle(std::uint8_t instruction, Arguments& arguments) override {
        switch (instruction) {
            case psc_change:
            case psc_check: {
                const auto psc = arguments.take(psc_length);
                arguments.finish();
                return Reply::failure(instruction == psc_check ? psc_.present(psc) : psc_.change(psc));
            }
            case tries_read:
                arguments.finish();
                return ok_reply({static_cast<std::uint8_t>(psc_.tries_left())});
            case read:
            case write:
            case protection_read:
            case protection_write:
                return transfer(instruction, arguments);
            default:
                return std::nullopt;
        }
    }

private:
    Reply transfer(std::uint8_t instruction, Arguments& arguments) {
        const std::size_t offset = arguments.low_first();
        const std::size_t length = arguments.high_first();
        const bool writes = instruction == write || instruction == protection_write;
        const std::size_t longest = instruction == protection_read ? longest_protection_read : longest_transfer;
        if (length == 0 || length > longest || offset + length > memory_size)
            return Reply::failure(status::out_of_range);
        const auto data = arguments.take(writes ? length : 0);
        arguments.finish();
        if (instruction == read) return ok_reply_of(memory_.read(offset, length));
        if (instruction == protection_read) return protection_pairs(offset, length);
        if (!psc_.open()) return Reply::failure(status::code_required);
        const std::uint16_t written = memory_.write(offset, data);
        if (written == status::ok && instruction == protection_write)
            for (std::size_t i = 0; i < length; ++i) memory_.protect(offset + i);
        return Reply::failure(written);
    }

    Reply protection_pairs(std::size_t offset, std::size_t length) const {
        std::vector<std::uint8_t> pairs;
        for (std::size_t i = offset; i < offset + length; ++i) {
            pairs.push_back(memory_.read(i, 1)[0]);
            pairs.push_back(memory_.is_protected(i) ? 1 : 0);
        }
        return ok_reply(std::move(pairs));
    }

    std::vector<std::uint8_t> answer_;
    GuardCode psc_;
    ProtectedMemory memory_;
};

}  // namespace

std::unique_ptr<MemoryChip> make_sle4428(const ChipConfig& config) { return std::make_unique<Sle4428>(config); }

}  // namespace qz::sim
