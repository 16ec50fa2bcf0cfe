#include "pinpad/pad_entry.h"

#include <algorithm>

#include "link/link_state.h"
#include "link/status.h"
#include "pinpad/keypad.h"
#include "pinpad/pad_state.h"

namespace qz::pinpad {
namespace {

constexpr int gate_timeout_not_set = -66;
constexpr int gate_pin_length_not_set = -65;

void add_opening(link::Payload& payload, Opening opening, int mode) {
    switch (opening) {
        case Opening::first: payload.add(esc).add(static_cast<std::uint8_t>(EntryLetter::first)); break;
        case Opening::again: payload.add(esc).add(static_cast<std::uint8_t>(EntryLetter::again)); break;
        case Opening::selector: payload.add(esc).add('H').add(selector_digit(mode)); break;
        case Opening::next_key: payload.add(0x00); break;
    }
}

void add_tail(link::Payload& payload, Tail tail, const EntryArguments& arguments) {
    switch (tail) {
        case Tail::none: break;
        case Tail::crlf: payload.add('\r').add('\n'); break;
        case Tail::key_and_card:
            payload.add(arguments.keyno).add_zeros(2).add(std::span(arguments.cardno, card_number_size));
            break;
        case Tail::key: payload.add(arguments.keyno); break;
    }
}

}  // namespace

std::uint8_t selector_digit(int mode) {
    switch (mode) {
        case 1: return '0';
        case 2: return '2';
        case 3: return '1';
        default: return '3';
    }
}

link::Payload entry_payload(const EntryForm& form, const EntryArguments& arguments) {
    link::Payload payload{pad_class, form.sub_command, 0x00};
    add_opening(payload, form.opening, arguments.mode);
    add_tail(payload, form.tail, arguments);
    return payload;
}

int enter_pin(int icdev, const EntryForm& form, const EntryArguments& arguments, std::span<std::uint8_t> reply_area,
              int& reply_length) {
    if (form.tail == Tail::key_and_card && arguments.cardno == nullptr) return link::status_bad_argument;
    PadState& state = pad_state();
    if (!state.pwdkb_timeout_set) return gate_timeout_not_set;
    if (!state.pwdkb_pwdlen_set) return gate_pin_length_not_set;
    link::set_link_timeouts(state.pwdkb_link_timeout, 0);
    const int result = link::dev_transact(icdev, entry_payload(form, arguments).bytes(), reply_length, reply_area);
    if (result == 0 && form.records_work_key()) state.pwdkb_work_index = arguments.keyno;
    return result;
}

int enter_pin(int icdev, const EntryForm& form, const EntryArguments& arguments, unsigned char* rlen,
              unsigned char* rdata) {
    if (rlen == nullptr || rdata == nullptr) return link::status_bad_argument;
    PadReply reply;
    const int result = enter_pin(icdev, form, arguments, reply.area, reply.length);
    if (result == 0) {
        std::ranges::copy(reply.data(), rdata);
        *rlen = static_cast<unsigned char>(reply.length);
    }
    return result;
}

EntryForm entry_for_pad_type(std::int32_t kb_type, int mode, bool encrypted) {
    if (kb_type != 1) return encrypted ? form::getpwd_encrypt_new2 : form::getpwd_new2;
    switch (mode) {
        case 1: return encrypted ? form::getpwd_encrypt : form::getpwd;
        case 2: return encrypted ? form::getpwd_again_encrypt : form::getpwd_again;
        // Reached with modes 3 and 4 alone, whose selectors are "1" and "3".
        default: return encrypted ? form::getpwd_encrypt_new : form::getpwd_new;
    }
}

}  // namespace qz::pinpad
