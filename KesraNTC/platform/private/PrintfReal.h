#pragma once

#include "KesraNTC/platform/private/PrintfField.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

// Real numbers as printf writes them, digit for digit: the runtimes differ in how many digits they know, in
// exponents and in what they call infinity, and follow the decimal point of a language.
namespace Kesra
{
/// A number's text in two pieces, between which zeros may be added.
struct RealText {
    std::string Digits;   ///< with its point, if it has one
    std::string Exponent; ///< with its letter; empty without one
};

template <typename... Options> std::string ToCharacters(Options... options)
{
    for (std::string text(64, '\0');; text.resize(text.size() * 4)) {
        const std::to_chars_result result = std::to_chars(text.data(), text.data() + text.size(), options...);
        if (result.ec == std::errc())
            return text.substr(0, static_cast<std::size_t>(result.ptr - text.data()));
    }
}

/// The number with so many digits behind the point.
inline std::string RealDigits(double magnitude, std::chars_format form, int precision)
{
    return ToCharacters(magnitude, form, precision);
}

/// The standard library leaves these to the runtime in the end, in a buffer that it measures without regard
/// to what a language takes for a decimal point.
inline std::string RealDigits(long double magnitude, std::chars_format form, int precision)
{
    if (form == std::chars_format::hex)
        return ToCharacters(magnitude, form, precision);
    const char* const format = form == std::chars_format::fixed ? "%.*Lf" : "%.*Le";
    const int length = std::snprintf(nullptr, 0, format, precision, magnitude);
    std::string text(static_cast<std::size_t>(std::max(length, 0)) + 1, '\0');
    std::snprintf(text.data(), text.size(), format, precision, magnitude);
    text.pop_back();
    const std::size_t point = text.find_first_not_of("0123456789e");
    if (precision > 0 && point != text.npos)
        text.replace(point, text.find_first_of("0123456789", point) - point, ".");
    return text;
}

/// The number with `precision` digits behind the point, or as many as it takes where that is below 0.
template <typename Real> RealText PrintReal(Real magnitude, std::chars_format form, int precision)
{
    // No number has more digits behind the point; the rest are zeros.
    constexpr int MostDigits = 16500;
    RealText text;
    text.Digits = precision < 0 ? ToCharacters(magnitude, form)
                                : RealDigits(magnitude, form, std::min(precision, MostDigits));
    const std::size_t exponent = text.Digits.find_first_of(form == std::chars_format::hex ? "p" : "e");
    if (exponent != std::string::npos) {
        text.Exponent = text.Digits.substr(exponent);
        text.Digits.resize(exponent);
    }
    if (precision > MostDigits)
        text.Digits.append(static_cast<std::size_t>(precision - MostDigits), '0');
    return text;
}

/// As %e or %f, whichever suits the number's size; `precision` counts all digits.
template <typename Real> RealText PrintGeneral(Real magnitude, int precision, bool keepsZeros)
{
    const int digits = std::max(precision, 1);
    RealText text = PrintReal(magnitude, std::chars_format::scientific, digits - 1);
    const int exponent = std::atoi(text.Exponent.c_str() + 1);
    if (exponent >= -4 && exponent < digits)
        text = PrintReal(magnitude, std::chars_format::fixed, digits - 1 - exponent);
    if (!keepsZeros && text.Digits.find('.') != std::string::npos) {
        text.Digits.erase(text.Digits.find_last_not_of('0') + 1);
        if (text.Digits.back() == '.')
            text.Digits.pop_back();
    }
    return text;
}

template <typename Real> RealText PrintReal(const PrintfField& field, Real magnitude)
{
    using std::chars_format;
    const int precision = field.Precision < 0 ? 6 : field.Precision;
    RealText text;
    if (field.IsOneOf("eE"))
        text = PrintReal(magnitude, chars_format::scientific, precision);
    else if (field.IsOneOf("fF"))
        text = PrintReal(magnitude, chars_format::fixed, precision);
    else if (field.IsOneOf("aA"))
        text = PrintReal(magnitude, chars_format::hex, field.Precision);
    else
        text = PrintGeneral(magnitude, precision, field.IsAlternate);
    if (field.IsAlternate && text.Digits.find('.') == std::string::npos)
        text.Digits += '.';
    return text;
}

/// Appends a double or a long double.
template <typename Real> void AppendReal(std::string& output, const PrintfField& field, Real value)
{
    std::string prefix(SignText(field, std::signbit(value)));
    std::string digits;
    if (std::isfinite(value)) {
        const RealText text = PrintReal(field, std::fabs(value));
        digits = text.Digits + text.Exponent;
        if (field.IsOneOf("aA"))
            prefix += "0x";
    } else {
        digits = std::isnan(value) ? "nan" : "inf";
    }
    if (field.IsOneOf("EFGA")) {
        MakeCapital(prefix);
        MakeCapital(digits);
    }
    AppendNumber(output, field, prefix, digits, field.HasZero && std::isfinite(value));
}
} // namespace Kesra
