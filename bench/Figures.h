#pragma once

#include <string>
#include <vector>

namespace Bench
{

/// Reports one measured value as a line of JSON on the standard output: {"figure": name, "value": value}.
void Figure(const std::string& name, double value);

/// The p-th part (0 to 1) of the values, which are put in order; 0 when there are none.
double Percentile(std::vector<double>& values, double p);
inline double Median(std::vector<double>& values)
{
    return Percentile(values, 0.5);
}

/// CPU seconds that the whole process, or the calling thread, has used.
double ProcessSeconds();
double ThreadSeconds();

/// Confines the whole process, threads to come included, to one core.
void PinToOneCore();

} // namespace Bench
