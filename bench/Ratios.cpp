#include "bench/Ratios.h"

#include <sched.h>

#include <algorithm>
#include <cstdio>
#include <map>

namespace
{

/// Keeps the time per iteration of every repetition.
class KeepTimes : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                Times[run.run_name.function_name].push_back(run.GetAdjustedRealTime());
    }

    double Median(const std::string& name)
    {
        std::vector<double>& times = Times[name];
        if (times.empty())
            return 0;
        std::sort(times.begin(), times.end());
        const std::size_t middle = times.size() / 2;
        return times.size() % 2 != 0 ? times[middle] : (times[middle - 1] + times[middle]) / 2;
    }

private:
    std::map<std::string, std::vector<double>> Times;
};

} // namespace

int Bench::RunAndCompare(int argc, char** argv, const std::vector<Ratio>& ratios)
{
    std::vector<char*> arguments(argv, argv + argc);
    char interleave[] = "--benchmark_enable_random_interleaving=true";
    char repeat[] = "--benchmark_repetitions=11";
    arguments.insert(arguments.begin() + 1, {interleave, repeat});
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    KeepTimes reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    for (const Ratio& ratio : ratios) {
        const double ours = reporter.Median(ratio.Ours);
        const double bare = reporter.Median(ratio.Bare);
        if (ours <= 0 || bare <= 0) {
            std::printf("RATIO  %-46s not measured\n", ratio.What.c_str());
            continue;
        }
        const bool rate = ratio.Kind == Ratio::RateAtLeast;
        const double value = rate ? bare / ours : ours / bare;
        const bool reached = rate ? value >= ratio.Wanted : value <= ratio.Wanted;
        std::printf("RATIO  %-46s %6.2f  (%s %.2f: %s)\n", ratio.What.c_str(), value,
                    rate ? "at least" : "at most", ratio.Wanted, reached ? "reached" : "NOT REACHED");
    }
    return 0;
}

void Bench::PinToOneCore()
{
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(static_cast<unsigned>(sched_getcpu()), &cores);
    sched_setaffinity(0, sizeof cores, &cores);
}
