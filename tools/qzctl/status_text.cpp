#include "status_text.h"

#include <cstdio>
#include <map>

namespace qzctl {
namespace {

const std::map<int, const char*>& link_statuses() {
    static const std::map<int, const char*> names{
        {-1, "the system refused a HID feature report"},
        {-17, "no reply from the terminal within the read time"},
        {-18, "invalid device handle"},
        {-19, "argument out of range"},
        {-20, "serial port in use"},
        {-21, "serial port cannot be opened"},
        {-22, "serial port settings cannot be read"},
        {-23, "serial port settings refused"},
        {-24, "writing to the serial port failed"},
        {-25, "reading from the serial port failed"},
        {-33, "no device open"},
        {-34, "no reply frame (no STX)"},
        {-35, "reply frame does not end in ETX"},
        {-36, "reply frame checksum wrong"},
        {-37, "request too long for one frame"},
        {-38, "reply longer than the command allows"},
        {-39, "reply shorter than the command needs"},
        {-65, "the PIN pad's PIN length is not set"},
        {-66, "the PIN pad's time-out is not set"},
    };
    return names;
}

// Status words in the smart card convention that the PIN devices and card readers answer.
const std::map<unsigned, const char*>& terminal_statuses() {
    static const std::map<unsigned, const char*> names{
        {0x6400, "no PIN was keyed before the time-out"},
        {0x6401, "no card in the field or the slot"},
        {0x6402, "the card has not been activated"},
        {0x6A80, "the device refused the data of the command"},
        {0x6A88, "the key named was never loaded"},
        {0x6D00, "the device does not know the command"},
    };
    return names;
}

// What a card's status words say (ISO 7816-4).
const std::map<unsigned, const char*>& card_status_words() {
    static const std::map<unsigned, const char*> names{
        {0x6281, "part of the returned data may be corrupted"},
        {0x6283, "selected file or application invalidated"},
        {0x6700, "wrong length"},
        {0x6982, "security status not satisfied"},
        {0x6983, "authentication method blocked"},
        {0x6984, "referenced data invalidated"},
        {0x6985, "conditions of use not satisfied"},
        {0x6986, "command not allowed (no current file)"},
        {0x6A80, "incorrect data in the command"},
        {0x6A81, "function not supported"},
        {0x6A82, "file or application not found"},
        {0x6A83, "record not found"},
        {0x6A84, "not enough memory in the file"},
        {0x6A86, "incorrect parameters P1-P2"},
        {0x6A88, "referenced data not found"},
        {0x6B00, "wrong parameters P1-P2"},
        {0x6D00, "instruction not supported"},
        {0x6E00, "class not supported"},
        {0x6F00, "no precise diagnosis"},
        {0x9000, "success"},
    };
    return names;
}

}  // namespace

std::string status_word_meaning(unsigned status_word) {
    const unsigned sw1 = status_word >> 8;
    const unsigned sw2 = status_word & 0xFF;
    const unsigned count = sw2 == 0 ? 256 : sw2;
    if (sw1 == 0x61) return std::to_string(count) + " more bytes available (GET RESPONSE)";
    if (sw1 == 0x6C) return "wrong Le: " + std::to_string(count) + " bytes available";
    if (sw1 == 0x63 && (sw2 & 0xF0) == 0xC0) return "verification failed, " + std::to_string(sw2 & 0x0F) + " tries left";
    if (const auto found = card_status_words().find(status_word); found != card_status_words().end()) return found->second;
    return "unknown status";
}

std::string status_text(int result) {
    if (result == 0) return "success";
    if (const auto found = link_statuses().find(result); found != link_statuses().end())
        return std::string(found->second) + " (" + std::to_string(result) + ")";
    // Anything else is the terminal's status word, negated and cut to 16 bits.
    const unsigned status = static_cast<unsigned>(-result) & 0xFFFF;
    char word[48];
    std::snprintf(word, sizeof word, "terminal status %04X", status);
    if (const auto found = terminal_statuses().find(status); found != terminal_statuses().end())
        return std::string(found->second) + " (" + word + ")";
    return word;
}

}  // namespace qzctl
