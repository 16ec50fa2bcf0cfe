// AT24C01A: 128 bytes of plain memory, read and written freely.
//
//   C0 90 00 l o         read l bytes at o
//   C0 91 00 l o data    write
//
// The AT88SC1604 uses the same command bytes with a longer head.
#include <algorithm>
#include <array>

#include "sim/core/status.h"
#include "sim/models/memcards/chips.h"

namespace qz::sim {
namespace {

constexpr std::size_t memory_size = 128;
const std::vector<std::uint8_t> default_answer{0x69, 0x35, 0x10, 0x00};

enum Instruction : std::uint8_t { read = 0x90, write = 0x91 };

class At24c01a final : public MemoryChip {
public:
    explicit At24c01a(const ChipConfig& config) : answer_(config.answer.value_or(default_answer)) {
        memory_.fill(0xFF);
        apply_writes(config, memory_);
    }

    std::vector<std::uint8_t> answer() const override { return answer_; }
    void power_up() override {}

    std::optional<Reply> handle(std::uint8_t instruction, Arguments& arguments) override {
        if (instruction != read && instruction != write) return std::nullopt;
        const std::size_t length = arguments.byte();
        const std::size_t offset = arguments.byte();
        if (offset + length > memory_size) return Reply::failure(status::out_of_range);
        const auto data = arguments.take(instruction == write ? length : 0);
        arguments.finish();
        const auto range = std::span(memory_).subspan(offset, length);
        if (instruction == read) return ok_reply_of(range);
        std::ranges::copy(data, range.begin());
        return ok_reply();
    }

private:
    std::vector<std::uint8_t> answer_;
    std::array<std::uint8_t, memory_size> memory_{};
};

}  // namespace

std::unique_ptr<MemoryChip> make_at24c01a(const ChipConfig& config) { return std::make_unique<At24c01a>(config); }

}  // namespace qz::sim
