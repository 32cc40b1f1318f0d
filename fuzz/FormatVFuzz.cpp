// Formats one conversion of any shape, always with an argument of the right kind, and compares numbers with
// what the C runtime prints.

#include "KesraNTC/base/CString.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

namespace
{
constexpr int LargestField = 1 << 20;

void Require(bool holds)
{
    if (!holds)
        std::abort();
}

constexpr const char* Integers = "diuxXob";
constexpr const char* Reals = "eEfFgGaA";

/// A size prefix, the runtime's word for it, and whether it asks for 64 bits.
struct Size {
    std::string_view Ours;
    const char* Runtime;
    bool IsLong;
};
constexpr Size Sizes[] = {{"", "", false},    {"hh", "hh", false}, {"h", "h", false}, {"l", "", false},
                          {"ll", "ll", true}, {"q", "ll", true},   {"j", "ll", true}, {"z", "ll", true},
                          {"t", "ll", true},  {"I", "ll", true},   {"L", "ll", true}, {"I64", "ll", true},
                          {"I32", "", false}, {"w", "", false},    {"N", "", false}};

/// One conversion in the words of the string and in those of the C runtime.
struct Conversion {
    std::string Ours = "%";
    std::string Runtime = "%";
    bool HasStarWidth = false;
    bool HasStarPrecision = false;
    int Width = 0;
    int Precision = 0;
    std::string Size;
    char Type = 'd';
    bool IsComparable = true;

    void Add(const std::string& text)
    {
        Ours += text;
        Runtime += text;
    }
};

const Size& SizeOf(const Conversion& conversion)
{
    return *std::find_if(
        std::begin(Sizes), std::end(Sizes), [&](const Size& size) { return size.Ours == conversion.Size; });
}

int TakeStar(FuzzedDataProvider& input, bool& isComparable)
{
    static constexpr int Extremes[] = {INT_MIN, INT_MAX, -LargestField - 1, LargestField + 1};
    if (input.ConsumeIntegralInRange<int>(0, 63) != 0)
        return input.ConsumeIntegralInRange<int>(-3000, 3000);
    isComparable = false;
    return input.PickValueInArray(Extremes);
}

void TakeNumber(FuzzedDataProvider& input, Conversion& conversion, bool& isStar, int& star)
{
    switch (input.ConsumeIntegralInRange<int>(0, 2)) {
    case 0:
        break;
    case 1:
        conversion.Add(std::to_string(input.ConsumeIntegralInRange<int>(1, 3000)));
        break;
    default:
        isStar = true;
        star = TakeStar(input, conversion.IsComparable);
        conversion.Add("*");
    }
}

Conversion TakeConversion(FuzzedDataProvider& input)
{
    Conversion conversion;
    for (int flags = input.ConsumeIntegralInRange<int>(0, 6); flags > 0; --flags)
        conversion.Add(std::string(1, "-+ 0#"[input.ConsumeIntegralInRange<int>(0, 4)]));
    TakeNumber(input, conversion, conversion.HasStarWidth, conversion.Width);
    if (input.ConsumeBool()) {
        conversion.Add(".");
        TakeNumber(input, conversion, conversion.HasStarPrecision, conversion.Precision);
    }
    constexpr std::string_view Types = "diuxXobeEfFgGaAsScCpn";
    conversion.Size = std::string(input.PickValueInArray(Sizes).Ours);
    conversion.Type = Types[input.ConsumeIntegralInRange<std::size_t>(0, Types.size() - 1)];
    conversion.Ours += conversion.Size + conversion.Type;
    if (std::strchr(Integers, conversion.Type))
        conversion.Runtime += SizeOf(conversion).Runtime;
    else if (std::strchr(Reals, conversion.Type) && conversion.Size == "L")
        conversion.Runtime += "L";
    conversion.Runtime += conversion.Type;
    return conversion;
}

/// Calls with the stars that the conversion has.
template <typename Call, typename Value> void WithStars(const Conversion& conversion, Call call, Value value)
{
    if (conversion.HasStarWidth && conversion.HasStarPrecision)
        call(conversion.Width, conversion.Precision, value);
    else if (conversion.HasStarWidth)
        call(conversion.Width, value);
    else if (conversion.HasStarPrecision)
        call(conversion.Precision, value);
    else
        call(value);
}

/// The text alone, and between other texts, whose last byte may lead a double-byte character.
template <typename Value> CString Format(const Conversion& conversion, const std::string& around, Value value)
{
    CString alone;
    CString framed("what stood here before");
    const std::string format = around + conversion.Ours + around;
    WithStars(
        conversion,
        [&](auto... arguments) {
            alone.Format(conversion.Ours.c_str(), arguments...);
            framed.Format(format.c_str(), arguments...);
        },
        value);
    for (const CString* each : {&alone, &framed})
        Require(static_cast<std::size_t>(each->GetLength()) == std::strlen(*each) &&
                each->GetLength() <= each->GetAllocLength());
    return alone;
}

template <typename Value> void Compare(const Conversion& conversion, const std::string& around, Value value)
{
    const CString ours = Format(conversion, around, value);
    if (!conversion.IsComparable)
        return;
    std::string expected(8192, '\0');
    int length = 0;
    WithStars(
        conversion,
        [&](auto... arguments) {
            length =
                std::snprintf(expected.data(), expected.size(), conversion.Runtime.c_str(), arguments...);
        },
        value);
    Require(length >= 0 && static_cast<std::size_t>(length) < expected.size());
    Require(ours == expected.c_str());
}

void FormatInteger(const Conversion& conversion, const std::string& around, long long value)
{
    if (SizeOf(conversion).IsLong)
        Compare(conversion, around, value);
    else if (conversion.Size == "l")
        Format(conversion, around, static_cast<long>(value));
    else
        Compare(conversion, around, static_cast<int>(value));
}

/// Of any exponent; long doubles reach further than doubles.
long double TakeLongDouble(FuzzedDataProvider& input)
{
    const long double digits = static_cast<long double>(input.ConsumeIntegral<long long>());
    return std::ldexp(digits, input.ConsumeIntegralInRange<int>(-16500, 16320));
}

void FormatText(const Conversion& conversion, const std::string& around, FuzzedDataProvider& input)
{
    const bool isWide = conversion.Size == "l" || conversion.Size == "w" ||
                        (conversion.Size != "h" && conversion.Size != "hh" && conversion.Type == 'S');
    const bool isNull = input.ConsumeIntegralInRange<int>(0, 15) == 0;
    const std::string text = input.ConsumeRandomLengthString(300);
    const std::u16string wide(text.begin(), text.end());
    if (isWide)
        Format(conversion, around, isNull ? nullptr : wide.c_str());
    else
        Format(conversion, around, isNull ? nullptr : text.c_str());
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const Conversion conversion = TakeConversion(input);
    std::string around = input.ConsumeRandomLengthString(20);
    std::erase_if(around, [](char ch) { return ch == '%' || ch == '\0'; });
    // Directly before a letter F would be a size.
    if (conversion.Type == 'F')
        around.insert(0, 1, ' ');
    int untouched = 77;
    if (std::strchr(Integers, conversion.Type))
        FormatInteger(conversion, around, input.ConsumeIntegral<long long>());
    else if (std::strchr(Reals, conversion.Type) && conversion.Size == "L")
        Compare(conversion, around, TakeLongDouble(input));
    else if (std::strchr(Reals, conversion.Type))
        Compare(conversion, around, input.ConsumeFloatingPoint<double>());
    else if (std::strchr("sS", conversion.Type))
        FormatText(conversion, around, input);
    else if (std::strchr("cC", conversion.Type))
        Format(conversion, around, input.ConsumeIntegral<int>());
    else if (conversion.Type == 'p')
        Format(conversion, around, static_cast<const void*>(data));
    else
        Format(conversion, around, &untouched);
    Require(untouched == 77);
    return 0;
}
