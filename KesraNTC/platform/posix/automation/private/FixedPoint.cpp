#include "KesraNTC/platform/posix/automation/private/FixedPoint.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace Kesra
{

namespace
{

constexpr int LargestPower = 38;
constexpr int CurrencyScale = 4;
constexpr int LargestDecimalScale = 28;
constexpr Uint128 MagnitudeLimit = Uint128{1} << 127;
constexpr Uint128 DecimalLimit = Uint128{1} << 96;

constexpr auto Powers = [] {
    std::array<Uint128, LargestPower + 1> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * 10;
    return powers;
}();

Uint128 DivideToEven(Uint128 value, int power)
{
    if (power > LargestPower)
        return 0;
    const Uint128 divisor = Powers[static_cast<std::size_t>(power)];
    const Uint128 quotient = value / divisor;
    const Uint128 rest = value % divisor;
    const bool up = rest > divisor - rest || (rest == divisor - rest && quotient % 2 == 1);
    return quotient + (up ? 1 : 0);
}

} // namespace

FixedPoint FixedFromCurrency(CY value)
{
    FixedPoint result = FixedFromInteger(value.int64);
    result.Scale = CurrencyScale;
    return result;
}

bool FixedFromDecimal(const DECIMAL& decimal, FixedPoint& value)
{
    if (decimal.scale > LargestDecimalScale || (decimal.sign & ~DECIMAL_NEG) != 0)
        return false;
    value = FixedPoint{decimal.sign != 0, Uint128{decimal.Hi32} << 64 | decimal.Lo64, decimal.scale};
    return true;
}

bool FixedFromDouble(double real, int digits, FixedPoint& value)
{
    if (!std::isfinite(real))
        return false;
    std::array<char, 40> text{};
    const auto written =
        std::to_chars(text.begin(), text.end(), std::fabs(real), std::chars_format::scientific, digits - 1);
    const char* const exponent = std::find(text.begin(), written.ptr, 'e') + 1;
    int power = 0;
    std::from_chars(exponent + (*exponent == '+' ? 1 : 0), written.ptr, power);

    value = FixedPoint{std::signbit(real), 0, digits - 1 - power};
    for (const char* at = text.data(); *at != 'e'; ++at)
        if (*at != '.')
            value.Magnitude = value.Magnitude * 10 + static_cast<unsigned>(*at - '0');
    return Normalize(value);
}

bool Normalize(FixedPoint& value)
{
    if (value.Magnitude == 0)
        value.Scale = 0;
    for (; value.Scale > 0 && value.Magnitude % 10 == 0; --value.Scale)
        value.Magnitude /= 10;
    return Rescale(value, std::max(value.Scale, 0));
}

bool Rescale(FixedPoint& value, int scale)
{
    const int up = scale - value.Scale;
    value.Scale = scale;
    if (up <= 0) {
        value.Magnitude = DivideToEven(value.Magnitude, -up);
        return true;
    }
    if (value.Magnitude == 0)
        return true;
    if (up > LargestPower || value.Magnitude > MagnitudeLimit / Powers[static_cast<std::size_t>(up)])
        return false;
    value.Magnitude *= Powers[static_cast<std::size_t>(up)];
    return true;
}

HRESULT ToDecimal(const FixedPoint& value, DECIMAL& decimal)
{
    // As many digits after the point as 96 bits hold.
    for (int scale = std::clamp(value.Scale, 0, LargestDecimalScale); scale >= 0; --scale) {
        FixedPoint rounded = value;
        if (!Rescale(rounded, scale) || rounded.Magnitude >= DecimalLimit)
            continue;
        decimal.wReserved = 0;
        const bool vanished = rounded.Magnitude == 0 && value.Magnitude != 0;
        decimal.scale = static_cast<BYTE>(vanished ? 0 : scale);
        decimal.sign = rounded.Negative && rounded.Magnitude != 0 ? DECIMAL_NEG : BYTE{0};
        decimal.Hi32 = static_cast<ULONG>(rounded.Magnitude >> 64);
        decimal.Lo64 = static_cast<ULONGLONG>(rounded.Magnitude);
        return S_OK;
    }
    return DISP_E_OVERFLOW;
}

HRESULT ToCurrency(const FixedPoint& value, CY& currency)
{
    FixedPoint units = value;
    if (!Rescale(units, CurrencyScale))
        return DISP_E_OVERFLOW;
    units.Scale = 0;
    return ToInteger(units, currency.int64);
}

double ToDouble(const FixedPoint& value)
{
    // Through the digits, so that the result is the nearest double and not the quotient of two rounded ones.
    const std::string text = ToText(value);
    double real = 0;
    std::from_chars(text.data(), text.data() + text.size(), real);
    return real;
}

std::string ToText(const FixedPoint& value)
{
    std::string digits;
    int scale = value.Scale;
    for (Uint128 rest = value.Magnitude; rest != 0 || scale >= 0; rest /= 10, --scale) {
        const auto digit = static_cast<char>('0' + static_cast<int>(rest % 10));
        if (digits.empty() && digit == '0' && scale > 0)
            continue;
        if (scale == 0 && !digits.empty())
            digits += '.';
        digits += digit;
    }
    if (value.Negative && value.Magnitude != 0)
        digits += '-';
    std::reverse(digits.begin(), digits.end());
    return digits;
}

} // namespace Kesra
