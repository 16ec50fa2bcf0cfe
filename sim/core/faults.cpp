#include "sim/core/faults.h"

#include <algorithm>

#include "sim/core/frame_codec.h"

namespace qz::sim {

std::optional<Fault> FaultPlan::take(std::uint8_t class_byte, std::uint8_t instruction) {
    for (FaultRule& rule : rules_) {
        if (rule.class_byte != class_byte || rule.instruction != instruction) continue;
        if (rule.times == 0u) continue;
        if (rule.times) --*rule.times;
        return rule.fault;
    }
    return std::nullopt;
}

std::vector<std::uint8_t> damage(const Fault& fault, std::vector<std::uint8_t> frame) {
    switch (fault.kind) {
        case FaultKind::silence: return {};
        case FaultKind::bad_bcc: frame[frame.size() - 2] ^= 0xFF; break;
        case FaultKind::wrong_etx: frame.back() = 0xFF; break;
        case FaultKind::cut: frame.resize(std::min(frame.size(), fault.keep.value_or(frame.size() / 2))); break;
        case FaultKind::oversized:
            frame[1] = static_cast<std::uint8_t>(fault.announced_length >> 8);
            frame[2] = static_cast<std::uint8_t>(fault.announced_length);
            break;
        case FaultKind::garbage: frame.insert(frame.begin(), fault.garbage.begin(), fault.garbage.end()); break;
        case FaultKind::status: break;
    }
    return frame;
}

}  // namespace qz::sim
