// The packet loop alone: a segment in memory, demultiplexed and checked, nothing written.
#include <benchmark/benchmark.h>

#include "ts/ts_segment.h"
#include "ts_content.h"

using namespace quorlin;

namespace {

void BM_Demultiplex(benchmark::State& state) {
    TsContent content;
    TsWriter writer;
    for (int picture = 0; picture < 250; ++picture) content.append_picture(writer);
    for (auto _ : state) {
        FileReader reader;
        reader.memory = writer.bytes;
        reader_start(reader);
        benchmark::DoNotOptimize(ts_process_segment(reader, {}, nullptr));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * writer.bytes.size()));
}

BENCHMARK(BM_Demultiplex)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
