#include "cards/contactless.h"

#include <algorithm>
#include <string>

#include "cards/card_commands.h"
#include "link/link_state.h"
#include "link/log.h"
#include "link/status.h"
#include "reader/hex.h"

namespace qz::cards {
namespace {

using link::Payload;

// Activation reply: a byte not passed on, the UID's length, the UID, the answer's
// length, the answer to select.
struct ActivationReply {
    link::Reply<3 + 255 + max_answer_length> reply;
    std::span<const std::uint8_t> uid;
    std::span<const std::uint8_t> ats;

    // Splits the reply; false when a length runs past its end.
    bool split() {
        const auto data = reply.data();
        if (data.size() < 2) return false;
        const std::size_t uid_length = data[1];
        if (data.size() < 3 + uid_length) return false;
        const std::size_t ats_length = data[2 + uid_length];
        if (data.size() < 3 + uid_length + ats_length) return false;
        uid = data.subspan(2, uid_length);
        ats = data.subspan(3 + uid_length, ats_length);
        return true;
    }
};

std::string hex_text(std::span<const std::uint8_t> bytes) {
    std::string text(2 * bytes.size(), '\0');
    reader::to_hex(bytes, text);
    return text;
}

constexpr std::uint32_t open_card_read_ms = 1000;

}  // namespace

int deactivate(int icdev, std::uint8_t card_class) {
    link::Reply<64> reply;
    return link::transact(icdev, Payload{card_class, instruction_deactivate, 0x00}, reply);
}

int open_card(int icdev, std::uint8_t mode, Form form, void* uid, void* ats, unsigned char* ats_length,
              std::size_t ats_room) {
    if (mode > 1 || uid == nullptr || ats == nullptr || ats_length == nullptr) return link::status_bad_argument;
    *ats_length = 0;
    ActivationReply activation;
    const int result =
        link::transact(icdev, Payload{contactless_class, instruction_activate, 0x00, mode}, activation.reply);
    if (result != 0) return result;
    if (!activation.split() || handed_over_count(form, activation.ats.size()) > ats_room)
        return link::status_reply_too_long;
    hand_over(form, activation.uid, uid);
    *ats_length = static_cast<unsigned char>(hand_over(form, activation.ats, ats));
    return 0;
}

SavedAnswer& saved_answer() {
    static SavedAnswer saved;
    return saved;
}

int open_card_keeping_answer(int icdev, std::uint8_t mode, unsigned char* uid) {
    if (uid == nullptr) return link::status_bad_argument;
    SavedAnswer& saved = saved_answer();
    saved.length = 0;
    saved.bytes.fill(0);
    // The open's read time-out stays in force after it.
    const link::TimeoutsForCommand timeouts(open_card_read_ms, 0, open_card_read_ms, 0);
    std::array<std::uint8_t, SavedAnswer::capacity> answer{};
    unsigned char answer_length = 0;
    const int result = open_card(icdev, mode, Form::bytes, uid, answer.data(), &answer_length, answer.size());
    if (result == 0) {
        saved.bytes = answer;
        saved.length = answer_length;
        saved.valid = true;
    }
    return result;
}

int kept_answer(unsigned char* ats, unsigned char* ats_length) {
    if (ats == nullptr || ats_length == nullptr) return link::status_bad_argument;
    const SavedAnswer& saved = saved_answer();
    if (!saved.valid) return status_no_saved_answer;
    std::copy_n(saved.bytes.begin(), saved.length, ats);
    *ats_length = saved.length;
    return 0;
}

int exchange_contactless(int icdev, std::span<const std::uint8_t> apdu, ExchangeProReply& reply) {
    if (apdu.empty() || apdu.size() > exchange_pro_apdu_limit) return link::status_bad_argument;
    return link::transact(icdev, Payload{contactless_class, instruction_exchange, 0x00}.add(apdu), reply);
}

int exchange_pro(int icdev, std::span<const std::uint8_t> apdu, ExchangeProReply& reply) {
    link::write_log(link::log_format("ExchangePro(icdev == %d)", icdev));
    if (apdu.empty() || apdu.size() > exchange_pro_apdu_limit) return link::status_bad_argument;
    link::write_log("\xB7\xA2\xCB\xCD:");  // "sent:" in GBK
    link::write_log(hex_text(apdu));
    const int result = exchange_contactless(icdev, apdu, reply);
    link::write_log("\xBD\xD3\xCA\xD5:");  // "received:" in GBK
    link::write_log(hex_text(reply.data()));
    link::write_log(link::log_format("ExchangePro(return == %d)", result));
    return result;
}

}  // namespace qz::cards
