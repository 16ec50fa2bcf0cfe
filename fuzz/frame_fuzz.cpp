// Reply frames from a hostile terminal, on both links, to the bare transaction and
// to exports that copy reply bytes out. Oracles: no read waits longer than the read
// time-out after the last byte or report came (on the simulated clock); no length
// output exceeds the bytes actually written; nothing is read or written outside
// the buffers (AddressSanitizer, with every output area sized exactly).
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <span>
#include <vector>

#include "link/link_state.h"
#include "link/transact.h"
#include "platform/platform.h"
#include "qz_32.h"

namespace {

constexpr std::uint32_t idle_step_ms = 50;

// Serves the fuzz input as feature reports (first byte of each chunk says its
// size) or as a serial byte stream; time moves on with every empty read, and the
// longest wait since something came is kept.
class HostileTerminal final : public qz::platform::Platform {
public:
    explicit HostileTerminal(std::span<const std::uint8_t> input) : input_(input) {}

    std::uint32_t longest_overrun_ms() const { return longest_overrun_; }

    std::uint32_t tick_ms() override { return now_; }
    void sleep_ms(std::uint32_t ms) override { now_ += ms; }
    qz::platform::LocalTime local_time() override { return {}; }
    std::optional<std::string> hid_path(int) override { return std::nullopt; }
    int hid_open(const std::string&) override { return -1; }
    std::optional<qz::platform::HidIdentity> hid_identity(int) override { return std::nullopt; }
    std::optional<std::uint16_t> hid_feature_report_length(int) override { return std::nullopt; }
    bool hid_set_feature(int, std::span<const std::uint8_t>) override {
        something_came();
        return true;
    }
    bool hid_get_feature(int, std::span<std::uint8_t> report) override {
        if (at_ >= input_.size()) return nothing_came();
        const std::size_t announced = input_[at_++];
        const std::size_t size = std::min(announced, input_.size() - at_);
        std::memcpy(report.data(), input_.data() + at_, std::min(size, report.size()));
        at_ += size;
        something_came();
        return true;
    }
    int serial_open(const std::string&, const qz::platform::SerialSettings&) override { return -21; }
    void serial_purge(int) override {}
    bool serial_write(int, std::uint8_t) override {
        something_came();
        return true;
    }
    qz::platform::ByteRead serial_read(int, std::uint8_t& byte) override {
        if (at_ >= input_.size()) {
            nothing_came();
            return qz::platform::ByteRead::timed_out;
        }
        byte = input_[at_++];
        something_came();
        return qz::platform::ByteRead::received;
    }
    bool close(int) override { return true; }

private:
    void something_came() { last_ = now_; }
    bool nothing_came() {
        now_ += idle_step_ms;
        const std::uint32_t idle = now_ - last_;
        const std::uint32_t allowed = qz::link::link_state().read_ms + idle_step_ms;
        if (idle > allowed) longest_overrun_ = std::max(longest_overrun_, idle - allowed);
        return false;
    }

    std::span<const std::uint8_t> input_;
    std::size_t at_ = 0;
    std::uint32_t now_ = 0;
    std::uint32_t last_ = 0;
    std::uint32_t longest_overrun_ = 0;
};

constexpr int icdev = 3;

// One call under test: fills `out` (sized exactly) and gives its result and the
// length it reports, or -1 where it reports none.
struct Outcome {
    int result = 0;
    long length = -1;
};
using Call = std::function<Outcome(std::span<std::uint8_t> out)>;

// A call, the size of its output area and how many reply data bytes it must have
// had to succeed.
struct Target {
    std::size_t out_size;
    std::size_t required;
    Call call;
};

Outcome bare_transaction(std::span<std::uint8_t> out) {
    int length = 0;
    const std::uint8_t payload[] = {0x00, 0x01, 0x00};
    const int result = qz::link::dev_transact(icdev, payload, length, out);
    return {result, length};
}

template <auto Export>
Outcome with_length(std::span<std::uint8_t> out) {
    unsigned char length = 0;
    const int result = Export(icdev, &length, out.data());
    return {result, length};
}

Target target_for(std::uint8_t selector, std::size_t capacity) {
    const std::size_t snr_length = 1 + capacity % 20;
    const std::size_t eeprom_length = 1 + capacity % 200;
    switch (selector % 6) {
        case 0: return {capacity, 0, bare_transaction};
        case 1: return {255, 0, with_length<get_version>};
        case 2: return {255, 0, with_length<dev_readregno>};
        case 3:
            return {300, 0, [](std::span<std::uint8_t> out) {
                        unsigned char length = 0;
                        const int result = dev_pwdkb_getpwd(icdev, 0, &length, out.data());
                        return Outcome{result, length};
                    }};
        case 4:
            return {snr_length, snr_length, [](std::span<std::uint8_t> out) {
                        return Outcome{dev_readsnr(icdev, static_cast<unsigned char>(out.size()), out.data())};
                    }};
        default:
            return {eeprom_length, eeprom_length, [](std::span<std::uint8_t> out) {
                        return Outcome{dev_readeeprom(icdev, 0, static_cast<unsigned short>(out.size()), out.data())};
                    }};
    }
}

// Runs the call against a fresh terminal over `input`, its output area filled with
// `canary`, and checks the time oracle.
Outcome run(const Call& call, std::span<const std::uint8_t> input, bool hid, std::uint16_t report_length,
            std::vector<std::uint8_t>& out, std::uint8_t canary) {
    HostileTerminal terminal(input);
    qz::platform::install(&terminal);
    auto& link = qz::link::link_state();
    link.kind = hid ? qz::link::LinkKind::hid : qz::link::LinkKind::serial;
    link.hid_report_length = report_length;
    qz::link::set_link_timeouts(200, 0);
    std::fill(out.begin(), out.end(), canary);
    const Outcome outcome = call(out);
    qz::platform::install(nullptr);
    if (terminal.longest_overrun_ms() > 0) __builtin_trap();
    return outcome;
}

}  // namespace

// Input: link and call (byte 0), report length and area size (byte 1), then what
// the terminal sends.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const bool hid = (data[0] & 1) != 0;
    const auto report_length = static_cast<std::uint16_t>(250 + data[1] % 60);
    const Target target = target_for(static_cast<std::uint8_t>(data[0] >> 1), data[1]);
    const std::span input(data + 2, size - 2);

    // Two runs with different fillings tell which bytes were written: a written
    // byte cannot equal both fillings.
    std::vector<std::uint8_t> zeros(target.out_size);
    std::vector<std::uint8_t> ones(target.out_size);
    const Outcome first = run(target.call, input, hid, report_length, zeros, 0x00);
    const Outcome second = run(target.call, input, hid, report_length, ones, 0xFF);
    if (first.result != second.result || first.length != second.length) __builtin_trap();
    if (first.result != 0) return 0;
    std::size_t written = target.out_size;
    while (written > 0 && zeros[written - 1] == 0x00 && ones[written - 1] == 0xFF) --written;
    if (first.length > static_cast<long>(written)) __builtin_trap();

    // The same reply to the bare transaction, into the largest area: a call that
    // must hand over N bytes succeeds only on a reply that carried them.
    std::vector<std::uint8_t> reference(65530);
    const Outcome bare = run(bare_transaction, input, hid, report_length, reference, 0x00);
    if (bare.result != 0 || bare.length < static_cast<long>(target.required)) __builtin_trap();
    return 0;
}
