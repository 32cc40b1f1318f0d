// What finding a property costs as the collection grows: logarithmic, so 1000 names cost little more than 10.

#include "KesraNTC/KesraNTC.h"
#include "bench/Repeated.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace
{

std::vector<std::string> Names(int count)
{
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
        names.push_back("Property" + std::to_string(i));
    return names;
}

void FindProperty(benchmark::State& state, int count)
{
    const std::vector<std::string> names = Names(count);
    CPropCollection properties;
    for (const std::string& name : names)
        properties.SetProperty(name.c_str(), 5L);
    // A stride that visits all of them in no order the map would like.
    std::size_t at = 0;
    for (auto _ : state) {
        at = (at + 617) % names.size();
        benchmark::DoNotOptimize(properties.GetProperty(names[at].c_str()));
    }
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::RegisterBenchmark("FindAmong10", FindProperty, 10);
    benchmark::RegisterBenchmark("FindAmong1000", FindProperty, 1000);
    return Bench::RunRepeated(argc, argv, "property");
}
