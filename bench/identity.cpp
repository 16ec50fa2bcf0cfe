// Identity card work on the host: decoding one read reply into the result text
// (no photo), and a 2 MiB file to Base64, set against coreutils' `base64 -w0` on
// the same file in the same run.
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "identity/card_read.h"
#include "qz_32.h"

extern char** environ;

namespace {

using Bytes = std::vector<std::uint8_t>;

void put_field(Bytes& block, std::size_t offset, std::size_t bytes, std::u16string_view text) {
    for (std::size_t i = 0; i < bytes / 2; ++i) {
        const char16_t unit = i < text.size() ? text[i] : u' ';
        block[offset + 2 * i] = static_cast<std::uint8_t>(unit);
        block[offset + 2 * i + 1] = static_cast<std::uint8_t>(unit >> 8);
    }
}

// Read reply of mode 0: status 00 00 90, lengths, the text block, a photo of 1024 bytes.
Bytes read_reply(bool foreign) {
    Bytes block(256, 0);
    put_field(block, 0, 256, u"");
    if (foreign) {
        put_field(block, 0, 120, u"SMITH JOHN PAUL");
        put_field(block, 120, 2, u"1");
        put_field(block, 122, 30, u"USA110079060502");
        put_field(block, 152, 6, u"ZWE");  // the last row of the country table
        put_field(block, 158, 30, u"约翰·史密斯");
        put_field(block, 188, 16, u"20200105");
        put_field(block, 204, 16, u"20300104");
        put_field(block, 220, 16, u"19790605");
        put_field(block, 236, 4, u"01");
        put_field(block, 240, 8, u"1100");
        put_field(block, 248, 2, u"I");
    } else {
        put_field(block, 0, 30, u"欧阳娜娜");
        put_field(block, 30, 2, u"2");
        put_field(block, 32, 4, u"05");
        put_field(block, 36, 16, u"19920813");
        put_field(block, 52, 70, u"新疆乌鲁木齐市天山区解放北路１２号");
        put_field(block, 122, 36, u"65010219920813002X");
        put_field(block, 158, 30, u"乌鲁木齐市公安局天山分局");
        put_field(block, 188, 16, u"20150301");
        put_field(block, 204, 16, u"20350301");
    }
    Bytes reply{0x00, 0x00, 0x00, 0x00, 0x90, 0x01, 0x00, 0x04, 0x00};
    reply.insert(reply.end(), block.begin(), block.end());
    reply.resize(reply.size() + 1024, 0x5A);
    return reply;
}

void decode_record(benchmark::State& state) {
    const Bytes reply = read_reply(state.range(0) == 1);
    for (auto _ : state) {
        qz::identity::CardTexts texts;
        benchmark::DoNotOptimize(qz::identity::IDCardDecodeMsg(0, reply, nullptr, texts));
        benchmark::DoNotOptimize(texts.base_info.data());
    }
}
BENCHMARK(decode_record)->ArgName("foreign")->Arg(0)->Arg(1);

// A file of 2 MiB of random bytes, removed at the end of the benchmark.
class TwoMebibyteFile {
public:
    TwoMebibyteFile() {
        std::string pattern = "/tmp/qz32-bench-base64-XXXXXX";
        const int fd = mkstemp(pattern.data());
        path_ = pattern;
        std::mt19937 random(7);
        std::vector<char> bytes(2 << 20);
        for (char& b : bytes) b = static_cast<char>(random());
        if (fd < 0 || write(fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) std::abort();
        close(fd);
    }
    ~TwoMebibyteFile() { unlink(path_.c_str()); }
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

double seconds_since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// `base64 -w0 <file>` with its output to /dev/null, start to exit.
double coreutils_seconds(const std::string& path) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    char* argv[] = {const_cast<char*>("base64"), const_cast<char*>("-w0"), const_cast<char*>(path.c_str()), nullptr};
    const auto start = std::chrono::steady_clock::now();
    pid_t pid = 0;
    int status = 0;
    if (posix_spawnp(&pid, "base64", &actions, nullptr, argv, environ) != 0 || waitpid(pid, &status, 0) != pid ||
        !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        std::abort();
    const double seconds = seconds_since(start);
    posix_spawn_file_actions_destroy(&actions);
    return seconds;
}

// Time of GetFileBase64Buffer per iteration; coreutils' time on the same file in
// the counters, with the ratio coreutils / ours (above 1: ours is faster), and
// the cost of starting coreutils at all (the same command on an empty file).
void file_base64_2mib(benchmark::State& state) {
    const TwoMebibyteFile file;
    std::vector<char> text(2'796'204);
    double ours = 0, theirs = 0, start_only = 0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(GetFileBase64Buffer(file.path().c_str(), text.data()));
        const double seconds = seconds_since(start);
        state.SetIterationTime(seconds);
        ours += seconds;
        theirs += coreutils_seconds(file.path());
        start_only += coreutils_seconds("/dev/null");
    }
    const auto n = static_cast<double>(state.iterations());
    state.counters["ours_ms"] = ours / n * 1e3;
    state.counters["coreutils_ms"] = theirs / n * 1e3;
    state.counters["coreutils_start_ms"] = start_only / n * 1e3;
    state.counters["coreutils_per_ours"] = theirs / ours;
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * (2 << 20));
}
BENCHMARK(file_base64_2mib)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
