#pragma once

#include <string>

namespace Bench
{

/// Runs the registered benchmarks, repetitions of all of them interleaved at random, and reports the median
/// of each in nanoseconds as PREFIX.NAME. Returns main's result.
int RunRepeated(int argc, char** argv, const std::string& prefix);

} // namespace Bench
