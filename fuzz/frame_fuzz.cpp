// Reply frames from a hostile terminal, on both links: whatever arrives, the
// transaction must not read or write out of bounds, hang, or hand over more
// than its reply area.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "link/link_state.h"
#include "link/transact.h"
#include "platform/platform.h"

namespace {

// Serves the fuzz input as feature reports (first byte of each chunk says its
// size) or as a serial byte stream; time moves on with every empty read.
class HostileTerminal final : public qz::platform::Platform {
public:
    explicit HostileTerminal(std::span<const std::uint8_t> input) : input_(input) {}

    std::uint32_t tick_ms() override { return now_; }
    void sleep_ms(std::uint32_t ms) override { now_ += ms; }
    qz::platform::LocalTime local_time() override { return {}; }
    std::optional<std::string> hid_path(int) override { return std::nullopt; }
    int hid_open(const std::string&) override { return -1; }
    std::optional<qz::platform::HidIdentity> hid_identity(int) override { return std::nullopt; }
    std::optional<std::uint16_t> hid_feature_report_length(int) override { return std::nullopt; }
    bool hid_set_feature(int, std::span<const std::uint8_t>) override { return true; }
    bool hid_get_feature(int, std::span<std::uint8_t> report) override {
        if (at_ >= input_.size()) {
            now_ += 50;
            return false;
        }
        const std::size_t announced = input_[at_++];
        const std::size_t size = std::min(announced, input_.size() - at_);
        std::memcpy(report.data(), input_.data() + at_, std::min(size, report.size()));
        at_ += size;
        return true;
    }
    int serial_open(const std::string&, const qz::platform::SerialSettings&) override { return -21; }
    void serial_purge(int) override {}
    bool serial_write(int, std::uint8_t) override { return true; }
    qz::platform::ByteRead serial_read(int, std::uint8_t& byte) override {
        if (at_ >= input_.size()) {
            now_ += 50;
            return qz::platform::ByteRead::timed_out;
        }
        byte = input_[at_++];
        return qz::platform::ByteRead::received;
    }
    bool close(int) override { return true; }

private:
    std::span<const std::uint8_t> input_;
    std::size_t at_ = 0;
    std::uint32_t now_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    HostileTerminal terminal({data + 2, size - 2});
    qz::platform::install(&terminal);
    auto& link = qz::link::link_state();
    link.kind = (data[0] & 1) ? qz::link::LinkKind::hid : qz::link::LinkKind::serial;
    link.hid_report_length = static_cast<std::uint16_t>(250 + data[1] % 60);
    qz::link::set_link_timeouts(200, 0);

    // A reply area of its own size on the heap, so that AddressSanitizer sees any overrun.
    const std::size_t capacity = data[1];
    std::vector<std::uint8_t> reply(capacity);
    int length = 0;
    const std::uint8_t payload[] = {0x00, 0x01, 0x00};
    const int result = qz::link::dev_transact(3, payload, length, reply);
    if (result == 0 && length > static_cast<int>(capacity)) __builtin_trap();
    qz::platform::install(nullptr);
    return 0;
}
