// Throughput of the E-AC-3 / AC-3 analyzer under its default settings, wanted at 1.5 GB/s on one core for real streams.
// What limits it: about 130 ns of fixed work per frame (header, BSI, comparison with the timeslice before), so that
// frames of 256 bytes come to about 1.7 GB/s; from 1 KiB on, the copy into word order and the CRC. A call costs about
// as much as two frames, most of it for clearing the summary. A real stream can be given with ZTPINFO_BENCH_FILE;
// without one, a stream of frames with correct check words is made here.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

#include "ztpinfo/crc16.h"
#include "ztpinfo/ztpinfo.h"

using namespace quorlin;

namespace {

constexpr size_t STREAM_BYTES = 8 << 20;
constexpr size_t PES_BYTES = 4096;

using Bytes = std::vector<uint8_t>;

// A 5.1 E-AC-3 frame of `words` words with mixing and informational metadata, filled with noise.
Bytes noise_frame(size_t words) {
    constexpr uint8_t START[] = {0x0B, 0x77, 0x00, 0x00, 0x3F, 0x86, 0x1A, 0x39, 0x80, 0x8E, 0xE6, 0x00};
    std::vector<uint16_t> frame(words);
    uint32_t noise = 1;
    for (uint16_t& word : frame) word = static_cast<uint16_t>((noise = noise * 1664525 + 1013904223) >> 16);
    for (size_t i = 0; i < sizeof START / 2; ++i)
        frame[i] = static_cast<uint16_t>(START[2 * i] << 8 | START[2 * i + 1]);
    frame[1] = static_cast<uint16_t>(words - 1);
    frame.back() = crc16(0, std::span<const uint16_t>(frame).subspan(1, words - 2));
    Bytes bytes;
    for (const uint16_t word : frame) {
        bytes.push_back(static_cast<uint8_t>(word >> 8));
        bytes.push_back(static_cast<uint8_t>(word & 0xFF));
    }
    return bytes;
}

// `unit` again and again up to about STREAM_BYTES.
Bytes repeat(const Bytes& unit) {
    Bytes stream;
    while (stream.size() < STREAM_BYTES) stream.insert(stream.end(), unit.begin(), unit.end());
    return stream;
}

void analyse(benchmark::State& state, const Bytes& stream, size_t call_bytes) {
    const std::span<const uint8_t> bytes(stream);
    for (auto _ : state) {
        const ZtpInfoPtr info(ztpinfo_open());
        for (size_t at = 0; at < bytes.size(); at += call_bytes) {
            ZtpStreamSummary summary;
            const size_t left = bytes.size() - at;
            const int result =
                ztpinfo_process(bytes.subspan(at, left < call_bytes ? left : call_bytes), summary, info.get());
            benchmark::DoNotOptimize(result);
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(stream.size()));
}

// Frames of state.range(0) bytes, the whole stream in one call.
void BM_one_call(benchmark::State& state) {
    analyse(state, repeat(noise_frame(static_cast<size_t>(state.range(0)) / 2)), SIZE_MAX);
}
BENCHMARK(BM_one_call)->Arg(256)->Arg(768)->Arg(1536)->Arg(4096);

// The same in calls of about a PES payload each.
void BM_pes_calls(benchmark::State& state) {
    const size_t frame = static_cast<size_t>(state.range(0));
    analyse(state, repeat(noise_frame(frame / 2)), (PES_BYTES / frame) * frame);
}
BENCHMARK(BM_pes_calls)->Arg(256)->Arg(768)->Arg(1536)->Arg(4096);

void BM_file(benchmark::State& state) {
    const char* path = std::getenv("ZTPINFO_BENCH_FILE");
    if (path == nullptr) {
        state.SkipWithError("ZTPINFO_BENCH_FILE is not set");
        return;
    }
    std::ifstream file(path, std::ios::binary);
    const Bytes bytes{std::istreambuf_iterator<char>(file), {}};
    if (bytes.empty()) {
        state.SkipWithError("the file cannot be read");
        return;
    }
    analyse(state, repeat(bytes), SIZE_MAX);
}
BENCHMARK(BM_file);

using Crc = uint16_t(uint16_t crc, std::span<const uint16_t> words);

void crc_form(benchmark::State& state, Crc* crc) {
    const std::vector<uint16_t> words(768, 0x5A3C);
    for (auto _ : state) benchmark::DoNotOptimize(crc(0, words));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(words.size() * 2));
}
BENCHMARK_CAPTURE(crc_form, table, crc16_table);
BENCHMARK_CAPTURE(crc_form, slicing, crc16_slicing);
BENCHMARK_CAPTURE(crc_form, clmul, crc16_clmul);

}  // namespace

BENCHMARK_MAIN();
