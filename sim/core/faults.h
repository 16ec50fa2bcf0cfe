// Faults injected into the terminal's replies, per command.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace qz::sim {

enum class FaultKind {
    silence,    // no reply at all
    bad_bcc,    // the BCC is inverted
    wrong_etx,  // the last byte is not ETX
    cut,        // only the first bytes of the frame are sent
    oversized,  // LEN announces more than is sent
    garbage,    // bytes before the STX
    status,     // the command is not carried out; the reply carries the given status
};

struct Fault {
    FaultKind kind = FaultKind::silence;
    std::uint16_t status = 0;                    // status
    std::optional<std::size_t> keep{};          // cut: bytes kept, half the frame if not given
    std::uint16_t announced_length = 0xFFFF;     // oversized: the LEN put into the frame
    std::vector<std::uint8_t> garbage{0xAA, 0x55, 0xFF};  // garbage: sent before the STX
};

struct FaultRule {
    std::uint8_t class_byte = 0;
    std::uint8_t instruction = 0;
    Fault fault{};
    std::optional<unsigned> times{};  // nothing: always
};

// The rules of a scenario with the uses they have left.
class FaultPlan {
public:
    FaultPlan() = default;
    explicit FaultPlan(std::vector<FaultRule> rules) : rules_(std::move(rules)) {}

    void add(FaultRule rule) { rules_.push_back(std::move(rule)); }

    // The fault of the first rule that matches the command and has uses left;
    // that use is spent.
    std::optional<Fault> take(std::uint8_t class_byte, std::uint8_t instruction);

private:
    std::vector<FaultRule> rules_;
};

// The bytes that go on the wire for a reply `frame` hit by `fault` (none for
// silence). A status fault is dealt with before the frame exists and leaves it as it is.
std::vector<std::uint8_t> damage(const Fault& fault, std::vector<std::uint8_t> frame);

}  // namespace qz::sim
