// One two-dimensional code from the terminal's scanner, as text. A scanner that
// answers its version reads the code itself in one command; an older one is
// switched on, polled through the terminal, and switched off again.
#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "firmware/scanner_loader.h"
#include "link/command.h"
#include "link/export_lock.h"
#include "platform/platform.h"
#include "qz_32.h"

namespace qz::identity {
namespace {

using link::Payload;

constexpr std::size_t code_capacity = 1024;
constexpr int longest_polling_s = 25;
constexpr std::uint32_t wait_after_failed_poll_ms = 30;
constexpr std::uint32_t link_margin_ms = 50;
constexpr int wrong_acknowledgement = -1;

// The scanner's acknowledgement at the head of its first good reply.
constexpr std::array<std::uint8_t, 7> acknowledgement{0x02, 0x00, 0x00, 0x01, 0x00, 0x33, 0x31};

using firmware::scanner_class;
using firmware::scanner_read_continuously;
using firmware::scanner_reading;

// The scanner's own frames that switch its reading mode on and off.
const Payload start_frame{scanner_class, scanner_read_continuously, 0x00, 0x00, 0x7E, 0x00, 0x08,
                          0x01,          0x00,                      0x02, 0x01, 0x02, 0xDA};
const Payload begin_reading{scanner_class, scanner_reading, 0x00, 0x01};
const Payload poll{scanner_class, scanner_read_continuously, 0x00, 0x01};
const Payload end_reading{scanner_class, scanner_reading, 0x00, 0x00};
const Payload stop_frame{scanner_class, scanner_read_continuously, 0x00, 0x00, 0x7E, 0x00, 0x08,
                         0x01,          0x00,                      0x02, 0x00, 0x12, 0xFB};

using PollReply = link::Reply<code_capacity>;

int send(int icdev, const Payload& payload) {
    PollReply reply;
    return link::transact(icdev, payload, reply);
}

// The scanner reads the code itself within `seconds` and the terminal hands it over.
int read_direct(int icdev, int seconds, char* text) {
    const std::uint64_t wait_ms = std::uint64_t(seconds) * 1000 + link_margin_ms;
    link::Reply<512> reply;
    int result;
    {
        const link::TimeoutsForCommand timeouts(
            static_cast<std::uint32_t>(std::min<std::uint64_t>(wait_ms, std::numeric_limits<std::uint32_t>::max())), 0);
        const auto tenths = static_cast<std::uint8_t>(seconds * 10);
        result = link::transact(
            icdev, Payload{firmware::pass_class, firmware::pass_instruction, tenths, firmware::esc, firmware::scanner_mark,
                           firmware::read_order},
            reply);
    }
    if (result == 0 && reply.data().size() > 2) std::copy(reply.data().begin() + 1, reply.data().end() - 1, text);
    return result;
}

// The code collected by polling, zero-terminated within code_capacity bytes.
struct Collected {
    int kept_status = 0;
    std::array<std::uint8_t, code_capacity> code{};

    void take(std::span<const std::uint8_t> bytes) {
        std::copy_n(bytes.begin(), std::min(bytes.size(), code.size() - 1), code.begin());
    }
};

int read_polled(int icdev, int seconds, char* text) {
    if (const int result = send(icdev, start_frame); result != 0) return result;
    Collected collected;
    collected.kept_status = send(icdev, begin_reading);
    dev_beep(icdev, 1, 1, 1);

    auto& os = platform::current();
    const std::uint32_t limit_ms = static_cast<std::uint32_t>(std::min(seconds, longest_polling_s)) * 1000;
    const std::uint32_t start = os.tick_ms();
    bool acknowledged = false;
    while (os.tick_ms() - start < limit_ms) {
        PollReply reply;
        collected.kept_status = link::transact(icdev, poll, reply);
        if (collected.kept_status != 0) {
            os.sleep_ms(wait_after_failed_poll_ms);
            continue;
        }
        const auto data = reply.data();
        if (acknowledged) {
            collected.take(data);
            break;
        }
        if (data.size() < acknowledgement.size() || !std::equal(acknowledgement.begin(), acknowledgement.end(), data.begin())) {
            send(icdev, end_reading);
            return wrong_acknowledgement;
        }
        acknowledged = true;
        if (data.size() > acknowledgement.size() + 1) {
            collected.take(data.subspan(acknowledgement.size()));
            break;
        }
    }
    send(icdev, end_reading);
    const int stopped = send(icdev, stop_frame);
    if (collected.kept_status != 0) return collected.kept_status;
    if (stopped != 0) return stopped;
    std::strcpy(text, reinterpret_cast<const char*>(collected.code.data()));
    return 0;
}

}  // namespace
}  // namespace qz::identity

QZ_32_API int QZ_32_CALL GetTwoDimensionCode(int icdev, int nTimeout, char* sCodeText) {
    const qz::link::ExportLock lock;
    if (nTimeout < 1 || sCodeText == nullptr) return qz::link::status_bad_argument;
    std::vector<std::uint8_t> version;
    if (qz::firmware::scanner_version(icdev, version) == 0) return qz::identity::read_direct(icdev, nTimeout, sCodeText);
    return qz::identity::read_polled(icdev, nTimeout, sCodeText);
}
