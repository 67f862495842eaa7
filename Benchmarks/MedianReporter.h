// The medians of Google Benchmark's repetitions, for claims about their ratios.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace tallowbrook::bench {

// Keeps the medians beside the usual output.
class MedianReporter : public benchmark::ConsoleReporter {
 public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& run : runs)
            if (run.aggregate_name == "median")
                medians_[run.run_name.function_name + run.run_name.args] =
                    isTimedByTheClock(run) ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(runs);
    }

    // Of benchmarks by their names, with arguments directly behind them.
    double ratio(const std::string& of, const std::string& to) const {
        return medians_.at(of) / medians_.at(to);
    }

 private:
    // What waits for the disk is; what only computes is not, so that other programs do not count.
    static bool isTimedByTheClock(const Run& run) {
        return run.run_name.time_type.find("real_time") != std::string::npos;
    }

    std::map<std::string, double> medians_;
};

}  // namespace tallowbrook::bench
