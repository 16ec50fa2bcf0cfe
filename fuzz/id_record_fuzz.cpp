// Identity card read replies from a hostile terminal: whatever the lengths and
// fields say, decoding must stay inside the reply and give texts that fit the
// host's areas (3096 bytes of result text, 2060 of finger text, terminators included).
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "identity/card_read.h"
#include "identity/field_decoding.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const int mode = data[0] & 1;
    const auto reply = std::span(data + 1, size - 1).first(std::min(size - 1, qz::identity::read_reply_capacity));

    qz::identity::CardTexts texts;
    const auto outcome = qz::identity::IDCardDecodeMsg(mode, reply, nullptr, texts);
    if (outcome.result != 0 || texts.base_info.size() >= 3096 || texts.finger_info.size() >= 2060 ||
        std::memchr(texts.base_info.data(), 0, texts.base_info.size()) != nullptr)
        __builtin_trap();

    // Every field kind of both records on the head of the reply as a raw field.
    std::array<std::uint8_t, 256> info{};
    std::memcpy(info.data(), reply.data(), std::min(reply.size(), info.size() - 2));
    for (int kind = 0; kind <= 12; ++kind) {
        if (qz::identity::IDFieldToText(kind, info).size() > 120 || qz::identity::IDForeignFieldToText(kind, info).size() > 120)
            __builtin_trap();
    }
    return 0;
}
