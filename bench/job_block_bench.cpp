// A selection of 10 MB on its way into a job's block, against one copy of the same bytes and
// against a vector that grows with each field.

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "driver/job_block.h"
#include "foundation/dyn_mem_stream.h"

namespace {

constexpr std::uint32_t kSelectionUnits = 5 << 20;  // 10 MB

void FillJob(ConversionJob& job) {
    JobItem* item = job.AddItem();
    const bool isFilled = item && item->SelectionHtml.AppendRepeated('x', kSelectionUnits) &&
                          item->Source.Assign(TEXT("http://host/a/page")) &&
                          item->OutputFile.Assign(TEXT("C:\\Users\\someone\\Documents\\page.pdf"));
    if (!isFilled) std::abort();
}

/// Serialises into a stream of the given growth; the counters say what the stream reserved beyond
/// the block, in bytes.
void Serialise(benchmark::State& state, std::int64_t growth) {
    ConversionJob job;
    FillJob(job);
    std::int64_t size = 0;
    std::int64_t beyond = 0;
    for (auto _ : state) {
        AUX::DynMemStream stream;
        if (AUX::IsFailure(stream.Open(
                0, growth ? growth : static_cast<std::int64_t>(MeasureJobBlock(job)))) ||
            !job.Serialise(stream)) {
            state.SkipWithError("cannot serialise");
            break;
        }
        size = stream.GetSize();
        beyond = stream.GetAllocated() - size;
        benchmark::DoNotOptimize(stream.GetData());
    }
    state.SetBytesProcessed(state.iterations() * size);
    state.counters["beyond_block"] = static_cast<double>(beyond);
}
BENCHMARK_CAPTURE(Serialise, measured_first, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Serialise, growing_by_half, -2)->Unit(benchmark::kMillisecond);

void PublishShared(benchmark::State& state) {
    ConversionJob job;
    FillJob(job);
    for (auto _ : state) {
        if (!job.PublishShared()) {
            state.SkipWithError("cannot publish");
            break;
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(MeasureJobBlock(job)));
}
BENCHMARK(PublishShared)->Unit(benchmark::kMillisecond);

void PeerOneCopy(benchmark::State& state) {
    ConversionJob job;
    FillJob(job);
    const std::size_t size = MeasureJobBlock(job);
    const std::vector<char> source(size, 'x');
    for (auto _ : state) {
        const std::unique_ptr<char[]> copy(new char[size]);
        std::memcpy(copy.get(), source.data(), size);
        benchmark::DoNotOptimize(copy.get());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}
BENCHMARK(PeerOneCopy)->Unit(benchmark::kMillisecond);

void PeerVectorAppend(benchmark::State& state) {
    const std::vector<char> selection(std::size_t{kSelectionUnits} * 2, 'x');
    const std::vector<char> field(40, 'f');
    std::size_t beyond = 0;
    for (auto _ : state) {
        std::vector<char> block;
        for (int i = 0; i < 5; ++i) block.insert(block.end(), field.begin(), field.end());
        block.insert(block.end(), selection.begin(), selection.end());
        for (int i = 0; i < 5; ++i) block.insert(block.end(), field.begin(), field.end());
        beyond = block.capacity() - block.size();
        benchmark::DoNotOptimize(block.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(selection.size()));
    state.counters["beyond_block"] = static_cast<double>(beyond);
}
BENCHMARK(PeerVectorAppend)->Unit(benchmark::kMillisecond);

}  // namespace
