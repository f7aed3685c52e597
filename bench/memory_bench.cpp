// The library's allocator beside glibc's, mimalloc, jemalloc and tcmalloc, all in this one process.
// A table at the end gives each one's best time as a ratio to glibc's, and beside it what the
// library aims at.
//
//   memory_bench [--footprint=NAME] [options of Google Benchmark]
//
// --footprint only prints what one allocator holds for each live byte after a long run; the table
// asks it of a fresh process for each.

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>
#include <unistd.h>

#include "bench/allocators.h"
#include "bench/memory_workloads.h"

namespace {

using namespace bench;

struct Workload {
    const char* name;
    double aim;  ///< The library's time by glibc's, at most; 0 where none is set.
};
constexpr Workload kWorkloads[] = {
    {"pair", 2.0},          {"lifo", 0},         {"fifo", 0},         {"mix_10k", 0.7},
    {"mix_500k", 0.5},      {"larson_2", 1.0},   {"larson_4", 1.0},   {"producer", 1.0},
    {"realloc_steps", 0.9}, {"resize_steps", 0}, {"thread_churn", 0},
};
constexpr const char* kFootprint = "footprint";
constexpr double kFootprintAim = 1.09;

constexpr std::array kAllocators = {Library::kName, Glibc::kName, Mimalloc::kName, Jemalloc::kName,
                                    Tcmalloc::kName};

template <class A>
benchmark::internal::Benchmark* Add(const char* workload, void (*run)(benchmark::State&)) {
    const std::string name = std::string(workload) + '/' + A::kName;
    return benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMicrosecond);
}

template <class A>
void AddAll() {
    Add<A>("pair", Pair<A>);
    Add<A>("lifo", InOrder<A, Order::Lifo>);
    Add<A>("fifo", InOrder<A, Order::Fifo>);
    Add<A>("mix_10k", RandomMix<A, 10'000>);
    Add<A>("mix_500k", RandomMix<A, 500'000>);
    Add<A>("larson_2", Larson<A>)->Threads(2)->UseRealTime();
    Add<A>("larson_4", Larson<A>)->Threads(4)->UseRealTime();
    Add<A>("producer", ProducerConsumer<A>)->Threads(2)->UseRealTime();
    Add<A>("realloc_steps", Grow<A, false>);
    Add<A>("resize_steps", Grow<A, true>);
    Add<A>("thread_churn", ThreadChurn<A>)->UseRealTime();
}

/// Keeps the best time of each workload and allocator.
class Best : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
            // The time of the processor where there is one thread: others use the machine too.
            const double time = run.run_name.time_type.empty() ? run.GetAdjustedCPUTime()
                                                               : run.GetAdjustedRealTime();
            double& best = times_.try_emplace(run.run_name.function_name, time).first->second;
            best = std::min(best, time);
        }
    }
    [[nodiscard]] double Of(const char* workload, const char* allocator) const {
        const auto found = times_.find(std::string(workload) + '/' + allocator);
        return found == times_.end() ? 0 : found->second;
    }

private:
    std::map<std::string, double> times_;
};

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

void PrintHead(const char* title) {
    std::printf("\n%-16s", title);
    for (const char* allocator : kAllocators) std::printf("%10s", allocator);
    std::printf("%10s\n", "aim");
}

void PrintTable(const Best& best) {
    PrintHead("time by glibc's");
    for (const Workload& workload : kWorkloads) {
        const double measure = best.Of(workload.name, Glibc::kName);
        if (measure == 0) continue;  // Filtered out.
        std::printf("%-16s", workload.name);
        for (const char* allocator : kAllocators) {
            std::printf("%10.2f", best.Of(workload.name, allocator) / measure);
        }
        workload.aim > 0 ? std::printf("%10.2f\n", workload.aim) : std::printf("%10s\n", "-");
    }
    PrintHead("held by live");
    std::printf("%-16s", kFootprint);
    for (const char* allocator : kAllocators) std::printf("%10.3f", FootprintOf(allocator));
    std::printf("%10.2f\n", kFootprintAim);
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
    // Repetitions of all, mixed, so that a busy moment of the machine spares each its best time.
    std::vector<std::string> options = {arguments[0], "--benchmark_min_time=0.1",
                                        "--benchmark_repetitions=5",
                                        "--benchmark_enable_random_interleaving=true"};
    options.insert(options.end(), arguments + 1, arguments + count);
    std::vector<char*> pointers;
    for (std::string& option : options) pointers.push_back(option.data());
    int left = static_cast<int>(pointers.size());
    benchmark::Initialize(&left, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(left, pointers.data())) return 2;

    AddAll<Library>();
    AddAll<Glibc>();
    AddAll<Mimalloc>();
    AddAll<Jemalloc>();
    AddAll<Tcmalloc>();
    Best best;
    benchmark::RunSpecifiedBenchmarks(&best);
    PrintTable(best);
}
