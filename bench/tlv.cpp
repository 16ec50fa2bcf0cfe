// TLV search speed: a full 500-byte record, and a deep nest of templates.
#include <benchmark/benchmark.h>

#include <array>
#include <vector>

#include "bank/tlv.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

void append(Bytes& bytes, std::initializer_list<std::uint8_t> more) {
    for (std::uint8_t byte : more) bytes.push_back(byte);
}

// A record of 500 bytes: template 70 of 494 bytes with small items and, last, the
// wanted 5A; then the status words.
Bytes full_record() {
    constexpr std::size_t inner_size = 494;
    constexpr std::size_t pan_item = 12;
    Bytes record;
    append(record, {0x70, 0x82, inner_size >> 8, inner_size & 0xFF});
    const std::size_t filler_end = record.size() + inner_size - pan_item;
    while (record.size() + 5 <= filler_end) append(record, {0x9F, 0x4D, 0x02, 0x0B, 0x0A});
    while (record.size() < filler_end) append(record, {0x00, 0x00});
    append(record, {0x5A, 0x0A, 0x62, 0x22, 0x02, 0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x3F, 0x90, 0x00});
    return record;
}

// `depth` constructed items around the wanted 5A: heads worked out from the
// inside, written from the outside.
Bytes nest(int depth) {
    std::vector<Bytes> heads;
    std::size_t size = 3;
    for (int level = 0; level < depth; ++level) {
        Bytes head{0xE1};
        if (size >= 0x100) append(head, {0x82, static_cast<std::uint8_t>(size >> 8)});
        else if (size >= 0x80) head.push_back(0x81);
        head.push_back(static_cast<std::uint8_t>(size));
        size += head.size();
        heads.push_back(head);
    }
    Bytes data;
    for (auto head = heads.rbegin(); head != heads.rend(); ++head) data.insert(data.end(), head->begin(), head->end());
    append(data, {0x5A, 0x01, 0x77});
    return data;
}

void search(benchmark::State& state, const Bytes& data, const Bytes& tag) {
    std::array<std::uint8_t, 500> value{};
    std::uint16_t length = 0;
    const bool expected = tag.size() == 1;  // 5A is there, 5F20 is not
    if ((qz::bank::TlvFind(data, tag, value, length) == qz::bank::TlvResult::found) != expected || data.size() > 500)
        state.SkipWithError("the data are not what the benchmark means to measure");
    for (auto _ : state) {
        auto result = qz::bank::TlvFind(data, tag, value, length);
        benchmark::DoNotOptimize(result);
        benchmark::DoNotOptimize(value);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * data.size()));
}

void BM_TlvFind_Record500(benchmark::State& state) { search(state, full_record(), {0x5A}); }
void BM_TlvFind_Record500_Missing(benchmark::State& state) { search(state, full_record(), {0x5F, 0x20}); }
void BM_TlvFind_Nested(benchmark::State& state) { search(state, nest(static_cast<int>(state.range(0))), {0x5A}); }

}  // namespace

BENCHMARK(BM_TlvFind_Record500);
BENCHMARK(BM_TlvFind_Record500_Missing);
BENCHMARK(BM_TlvFind_Nested)->Arg(8)->Arg(60)->Arg(166);  // 166 levels fill 498 bytes
