#pragma once

#include "KesraNTC/platform/posix/automation/private/FixedPoint.h"

#include <string>
#include <string_view>

namespace Kesra
{

/// A number as a text says it: `Digits` times 10 to the power of `Exponent`.
struct Numeral {
    bool Negative = false;
    std::string Digits;
    int Exponent = 0;
};

/// Reads a number with what may surround it in US English: spaces, a sign before or after, parentheses that
/// negate, a dollar sign, thousands separators, an exponent; or &H and &O before hexadecimal and octal
/// digits.
bool ParseNumeral(std::u16string_view text, Numeral& numeral);

/// False when the number is too large.
bool ToFixedPoint(const Numeral& numeral, FixedPoint& value);
HRESULT ToDouble(const Numeral& numeral, double& value);

/// A real number with the given significant digits at most, in scientific form where that many do not do.
std::string RealToText(double value, int digits);

} // namespace Kesra
