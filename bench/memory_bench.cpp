// The library's allocator beside glibc's, mimalloc, jemalloc and tcmalloc, all in this one process.
// A table at the end gives each one's best time as a ratio to glibc's, and beside it what the
// library aims at.
//
//   memory_bench [--footprint=NAME] [options of Google Benchmark]
//
// --footprint only prints what one allocator holds for each live byte after a long run; the table
// asks it of a fresh process for each.

#include <cstdio>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

#include "bench/allocators.h"
#include "bench/memory_workloads.h"
#include "bench/ratio_table.h"

namespace {

using namespace bench;

struct Workload {
    const char* name;
    double aim;  ///< The library's time by glibc's, at most; 0 where none is set.
};
constexpr Workload kWorkloads[] = {
    {"pair", 2.0},     {"pair_alone", 0},      {"lifo", 0},         {"fifo", 0},
    {"mix_10k", 0.7},  {"mix_500k", 0.5},      {"larson_2", 1.0},   {"larson_4", 1.0},
    {"producer", 1.0}, {"realloc_steps", 0.9}, {"resize_steps", 0}, {"thread_churn", 0},
};
constexpr double kFootprintAim = 1.09;

const std::vector<const char*> kAllocators = {Library::kName, Glibc::kName, Mimalloc::kName,
                                              Jemalloc::kName, Tcmalloc::kName};

template <class A>
void AddAll() {
    RatioTable::Add("pair", A::kName, Pair<A, false>);
    RatioTable::Add("pair_alone", A::kName, Pair<A, true>);
    RatioTable::Add("lifo", A::kName, InOrder<A, Order::Lifo>);
    RatioTable::Add("fifo", A::kName, InOrder<A, Order::Fifo>);
    RatioTable::Add("mix_10k", A::kName, RandomMix<A, 10'000>);
    RatioTable::Add("mix_500k", A::kName, RandomMix<A, 500'000>);
    RatioTable::Add("larson_2", A::kName, Larson<A>)->Threads(2)->UseRealTime();
    RatioTable::Add("larson_4", A::kName, Larson<A>)->Threads(4)->UseRealTime();
    RatioTable::Add("producer", A::kName, ProducerConsumer<A>)->Threads(2)->UseRealTime();
    RatioTable::Add("realloc_steps", A::kName, Grow<A, false>);
    RatioTable::Add("resize_steps", A::kName, Grow<A, true>);
    RatioTable::Add("thread_churn", A::kName, ThreadChurn<A>)->UseRealTime();
}

std::size_t ResidentBytes() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::FILE* const file = std::fopen("/proc/self/statm", "r");
    if (!file || std::fscanf(file, "%zu %zu", &total, &resident) != 2) std::abort();
    std::fclose(file);
    return resident * static_cast<std::size_t>(getpagesize());
}

template <class A>
void PrintFootprint(std::string_view name) {
    if (name != A::kName) return;
    constexpr std::size_t kLive = 500'000;
    // The lists of the workload itself: a pointer and a size for each block.
    constexpr std::size_t kOwn = kLive * (sizeof(void*) + sizeof(std::uint32_t));
    const std::size_t before = ResidentBytes();
    Blocks<A> blocks(kLive);
    blocks.Replace(10'000'000);
    std::printf("%.3f\n", static_cast<double>(ResidentBytes() - before - kOwn) /
                              static_cast<double>(blocks.LiveBytes()));
}

double FootprintOf(const char* allocator) {
    const std::string command =
        "/proc/" + std::to_string(getpid()) + "/exe --footprint=" + allocator;
    std::FILE* const pipe = popen(command.c_str(), "r");
    double ratio = 0;
    if (!pipe || std::fscanf(pipe, "%lf", &ratio) != 1) std::abort();
    pclose(pipe);
    return ratio;
}

void PrintTable(const RatioTable& table) {
    RatioTable::PrintHead("time by glibc's", kAllocators);
    for (const Workload& workload : kWorkloads) {
        table.PrintRow(workload.name, kAllocators, Glibc::kName, workload.aim);
    }
    RatioTable::PrintHead("held by live", kAllocators);
    std::printf("%-16s", "footprint");
    for (const char* allocator : kAllocators) std::printf("%10.3f", FootprintOf(allocator));
    RatioTable::PrintAim(kFootprintAim);
}

}  // namespace

int main(int count, char** arguments) {
    LoadPeers(arguments);
    constexpr std::string_view kOption = "--footprint=";
    if (count == 2 && std::string_view(arguments[1]).starts_with(kOption)) {
        const std::string_view name = std::string_view(arguments[1]).substr(kOption.size());
        PrintFootprint<Library>(name);
        PrintFootprint<Glibc>(name);
        PrintFootprint<Mimalloc>(name);
        PrintFootprint<Jemalloc>(name);
        PrintFootprint<Tcmalloc>(name);
        return 0;
    }
    AddAll<Library>();
    AddAll<Glibc>();
    AddAll<Mimalloc>();
    AddAll<Jemalloc>();
    AddAll<Tcmalloc>();
    RatioTable table;
    if (!table.RunAll(count, arguments)) return 2;
    PrintTable(table);
}
