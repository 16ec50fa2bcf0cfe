// Software DES and hex conversions, with OpenSSL's single-DES ECB as the yardstick.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/des.h>

#include <benchmark/benchmark.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include "qz_32.h"
#include "reader/des.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::array<unsigned char, 8> key{0x13, 0x34, 0x57, 0x79, 0x9B, 0xBC, 0xDF, 0xF1};

// OpenSSL's block type is a non-const array even where it only reads.
DES_cblock* as_block(const unsigned char* bytes) {
    return reinterpret_cast<DES_cblock*>(const_cast<unsigned char*>(bytes));
}

Bytes random_bytes(std::size_t count) {
    std::mt19937 rng(42);
    Bytes bytes(count);
    for (auto& byte : bytes) byte = static_cast<unsigned char>(rng());
    return bytes;
}

DES_key_schedule openssl_schedule() {
    DES_key_schedule schedule;
    DES_set_key_unchecked(as_block(key.data()), &schedule);
    return schedule;
}

// ---- One block, the key given with every call ----------------------------------------

void des_block_encrypt(benchmark::State& state) {
    std::array<unsigned char, 8> block{};
    for (auto _ : state) {
        qz::reader::des_block(block.data(), key.data(), qz::reader::des_mode_encrypt);
        benchmark::DoNotOptimize(block);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * 8);
}
BENCHMARK(des_block_encrypt);

void openssl_block_with_key_setup(benchmark::State& state) {
    DES_cblock block{};
    for (auto _ : state) {
        DES_key_schedule schedule;
        DES_set_key_unchecked(as_block(key.data()), &schedule);
        DES_ecb_encrypt(&block, &block, &schedule, DES_ENCRYPT);
        benchmark::DoNotOptimize(block);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * 8);
}
BENCHMARK(openssl_block_with_key_setup);

void openssl_block_scheduled(benchmark::State& state) {
    DES_key_schedule schedule = openssl_schedule();
    DES_cblock block{};
    for (auto _ : state) {
        DES_ecb_encrypt(&block, &block, &schedule, DES_ENCRYPT);
        benchmark::DoNotOptimize(block);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * 8);
}
BENCHMARK(openssl_block_scheduled);

// ---- Whole buffers, one key schedule per buffer ----------------------------------------

void rf_encrypt_buffer(benchmark::State& state) {
    const Bytes input = random_bytes(static_cast<std::size_t>(state.range(0)));
    Bytes output(input.size());
    for (auto _ : state) {
        rf_encrypt(key.data(), input.data(), static_cast<unsigned int>(input.size()), output.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * input.size()));
}
BENCHMARK(rf_encrypt_buffer)->Arg(4 << 10)->Arg(64 << 10);

void openssl_ecb_buffer(benchmark::State& state) {
    const Bytes input = random_bytes(static_cast<std::size_t>(state.range(0)));
    Bytes output(input.size());
    for (auto _ : state) {
        DES_key_schedule schedule = openssl_schedule();
        for (std::size_t at = 0; at < input.size(); at += 8)
            DES_ecb_encrypt(as_block(&input[at]), as_block(&output[at]), &schedule, DES_ENCRYPT);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * input.size()));
}
BENCHMARK(openssl_ecb_buffer)->Arg(4 << 10)->Arg(64 << 10);

// ---- Hex text, 1 MiB of bytes ----------------------------------------------------------

constexpr std::size_t hex_bytes = 1 << 20;

void hex_asc_mebibyte(benchmark::State& state) {
    const Bytes source = random_bytes(hex_bytes);
    std::string text(2 * hex_bytes + 1, '\0');
    for (auto _ : state) {
        hex_asc(source.data(), text.data(), hex_bytes);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * hex_bytes));
}
BENCHMARK(hex_asc_mebibyte);

void asc_hex_mebibyte(benchmark::State& state) {
    const Bytes source = random_bytes(hex_bytes);
    std::string text(2 * hex_bytes + 1, '\0');
    hex_asc(source.data(), text.data(), hex_bytes);
    Bytes target(hex_bytes + 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(asc_hex(text.data(), target.data(), hex_bytes));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * hex_bytes));
}
BENCHMARK(asc_hex_mebibyte);

}  // namespace
