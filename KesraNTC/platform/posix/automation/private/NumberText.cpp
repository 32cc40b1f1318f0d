#include "KesraNTC/platform/posix/automation/private/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace Kesra
{

namespace
{

constexpr int LargestExponent = 10'000;
constexpr std::size_t DigitsKept = 37;

bool IsSpace(char16_t ch)
{
    return ch == u' ' || (ch >= u'\t' && ch <= u'\r');
}

bool IsDigit(char16_t ch)
{
    return ch >= u'0' && ch <= u'9';
}

int DigitValue(char16_t ch)
{
    if (IsDigit(ch))
        return ch - u'0';
    const char16_t lower = ch | 0x20;
    return lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : 16;
}

class NumeralParser
{
public:
    NumeralParser(std::u16string_view text, Numeral& numeral) : Text(text), Result(numeral) {}

    bool Parse()
    {
        SkipMarks();
        if (At() == u'&' ? !ParseBits() : !ParseDecimal())
            return false;
        SkipMarks();
        Result.Negative = Result.Negative || Closed;
        return Text.empty() && Opened == Closed;
    }

private:
    char16_t At(std::size_t index = 0) const { return index < Text.size() ? Text[index] : u'\0'; }
    void Skip(std::size_t count = 1) { Text.remove_prefix(count); }

    /// What may stand on either side of the digits, each kind once.
    void SkipMarks()
    {
        for (;; Skip()) {
            const char16_t ch = At();
            if (ch == u'$' && !Currency)
                Currency = true;
            else if ((ch == u'+' || ch == u'-') && !Signed && !Opened)
                Signed = true, Result.Negative = ch == u'-';
            else if (ch == u'(' && !Signed && !Opened && !DigitsSeen)
                Opened = true;
            else if (ch == u')' && Opened && !Closed && DigitsSeen)
                Closed = true;
            else if (!IsSpace(ch))
                return;
        }
    }

    bool ParseBits()
    {
        const char16_t kind = At(1) | 0x20;
        if (kind != u'h' && kind != u'o')
            return false;
        const int base = kind == u'h' ? 16 : 8;
        Skip(2);
        std::uint64_t bits = 0;
        for (; DigitValue(At()) < base; Skip()) {
            if (bits >> 60 != 0)
                return false;
            bits = bits * static_cast<unsigned>(base) + static_cast<unsigned>(DigitValue(At()));
            DigitsSeen = true;
        }
        Result.Digits = std::to_string(bits);
        return DigitsSeen;
    }

    bool ParseDecimal()
    {
        for (; IsDigit(At()) || (At() == u',' && DigitsSeen); Skip())
            AppendDigit(0);
        if (At() == u'.') {
            Skip();
            for (; IsDigit(At()); Skip())
                AppendDigit(1);
        }
        return DigitsSeen && ParseExponent();
    }

    void AppendDigit(int afterPoint)
    {
        if (At() == u',')
            return;
        DigitsSeen = true;
        if (At() != u'0' || !Result.Digits.empty())
            Result.Digits += static_cast<char>(At());
        Result.Exponent -= afterPoint;
    }

    bool ParseExponent()
    {
        if ((At() | 0x20) != u'e')
            return true;
        Skip();
        const bool negative = At() == u'-';
        if (negative || At() == u'+')
            Skip();
        if (!IsDigit(At()))
            return false;
        int exponent = 0;
        for (; IsDigit(At()); Skip())
            exponent = std::min(exponent * 10 + (At() - u'0'), LargestExponent);
        Result.Exponent += negative ? -exponent : exponent;
        return true;
    }

    std::u16string_view Text;
    Numeral& Result;
    bool Signed = false;
    bool Currency = false;
    bool Opened = false;
    bool Closed = false;
    bool DigitsSeen = false;
};

} // namespace

bool ParseNumeral(std::u16string_view text, Numeral& numeral)
{
    numeral = Numeral{};
    return NumeralParser(text.substr(0, text.find(u'\0')), numeral).Parse();
}

bool ToFixedPoint(const Numeral& numeral, FixedPoint& value)
{
    const std::size_t kept = std::min(numeral.Digits.size(), DigitsKept);
    value = FixedPoint{numeral.Negative, 0, 0};
    for (std::size_t i = 0; i < kept; ++i)
        value.Magnitude = value.Magnitude * 10 + static_cast<unsigned>(numeral.Digits[i] - '0');

    // Digits that are left out only say whether a value lies above the middle of two.
    const std::string_view rest = std::string_view(numeral.Digits).substr(kept);
    if (rest.find_first_not_of('0') != std::string_view::npos && value.Magnitude % 5 == 0)
        value.Magnitude += 1;
    value.Scale = -numeral.Exponent - static_cast<int>(rest.size());
    return Normalize(value);
}

HRESULT ToDouble(const Numeral& numeral, double& value)
{
    value = 0;
    if (numeral.Digits.empty())
        return S_OK;
    const std::string text = numeral.Digits + 'e' + std::to_string(numeral.Exponent);
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    if (read.ec == std::errc::result_out_of_range) {
        if (static_cast<int>(numeral.Digits.size()) + numeral.Exponent > 0)
            return DISP_E_OVERFLOW;
        value = 0;
    }
    if (numeral.Negative)
        value = -value;
    return S_OK;
}

std::string RealToText(double value, int digits)
{
    if (std::isnan(value))
        return "1.#QNAN";
    if (std::isinf(value))
        return value > 0 ? "1.#INF" : "-1.#INF";
    if (value == 0)
        return "0";
    std::array<char, 40> text{};
    const auto written = std::to_chars(text.begin(), text.end(), value, std::chars_format::general, digits);
    std::replace(text.begin(), written.ptr, 'e', 'E');
    return std::string(text.begin(), written.ptr);
}

} // namespace Kesra
