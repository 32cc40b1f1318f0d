#include "tests/windows/values/Values.h"

#include <KesraNTC/KesraNTC.h>

#include <cfloat>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>

namespace
{
constexpr const char* Flags[] = {"", "-", "+", " ", "0", "#", "+0", "-#", "#0", "- +0#"};
constexpr const char* Fields[] = {"", "1", "12", "45", ".", ".0", ".3", ".20", "14.5", "30.25"};

template <typename... Arguments> void PrintFormat(const std::string& format, Arguments... arguments)
{
    CString text;
    text.Format(format.c_str(), arguments...);
    Print("format " + format, static_cast<const char*>(text));
}

/// Each combination of flags and field, with values by turns.
template <typename Value, std::size_t N>
void PrintCross(const std::string& type, const Value (&values)[N], std::size_t step)
{
    std::size_t next = 0;
    for (const char* flags : Flags)
        for (const char* field : Fields) {
            const std::string conversion = std::string("[%") + flags + field + type + "]";
            const auto value = [&](std::size_t offset) { return values[(next + offset) % N]; };
            PrintFormat(conversion + conversion + conversion, value(0), value(1), value(2));
            next += step;
        }
}

void PrintIntegers()
{
    constexpr int Values[] = {0, 1, -1, 7, 42, -300, 65535, 70000, INT_MAX, INT_MIN, 0x12345678};
    constexpr long long LongValues[] = {0, -1, 70000, LLONG_MAX, LLONG_MIN, 0x123456789ABCDEF};
    for (const char* type : {"d", "i", "u", "x", "X", "o", "b", "B"}) {
        PrintCross(type, Values, 3);
        for (const char* size : {"h", "hh", "I32", "w"})
            for (const int value : Values)
                PrintFormat(std::string("%") + size + type + "|%s", value, "next");
        for (const int value : Values)
            PrintFormat(std::string("%l") + type + "|%s", static_cast<long>(value), "next");
        for (const char* size : {"ll", "q", "j", "L", "I64"})
            for (const long long value : LongValues)
                PrintFormat(std::string("%#") + size + type + "|%s", value, "next");
        for (const char* size : {"z", "t", "I"})
            for (const int value : {0, 1, 70000, INT_MAX})
                PrintFormat(std::string("%+") + size + type + "|%s", static_cast<std::ptrdiff_t>(value),
                            "next");
    }
    PrintFormat("%zd %td %Id %s", std::ptrdiff_t{-1}, std::ptrdiff_t{-2}, std::ptrdiff_t{-3}, "next");
}

template <typename Real> void PrintReals(const std::string& size)
{
    using Limits = std::numeric_limits<Real>;
    const Real values[] = {0,
                           static_cast<Real>(-0.0),
                           1,
                           static_cast<Real>(0.1),
                           static_cast<Real>(-2.5),
                           static_cast<Real>(0.5),
                           static_cast<Real>(1) / 3,
                           static_cast<Real>(9.9999995),
                           static_cast<Real>(123456789.125),
                           static_cast<Real>(1e22),
                           static_cast<Real>(1e-5),
                           static_cast<Real>(-1e100),
                           static_cast<Real>(5e-324),
                           static_cast<Real>(DBL_MAX),
                           Limits::min(),
                           Limits::infinity(),
                           -Limits::infinity(),
                           Limits::quiet_NaN()};
    for (const char* type : {"e", "E", "f", "F", "g", "G", "a", "A"}) {
        // Before any other letter but itself F is no conversion, so a bracket follows.
        PrintCross(size + type, values, 1);
        PrintFormat("%.400" + size + type, values[6]);
        PrintFormat("%#.1100" + size + type, values[12]);
        PrintFormat("%" + size + type + "|%s", Limits::max(), "next");
    }
}

void PrintWords()
{
    constexpr const char* Texts[] = {"", "a", "Kesra", "\xB0\xA1\xB0\xA2", "half\xB0", nullptr};
    const WCHAR* const wideTexts[] = {OLESTR(""), OLESTR("wide"), OLESTR("\uAC00\uAC02 z"), OLESTR("\u0E01"),
                                      nullptr};
    for (const char* type : {"s", "hs", "hS", "hhs"})
        PrintCross(type, Texts, 1);
    for (const char* type : {"S", "ls", "ws", "lS"})
        PrintCross(type, wideTexts, 1);
    constexpr int Characters[] = {'a', ' ', '%', 0x7E};
    for (const char* type : {"c", "hc", "hC", "hhc"})
        PrintCross(type, Characters, 1);
    constexpr int WideCharacters[] = {'a', 0xAC00, 0xAC02, 0x0E01};
    for (const char* type : {"C", "lc", "wc"})
        PrintCross(type, WideCharacters, 1);
}

void PrintOddities()
{
    for (const char* format : {"%",   "%%",   "%5%",    "100%% of %d",  "%y %d",   "%k%d",     "%-",
                               "%.",  "%I",   "%I6",    "%Iy%d",        "%hhh%d",  "%F",       "%N",
                               "%Nd", "%Fd",  "%I640d", "%'d",          "%I9d",    "%ld%%n%n", "\xB0%\x81%d",
                               "%$d", "%1$d", "%lld",   "%d\n%c|after", "% +-#0d", "%0-9d",    "%.-3d"})
        PrintFormat(format, 5, 0, 0, 0);
    for (const int number : {0, 1, -1, 12, -12, 300})
        PrintFormat("%*d|%.*d|%*.*f|%-*.*s|", number, 5, number, 6, number, number, 2.5, number, number,
                    "text");
    PrintFormat("%d %s %f %S %c %I64d %s", 1, "two", 3.0, OLESTR("four"), '5', 6LL, "seven");
    PrintFormat("%Lf %d %Le %s", 0.1L, 2, -3e-4000L, "next");
    // As wide as the system's addresses.
    for (const char* format : {"%p", "%.3p", "%+p", "%0p"}) {
        CString address;
        address.Format(format, reinterpret_cast<void*>(0xBEEF));
        Print(format, static_cast<const char*>(address.Right(8)));
    }
}
} // namespace

void PrintFormats()
{
    PrintIntegers();
    PrintReals<double>("");
    PrintReals<long double>("L");
    PrintWords();
    PrintOddities();
}
