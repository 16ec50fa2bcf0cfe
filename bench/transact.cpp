// Host overhead of one transaction (frame build, send, receive, check) against a
// terminal in the same process that answers at once and costs nothing.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <deque>
#include <vector>

#include "link/link_state.h"
#include "link/transact.h"
#include "platform/platform.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// Answers every request with status 0 and `reply_data` bytes of data; time stands still.
class InstantTerminal final : public qz::platform::Platform {
public:
    explicit InstantTerminal(std::size_t reply_data) {
        Bytes payload(reply_data + 3, 0x5A);
        payload[0] = payload[1] = payload[2] = 0;
        reply_ = {0x02, static_cast<std::uint8_t>(payload.size() >> 8), static_cast<std::uint8_t>(payload.size())};
        std::uint8_t bcc = 0;
        for (auto b : payload) bcc ^= b;
        reply_.insert(reply_.end(), payload.begin(), payload.end());
        reply_.push_back(bcc);
        reply_.push_back(0x03);
    }

    std::uint32_t tick_ms() override { return 0; }
    void sleep_ms(std::uint32_t) override {}
    qz::platform::LocalTime local_time() override { return {}; }
    std::optional<std::string> hid_path(int) override { return std::nullopt; }
    int hid_open(const std::string&) override { return -1; }
    std::optional<qz::platform::HidIdentity> hid_identity(int) override { return std::nullopt; }
    std::optional<std::uint16_t> hid_feature_report_length(int) override { return std::nullopt; }

    bool hid_set_feature(int, std::span<const std::uint8_t> report) override {
        // A request of one report is whole; the reply is then ready.
        (void)report;
        next_piece_ = 0;
        return true;
    }
    bool hid_get_feature(int, std::span<std::uint8_t> report) override {
        const std::size_t at = next_piece_ * 254;
        const std::size_t piece = std::min<std::size_t>(254, reply_.size() - at);
        std::copy_n(reply_.begin() + static_cast<std::ptrdiff_t>(at), piece, report.begin() + 1);
        ++next_piece_;
        return true;
    }

    int serial_open(const std::string&, const qz::platform::SerialSettings&) override { return -21; }
    void serial_purge(int) override { next_byte_ = 0; }
    bool serial_write(int, std::uint8_t) override { return true; }
    qz::platform::ByteRead serial_read(int, std::uint8_t& byte) override {
        byte = reply_[next_byte_++];
        return qz::platform::ByteRead::received;
    }
    bool close(int) override { return true; }

private:
    Bytes reply_;
    std::size_t next_piece_ = 0;
    std::size_t next_byte_ = 0;
};

void run(benchmark::State& state, qz::link::LinkKind kind) {
    const auto reply_data = static_cast<std::size_t>(state.range(0));
    InstantTerminal terminal(reply_data);
    qz::platform::install(&terminal);
    qz::link::link_state().kind = kind;
    qz::link::link_state().hid_report_length = 256;
    qz::link::set_link_timeouts(5000, 0);
    const Bytes payload{0x00, 0x01, 0x00};
    std::vector<std::uint8_t> reply(reply_data + 16);
    int length = 0;
    for (auto _ : state) {
        const int result = qz::link::dev_transact(3, payload, length, reply);
        if (result != 0) state.SkipWithError("transaction failed");
        benchmark::DoNotOptimize(reply.data());
    }
    qz::platform::install(nullptr);
    qz::link::reset_link_state();
}

void BM_TransactHid(benchmark::State& state) { run(state, qz::link::LinkKind::hid); }
void BM_TransactSerial(benchmark::State& state) { run(state, qz::link::LinkKind::serial); }

BENCHMARK(BM_TransactHid)->Arg(16)->Arg(240)->Arg(1000);
BENCHMARK(BM_TransactSerial)->Arg(16)->Arg(240)->Arg(1000);

}  // namespace
