#include "KesraNTC/base/CString.h"
#include "KesraNTC/platform/Platform.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

namespace
{
template <typename... Arguments> std::string Formatted(const char* format, Arguments... arguments)
{
    CString text;
    text.Format(format, arguments...);
    EXPECT_EQ(std::string(text).size(), static_cast<std::size_t>(text.GetLength()));
    return std::string(text);
}

template <typename... Arguments> std::string Printed(const char* format, Arguments... arguments)
{
    std::string text(4096, '\0');
    text.resize(static_cast<std::size_t>(std::snprintf(text.data(), text.size(), format, arguments...)));
    return text;
}

TEST(CStringFormat, PrintsNumbersAsTheRuntimeDoes)
{
    for (const char* format :
         {"%d",  "%i",  "%u",   "%x",    "%X",      "%o",      "%5d",  "%-5d|", "%05d", "%+d",    "% d",
          "%#x", "%#o", "%.3d", "%8.3d", "%-8.3d|", "%+08.3d", "%.0d", "%hd",   "%hu",  "%#010x", "%#.8X"})
        for (const int value : {0, 1, -1, 42, 65536, INT_MIN, INT_MAX})
            EXPECT_EQ(Formatted(format, value), Printed(format, value)) << format << " of " << value;
    for (const char* format : {"%e", "%E", "%g", "%G", "%f", "%10.2f", "%-10.2f|", "%010.1f", "%+.3e", "% g",
                               "%#g", "%.0f", "%#.0f", "%.15g"})
        for (const double value : {0.0, 1.5, -2.25, 1e300, 1e-300, 123456789.125})
            EXPECT_EQ(Formatted(format, value), Printed(format, value)) << format << " of " << value;
}

TEST(CStringFormat, SizesSayHowManyBitsCount)
{
    EXPECT_EQ(Formatted("%hd", 70000), "4464");
    EXPECT_EQ(Formatted("%hu", -1), "65535");
    EXPECT_EQ(Formatted("%lu", -1L), "4294967295");
    EXPECT_EQ(Formatted("%lx", -1L), "ffffffff");
    EXPECT_EQ(Formatted("%ld", -5L), "-5");
    EXPECT_EQ(Formatted("%I64d", static_cast<long long>(LLONG_MIN)), "-9223372036854775808");
    EXPECT_EQ(Formatted("%I64u|%d", static_cast<unsigned long long>(ULLONG_MAX), 7),
              "18446744073709551615|7");
    EXPECT_EQ(Formatted("%020I64x", 0x123456789ABCDEFll), "00000123456789abcdef");
    EXPECT_EQ(Formatted("%Fd %Ns %Fs", 1, "near", "far"), "1 near far");
}

// A size that took no argument, or one of the wrong width, would leave the text to take what is none.
TEST(CStringFormat, EverySizeTakesItsArgument)
{
    EXPECT_EQ(Formatted("%zu %s", std::size_t{7}, "next"), "7 next");
    EXPECT_EQ(Formatted("%zx %Zd %s", static_cast<std::size_t>(0x89ABCDEF), std::size_t{5}, "next"),
              "89abcdef 5 next");
    EXPECT_EQ(Formatted("%td %Id %Ix %s", std::ptrdiff_t{-7}, std::ptrdiff_t{-8}, std::size_t{255}, "next"),
              "-7 -8 ff next");
    EXPECT_EQ(Formatted("%jd %ju %s", std::intmax_t{INT64_MIN}, std::uintmax_t{UINT64_MAX}, "next"),
              "-9223372036854775808 18446744073709551615 next");
    EXPECT_EQ(Formatted("%lld %qd %Ld %s", -1LL, LLONG_MAX, LLONG_MIN, "next"),
              "-1 9223372036854775807 -9223372036854775808 next");
    EXPECT_EQ(Formatted("%I32d %I32u %wd %s", -1, -1, -2, "next"), "-1 4294967295 -2 next");
    EXPECT_EQ(Formatted("%I64d %I64x %s", -1LL, -1LL, "next"), "-1 ffffffffffffffff next");
    EXPECT_EQ(Formatted("%hhd %hhu %hhx %hd %s", 300, -1, -1, -1, "next"), "44 255 ff -1 next");
    EXPECT_EQ(Formatted("%Lf %Lg %.3Le %s", 1.5L, 1e4000L, -0.0L, "next"),
              "1.500000 1e+4000 -0.000e+00 next");
    EXPECT_EQ(Formatted("%lf %hf %F %.1F|%s", 1.5, 2.5, -3.5, 0.25, "next"),
              "1.500000 2.500000 -3.500000 0.2|next");
    EXPECT_EQ(Formatted("%I6d|%'d|%I.1f|%If %s", 1, 2, 0.5, 1.5, "next"), "     1|2|0.5|1.500000 next");
    EXPECT_EQ(Formatted("%b %#B %08b %s", 5, 5, 5, "next"), "101 0B101 00000101 next");
    long long skipped = 77;
    EXPECT_EQ(Formatted("%lln%zn%s", &skipped, &skipped, "next"), "next");
    EXPECT_EQ(skipped, 77);
}

TEST(CStringFormat, PrintsOneTextWhereTheRuntimesDiffer)
{
    EXPECT_EQ(Formatted("[% u] [%+u] [% x] [%+o]", 5, 5, 5, 5), "[5] [5] [5] [5]");
    EXPECT_EQ(Formatted("[%#.0o] [%#.0x] [%.0d] [%+.0d] [%#x]", 0, 0, 0, 0, 0), "[0] [] [] [+] [0]");
    EXPECT_EQ(Formatted("[%05s] [%-05s] [%03c] [%#d]", "ab", "ab", 'c', 7), "[000ab] [ab   ] [00c] [7]");
    EXPECT_EQ(Formatted("%40.30g|%.20e", 0.1, 5e-324),
              "        0.100000000000000005551115123126|4.94065645841246544177e-324");
    EXPECT_EQ(Formatted("%g %g %#g %#.0f %#.0e %e", 100000.0, 1e6, 1.0, 3.0, 3.0, 1e100),
              "100000 1e+06 1.00000 3. 3.e+00 1.000000e+100");
    EXPECT_EQ(Formatted("%.0f %.0f %.0f %.1f", 0.5, 1.5, 2.5, 0.25), "0 2 2 0.2");
    EXPECT_EQ(Formatted("%a %A %.2a %012a %a", 1.0, 0.1, -1.999, 0.5, 0.0),
              "0x1p+0 0X1.999999999999AP-4 -0x2.00p+0 0x0000001p-1 0x0p+0");
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(
        Formatted("[%f] [%F] [%+08e] [%-6G] [%010a]", infinity, -infinity, infinity, infinity, -infinity),
        "[inf] [-INF] [    +inf] [INF   ] [      -inf]");
    EXPECT_EQ(Formatted("%f %G", std::numeric_limits<double>::quiet_NaN(), -std::nan("")), "nan -NAN");
    EXPECT_EQ(Formatted("%.17000Lf", 0.5L), "0.5" + std::string(16999, '0'));
    EXPECT_EQ(Formatted("%.16600e", 0.5), "5." + std::string(16600, '0') + "e-01");
}

TEST(CStringFormat, PrintsTextsNarrowAndWide)
{
    constexpr WCHAR wide[] = {'w', 0xAC00, 'd', 0};
    EXPECT_EQ(Formatted("[%s] [%5s] [%-5s] [%.2s]", "abc", "abc", "abc", "abc"),
              "[abc] [  abc] [abc  ] [ab]");
    EXPECT_EQ(Formatted("[%S] [%ls] [%hS]", wide, wide, "abc"), "[w\xB0\xA1"
                                                                "d] [w\xB0\xA1"
                                                                "d] [abc]");
    EXPECT_EQ(Formatted("[%6S] [%-6S] [%.2S]", wide, wide, wide), "[  w\xB0\xA1"
                                                                  "d] [w\xB0\xA1"
                                                                  "d  ] [w\xB0\xA1]");
    EXPECT_EQ(Formatted("%c%3c%-3c|%C%lc%hC", 'a', 'b', 'c', 0xAC00, 0xAC01, 'd'), "a  bc  |\xB0\xA1\xB0\xA2"
                                                                                   "d");
    EXPECT_EQ(Formatted("[%ws] [%wc] [%hhS]", wide, 0xAC00, "abc"), "[w\xB0\xA1"
                                                                    "d] [\xB0\xA1] [abc]");
    const char unterminated[] = {'a', 'b'};
    EXPECT_EQ(Formatted("%.2s", unterminated), "ab");
    EXPECT_EQ(Formatted("%.*s", 1, "abc"), "a");
    EXPECT_EQ(Formatted("%.*s", -1, "abc"), "abc");
    EXPECT_EQ(Formatted("%.0s|%.s", "abc", "abc"), "|");
}

TEST(CStringFormat, NullTextsAreNamed)
{
    const char* null = nullptr;
    EXPECT_EQ(Formatted("%s %S %8s %.3s", null, null, null, null), "(null) (null)   (null) (nu");
    CString text("old");
    text.Format(nullptr);
    EXPECT_TRUE(text.IsEmpty());
}

TEST(CStringFormat, OddDirectivesAreDefined)
{
    EXPECT_EQ(Formatted("100%%"), "100%");
    EXPECT_EQ(Formatted("%y%5k%"), "yk");
    EXPECT_EQ(Formatted("%5"), "");
    EXPECT_EQ(Formatted("%-"), "");
    EXPECT_EQ(Formatted("%Iy%I"), "IyI");
    EXPECT_EQ(Formatted("\xB0\xA1%d\x81%d", 5), "\xB0\xA1"
                                                "5\x81%d");
    EXPECT_EQ(Formatted("ab%cde", 0), "ab");
    int written = 77;
    EXPECT_EQ(Formatted("abc%n%d", &written, 5), "abc5");
    EXPECT_EQ(written, 77);
    EXPECT_EQ(Formatted("%p", reinterpret_cast<void*>(0xBEEF)),
              std::string(sizeof(void*) * 2 - 4, '0') + "BEEF");
}

TEST(CStringFormat, NoFieldIsTooLong)
{
    EXPECT_EQ(Formatted("%.200e", 1.0 / 3), Printed("%.200e", 1.0 / 3));
    EXPECT_EQ(Formatted("%+.40d", 7), "+" + std::string(39, '0') + "7");
    EXPECT_EQ(Formatted("%f", 1.7e308), Printed("%f", 1.7e308));
    EXPECT_EQ(Formatted("%400.300f", -1e300), Printed("%400.300f", -1e300));
    EXPECT_EQ(Formatted("%*d", 1000, 5), std::string(999, ' ') + "5");
    EXPECT_EQ(Formatted("%*d|", -1000, 5), "5" + std::string(999, ' ') + "|");
    EXPECT_EQ(Formatted("%100000s", "x").size(), 100000u);
    EXPECT_EQ(Formatted("%99999999999999999999d", 1).size(), 1048576u);
    EXPECT_EQ(Formatted("%*d", INT_MIN, 1).size(), 1048576u);
    EXPECT_EQ(Formatted("%.2147483647d", 1).size(), 1048576u);
    const std::string longText(1100000, 'x');
    EXPECT_EQ(Formatted("%.1099999s", longText.c_str()).size(), 1099999u);
    EXPECT_EQ(Formatted("%.*s", INT_MAX, longText.c_str()).size(), longText.size());
    EXPECT_EQ(Formatted("%.99999999999S", OLESTR("wide")), "wide");
}

TEST(CStringFormat, ArgumentsMayBeTheStringItself)
{
    CString text("ab");
    text.Format("%s-%s", static_cast<const char*>(text), static_cast<const char*>(text));
    EXPECT_STREQ(text, "ab-ab");
    const CString shared(text);
    text.Format("%d", 1);
    EXPECT_STREQ(text, "1");
    EXPECT_STREQ(shared, "ab-ab");
}

TEST(CStringFormat, MessagesTakeTheirInsertsInAnyOrder)
{
    CString text;
    text.FormatMessageA("%2 %1!d!%% %3!04x!", 42, "answer", 0xAB);
    EXPECT_STREQ(text, "answer 42% 00ab");
    text.FormatMessageA("%1!5s!|", "bad", 1);
    EXPECT_STREQ(text, "  bad|");
    // What cannot be formatted, or comes out empty, leaves the text alone.
    text.FormatMessageA("%1!s", "x");
    EXPECT_STREQ(text, "  bad|");
    text.FormatMessageA("");
    text.FormatMessageA(nullptr);
    EXPECT_STREQ(text, "  bad|");
}
} // namespace
