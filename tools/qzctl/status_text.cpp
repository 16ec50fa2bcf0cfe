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
    };
    return names;
}

}  // namespace

std::string status_text(int result) {
    if (result == 0) return "success";
    if (const auto found = link_statuses().find(result); found != link_statuses().end())
        return std::string(found->second) + " (" + std::to_string(result) + ")";
    // Anything else is the terminal's status word, negated and cut to 16 bits.
    char word[48];
    std::snprintf(word, sizeof word, "terminal status %04X", static_cast<unsigned>(-result) & 0xFFFF);
    return word;
}

}  // namespace qzctl
