#pragma once

#include "KesraNTC/platform/posix/automation/AutomationTypes.h"

#include <limits>
#include <string>
#include <type_traits>

namespace Kesra
{

__extension__ using Uint128 = unsigned __int128;

/// An exact decimal value, `Magnitude` divided by 10 to the power of `Scale`: what integers, currencies,
/// decimals and numerals in a text have in common. The magnitude stays below 2^127.
struct FixedPoint {
    bool Negative = false;
    Uint128 Magnitude = 0;
    int Scale = 0;
};

template <class Integer> FixedPoint FixedFromInteger(Integer value)
{
    const bool negative = value < 0;
    const auto bits = static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
    return FixedPoint{negative, negative ? 0 - bits : bits, 0};
}
FixedPoint FixedFromCurrency(CY value);
/// False when the structure holds a scale that decimals do not have.
bool FixedFromDecimal(const DECIMAL& decimal, FixedPoint& value);
/// The value as its given number of significant digits say it; false when it has none or is too large.
bool FixedFromDouble(double real, int digits, FixedPoint& value);

/// Drops zeros at the end of the digits after the point; false when the value is too large.
bool Normalize(FixedPoint& value);
/// Changes the scale, rounding to even what it drops; false when the magnitude does not hold the result.
bool Rescale(FixedPoint& value, int scale);

HRESULT ToDecimal(const FixedPoint& value, DECIMAL& decimal);
HRESULT ToCurrency(const FixedPoint& value, CY& currency);
double ToDouble(const FixedPoint& value);
/// Digits, with a point before the ones that count below it, without zeros at the end of those.
std::string ToText(const FixedPoint& value);

template <class Integer> HRESULT ToInteger(FixedPoint value, Integer& integer)
{
    using Unsigned = std::make_unsigned_t<Integer>;
    constexpr Unsigned largest = static_cast<Unsigned>(std::numeric_limits<Integer>::max());
    if (!Rescale(value, 0))
        return DISP_E_OVERFLOW;
    const Uint128 limit = !value.Negative ? largest : std::is_signed_v<Integer> ? Uint128{largest} + 1 : 0;
    if (value.Magnitude > limit)
        return DISP_E_OVERFLOW;
    const auto bits = static_cast<Unsigned>(value.Magnitude);
    integer = static_cast<Integer>(value.Negative ? static_cast<Unsigned>(0 - bits) : bits);
    return S_OK;
}

} // namespace Kesra
