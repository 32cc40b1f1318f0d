#pragma once

#include <cstdint>

namespace Kesra
{

/// A number cut toward zero to a 64-bit integer. One that 64 bits cannot hold, and a NaN, gives -2^63, as the
/// processor's own conversion does, so that its low 32 and 16 bits are 0.
constexpr std::int64_t Truncate(double value)
{
    constexpr double limit = 9223372036854775808.0;
    return value >= -limit && value < limit ? static_cast<std::int64_t>(value) : INT64_MIN;
}

} // namespace Kesra
