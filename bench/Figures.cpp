#include "bench/Figures.h"

#include <sched.h>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace
{

double Seconds(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

} // namespace

void Bench::Figure(const std::string& name, double value)
{
    std::printf("{\"figure\": \"%s\", \"value\": %.6g}\n", name.c_str(), value);
    std::fflush(stdout);
}

double Bench::Percentile(std::vector<double>& values, double p)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(p * static_cast<double>(values.size() - 1) + 0.5)];
}

double Bench::ProcessSeconds()
{
    return Seconds(CLOCK_PROCESS_CPUTIME_ID);
}

double Bench::ThreadSeconds()
{
    return Seconds(CLOCK_THREAD_CPUTIME_ID);
}

void Bench::PinToOneCore()
{
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(static_cast<unsigned>(sched_getcpu()), &cores);
    sched_setaffinity(0, sizeof cores, &cores);
}
