#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace Bench
{

/// A ratio of two benchmarks of one run, both by name, and the figure to reach.
struct Ratio {
    std::string What;
    std::string Ours;
    std::string Bare;
    enum { RateAtLeast, TimeAtMost } Kind;
    double Wanted;
};

/// Runs the registered benchmarks, repetitions of all of them interleaved at random, and prints the ratios of
/// their medians. RateAtLeast: bare time / our time; TimeAtMost: our time / bare time. Returns main's result.
int RunAndCompare(int argc, char** argv, const std::vector<Ratio>& ratios);

/// Confines the whole process, threads to come included, to one core.
void PinToOneCore();

} // namespace Bench
