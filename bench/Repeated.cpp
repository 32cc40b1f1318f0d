#include "bench/Repeated.h"

#include "bench/Figures.h"

#include <benchmark/benchmark.h>

#include <map>
#include <vector>

namespace
{

/// Keeps the time per iteration of every repetition and prints nothing.
class KeepTimes : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            HasFailed = HasFailed || run.error_occurred;
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                Times[run.run_name.function_name].push_back(run.GetAdjustedRealTime());
        }
    }

    std::map<std::string, std::vector<double>> Times;
    bool HasFailed = false;
};

} // namespace

int Bench::RunRepeated(int argc, char** argv, const std::string& prefix)
{
    std::vector<char*> arguments(argv, argv + argc);
    char interleave[] = "--benchmark_enable_random_interleaving=true";
    char repeat[] = "--benchmark_repetitions=11";
    char shorten[] = "--benchmark_min_time=0.1";
    arguments.insert(arguments.begin() + 1, {interleave, repeat, shorten});
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    KeepTimes reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (auto& [name, times] : reporter.Times)
        Figure(prefix + "." + name, Median(times));
    return reporter.HasFailed ? 1 : 0;
}
