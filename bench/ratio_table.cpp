#include "bench/ratio_table.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace bench {

benchmark::internal::Benchmark* RatioTable::Add(const std::string& workload, const char* contender,
                                                std::function<void(benchmark::State&)> run) {
    const std::string name = workload + '/' + contender;
    return benchmark::RegisterBenchmark(name.c_str(), std::move(run))
        ->Unit(benchmark::kMicrosecond);
}

bool RatioTable::RunAll(int count, char** arguments) {
    std::vector<std::string> options = {arguments[0], "--benchmark_min_time=0.1",
                                        "--benchmark_repetitions=5",
                                        "--benchmark_enable_random_interleaving=true"};
    options.insert(options.end(), arguments + 1, arguments + count);
    std::vector<char*> pointers;
    for (std::string& option : options) pointers.push_back(option.data());
    int left = static_cast<int>(pointers.size());
    benchmark::Initialize(&left, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(left, pointers.data())) return false;
    benchmark::RunSpecifiedBenchmarks(this);
    return true;
}

void RatioTable::ReportRuns(const std::vector<Run>& runs) {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
        if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
        // The time of the processor where there is one thread: others use the machine too.
        const double time =
            run.run_name.time_type.empty() ? run.GetAdjustedCPUTime() : run.GetAdjustedRealTime();
        double& best = times_.try_emplace(run.run_name.function_name, time).first->second;
        best = std::min(best, time);
    }
}

double RatioTable::Of(const char* workload, const char* contender) const {
    const auto found = times_.find(std::string(workload) + '/' + contender);
    return found == times_.end() ? 0 : found->second;
}

void RatioTable::PrintHead(const char* title, const std::vector<const char*>& contenders) {
    std::printf("\n%-16s", title);
    for (const char* contender : contenders) std::printf("%10s", contender);
    std::printf("%10s\n", "aim");
}

void RatioTable::PrintRow(const char* workload, const std::vector<const char*>& contenders,
                          const char* measure, double aim) const {
    const double unit = Of(workload, measure);
    if (unit == 0) return;
    std::printf("%-16s", workload);
    for (const char* contender : contenders) std::printf("%10.2f", Of(workload, contender) / unit);
    PrintAim(aim);
}

void RatioTable::PrintAim(double aim) {
    aim > 0 ? std::printf("%10.2f\n", aim) : std::printf("%10s\n", "-");
}

}  // namespace bench
