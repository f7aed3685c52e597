#pragma once

#include <benchmark/benchmark.h>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace bench {

/// Reports to the console, and keeps the best time of each benchmark "workload/contender", so that
/// a table of ratios can follow.
class RatioTable : public benchmark::ConsoleReporter {
public:
    /// Registers one: the workload's and the contender's name, then what runs.
    static benchmark::internal::Benchmark* Add(const std::string& workload, const char* contender,
                                               std::function<void(benchmark::State&)> run);

    /// Runs all that the options select. Each runs in repetitions mixed with the others', so that a
    /// busy moment of the machine spares each its best time. \return false for bad options.
    bool RunAll(int count, char** arguments);

    /// Prints the contenders' names, and "aim".
    static void PrintHead(const char* title, const std::vector<const char*>& contenders);

    /// Prints each contender's time by that of `measure`; nothing if it did not run.
    /// \param aim  Of the first contender, at most; 0 if none is set.
    void PrintRow(const char* workload, const std::vector<const char*>& contenders,
                  const char* measure, double aim) const;

    static void PrintAim(double aim);

    void ReportRuns(const std::vector<Run>& runs) override;

private:
    [[nodiscard]] double Of(const char* workload, const char* contender) const;

    std::map<std::string, double> times_;
};

}  // namespace bench
