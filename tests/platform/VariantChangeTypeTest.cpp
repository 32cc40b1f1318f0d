#include "tests/platform/VariantText.h"

#include <gtest/gtest.h>

#include <climits>
#include <list>
#include <string>
#include <string_view>
#include <vector>

namespace
{

template <class T> VARIANT Make(VARTYPE type, T VARIANT::*member, T value)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = type;
    variant.*member = value;
    return variant;
}

VARIANT Currency(LONGLONG tenThousandths)
{
    return Make(VT_CY, &VARIANT::llVal, tenThousandths);
}

VARIANT Decimal(long long digits, BYTE scale)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.decVal.scale = scale;
    variant.decVal.sign = digits < 0 ? DECIMAL_NEG : BYTE{0};
    variant.decVal.Lo64 = static_cast<ULONGLONG>(digits < 0 ? -digits : digits);
    variant.vt = VT_DECIMAL;
    return variant;
}

/// Owned here, as long as the program runs.
VARIANT Text(const OLECHAR* text)
{
    static std::list<_variant_t> texts;
    return texts.emplace_back(text);
}

struct Row {
    VARIANT Source;
    const char* Targets;
};

constexpr VARTYPE TargetTypes[] = {VT_EMPTY, VT_NULL, VT_I1,      VT_UI1,  VT_I2,   VT_UI2,  VT_I4,
                                   VT_UI4,   VT_INT,  VT_UINT,    VT_I8,   VT_UI8,  VT_R4,   VT_R8,
                                   VT_CY,    VT_DATE, VT_DECIMAL, VT_BOOL, VT_BSTR, VT_ERROR};

// A cell per target type in the order above: the value, x where the types do not match, o where the value
// does not fit, and ? where systems differ. Integers of one width are taken over bit by bit; everything else
// that drops digits rounds to even.
const Row Matrix[] = {
    {Make(VT_EMPTY, &VARIANT::llVal, LONGLONG{0}),
     "empty | null | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0e-0 | 0 | '' | x"},
    {Make(VT_NULL, &VARIANT::llVal, LONGLONG{0}),
     "x | null | x | x | x | x | x | x | x | x | x | x | x | x | x | x | x | x | x | x"},
    {Make(VT_ERROR, &VARIANT::scode, SCODE{7}),
     "x | x | x | x | x | x | x | x | x | x | x | x | x | x | x | x | x | x | x | 7"},
    {Make(VT_I1, &VARIANT::cVal, CHAR{-128}),
     "empty | null | -128 | 128 | -128 | o | -128 | o | -128 | o | -128 | o | -128 | -128 | -1280000 | -128 "
     "| -128e-0 | -1 | '-128' | x"},
    {Make(VT_I1, &VARIANT::cVal, CHAR{100}),
     "empty | null | 100 | 100 | 100 | 100 | 100 | 100 | 100 | 100 | 100 | 100 | 100 | 100 | 1000000 | 100 | "
     "100e-0 | -1 | '100' | x"},
    {Make(VT_UI1, &VARIANT::bVal, BYTE{255}),
     "empty | null | -1 | 255 | 255 | 255 | 255 | 255 | 255 | 255 | 255 | 255 | 255 | 255 | 2550000 | 255 | "
     "255e-0 | -1 | '255' | x"},
    {Make(VT_I2, &VARIANT::iVal, SHORT{-300}),
     "empty | null | o | o | -300 | 65236 | -300 | o | -300 | o | -300 | o | -300 | -300 | -3000000 | -300 | "
     "-300e-0 | -1 | '-300' | x"},
    {Make(VT_UI2, &VARIANT::uiVal, USHORT{65535}),
     "empty | null | o | o | -1 | 65535 | 65535 | 65535 | 65535 | 65535 | 65535 | 65535 | 65535 | 65535 | "
     "655350000 | 65535 | 65535e-0 | -1 | '65535' | x"},
    {Make(VT_I4, &VARIANT::lVal, LONG{INT_MIN}),
     "empty | null | o | o | o | o | -2147483648 | 2147483648 | -2147483648 | 2147483648 | -2147483648 | o | "
     "-2147483648 | -2147483648 | -21474836480000 | o | -2147483648e-0 | -1 | '-2147483648' | x"},
    {Make(VT_I4, &VARIANT::lVal, LONG{70000}),
     "empty | null | o | o | o | o | 70000 | 70000 | 70000 | 70000 | 70000 | 70000 | 70000 | 70000 | "
     "700000000 | 70000 | 70000e-0 | -1 | '70000' | x"},
    {Make(VT_UI4, &VARIANT::ulVal, ULONG{4294967295}),
     "empty | null | o | o | o | o | -1 | 4294967295 | -1 | 4294967295 | 4294967295 | 4294967295 | "
     "4294967296 | 4294967295 | 42949672950000 | o | 4294967295e-0 | -1 | '4294967295' | x"},
    {Make(VT_INT, &VARIANT::intVal, -5), "empty | null | -5 | o | -5 | o | -5 | 4294967291 | -5 | 4294967291 "
                                         "| -5 | o | -5 | -5 | -50000 | -5 | -5e-0 | -1 | '-5' | x"},
    {Make(VT_UINT, &VARIANT::uintVal, 5U),
     "empty | null | 5 | 5 | 5 | 5 | 5 | 5 | 5 | 5 | 5 | 5 | 5 | 5 | 50000 | 5 | 5e-0 | -1 | '5' | x"},
    {Make(VT_I8, &VARIANT::llVal, LONGLONG{LLONG_MIN}),
     "empty | null | o | o | o | o | o | o | o | o | -9223372036854775808 | 9223372036854775808 | "
     "-9.223372e+18 | -9223372036854775808 | o | o | -9223372036854775808e-0 | -1 | '-9223372036854775808' | "
     "x"},
    {Make(VT_I8, &VARIANT::llVal, LONGLONG{12}), "empty | null | 12 | 12 | 12 | 12 | 12 | 12 | 12 | 12 | 12 "
                                                 "| 12 | 12 | 12 | 120000 | 12 | 12e-0 | -1 | '12' | x"},
    {Make(VT_UI8, &VARIANT::ullVal, ULONGLONG{ULLONG_MAX}),
     "empty | null | o | o | o | o | o | o | o | o | -1 | 18446744073709551615 | 1.8446744e+19 | "
     "18446744073709551616 | o | o | 18446744073709551615e-0 | -1 | '18446744073709551615' | x"},
    {Make(VT_R4, &VARIANT::fltVal, -1.5F), "empty | null | -2 | o | -2 | o | -2 | o | -2 | o | -2 | o | -1.5 "
                                           "| -1.5 | -15000 | -1.5 | -15e-1 | -1 | '-1.5' | x"},
    {Make(VT_R4, &VARIANT::fltVal, 2.5F), "empty | null | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2.5 | 2.5 "
                                          "| 25000 | 2.5 | 25e-1 | -1 | '2.5' | x"},
    {Make(VT_R4, &VARIANT::fltVal, 0.1F),
     "empty | null | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0.1 | 0.10000000149011612 | 1000 | "
     "0.10000000149011612 | 1e-1 | -1 | '0.1' | x"},
    {Make(VT_R4, &VARIANT::fltVal, 1234567.0F),
     "empty | null | o | o | o | o | 1234567 | 1234567 | 1234567 | 1234567 | 1234567 | 1234567 | 1234567 | "
     "1234567 | 12345670000 | 1234567 | 1234567e-0 | -1 | '1234567' | x"},
    {Make(VT_R8, &VARIANT::dblVal, 2.5), "empty | null | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2.5 | 2.5 | "
                                         "25000 | 2.5 | 25e-1 | -1 | '2.5' | x"},
    {Make(VT_R8, &VARIANT::dblVal, -0.5), "empty | null | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | -0.5 | "
                                          "-0.5 | -5000 | -0.5 | -5e-1 | -1 | '-0.5' | x"},
    {Make(VT_R8, &VARIANT::dblVal, 0.1),
     "empty | null | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0.1 | 0.1 | 1000 | 0.1 | 1e-1 | -1 | '0.1' | x"},
    {Make(VT_R8, &VARIANT::dblVal, 1e15),
     "empty | null | o | o | o | o | o | o | o | o | 1000000000000000 | 1000000000000000 | 1e+15 | 1e+15 | o "
     "| o | 1000000000000000e-0 | -1 | '1E+15' | x"},
    {Make(VT_R8, &VARIANT::dblVal, -1e300),
     "empty | null | o | o | o | o | o | o | o | o | o | o | o | -1e+300 | o | o | o | -1 | '-1E+300' | x"},
    {Currency(25000), "empty | null | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2.5 | 2.5 | 25000 | 2.5 | "
                      "25000e-4 | -1 | '2.5' | x"},
    {Currency(-35000), "empty | null | -4 | o | -4 | o | -4 | o | -4 | o | -4 | o | -3.5 | -3.5 | -35000 | "
                       "-3.5 | -35000e-4 | -1 | '-3.5' | x"},
    {Make(VT_DATE, &VARIANT::date, 37817.25),
     "empty | null | o | o | o | 37817 | 37817 | 37817 | 37817 | 37817 | 37817 | 37817 | 37817.25 | 37817.25 "
     "| 378172500 | 37817.25 | 3781725e-2 | -1 | '7/15/2003 6:00:00 AM' | x"},
    {Make(VT_DATE, &VARIANT::date, -1.25),
     "empty | null | -1 | o | -1 | o | -1 | o | -1 | o | -1 | o | -1.25 | -1.25 | -12500 | -1.25 | -125e-2 | "
     "-1 | '12/29/1899 6:00:00 AM' | x"},
    {Make(VT_DATE, &VARIANT::date, 0.0),
     "empty | null | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0e-0 | 0 | '12:00:00 AM' | x"},
    {Make(VT_BOOL, &VARIANT::boolVal, VARIANT_TRUE),
     "empty | null | -1 | 255 | -1 | 65535 | -1 | 4294967295 | -1 | 4294967295 | -1 | 18446744073709551615 | "
     "-1 | -1 | -10000 | -1 | ? | -1 | '-1' | x"},
    {Make(VT_BOOL, &VARIANT::boolVal, VARIANT_FALSE),
     "empty | null | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0e-0 | 0 | '0' | x"},
    {Decimal(25, 1), "empty | null | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2.5 | 2.5 | 25000 | 2.5 | 25e-1 "
                     "| -1 | '2.5' | x"},
    {Decimal(-35, 1), "empty | null | -4 | o | -4 | o | -4 | o | -4 | o | -4 | o | -3.5 | -3.5 | -35000 | "
                      "-3.5 | -35e-1 | -1 | '-3.5' | x"},
    {Decimal(1500, 3), "empty | null | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 2 | 1.5 | 1.5 | 15000 | 1.5 | "
                       "1500e-3 | -1 | '1.5' | x"},
    {Decimal(7000012, 2), "empty | null | o | o | o | o | 70000 | 70000 | 70000 | 70000 | 70000 | 70000 | "
                          "70000.12 | 70000.12 | 700001200 | 70000.12 | 7000012e-2 | -1 | '70000.12' | x"},
    {Text(OLESTR("")),
     "empty | null | x | x | x | x | x | x | x | x | x | x | x | x | x | x | x | x | '' | x"},
    {Text(OLESTR("5")),
     "empty | null | 5 | 5 | 5 | 5 | 5 | 5 | 5 | 5 | 5 | 5 | 5 | 5 | 50000 | x | 5e-0 | -1 | '5' | x"},
    {Text(OLESTR("-7.5")), "empty | null | -8 | o | -8 | o | -8 | o | -8 | o | -8 | o | -7.5 | -7.5 | -75000 "
                           "| x | -75e-1 | -1 | '-7.5' | x"},
    {Text(OLESTR(" (1,234) ")), "empty | null | o | o | -1234 | o | -1234 | o | -1234 | o | -1234 | o | "
                                "-1234 | -1234 | -12340000 | x | -1234e-0 | -1 | ' (1,234) ' | x"},
    {Text(OLESTR("1e3")), "empty | null | o | o | 1000 | 1000 | 1000 | 1000 | 1000 | 1000 | 1000 | 1000 | "
                          "1000 | 1000 | 10000000 | x | 1000e-0 | -1 | '1e3' | x"},
    {Text(OLESTR("300.25")), "empty | null | o | o | 300 | 300 | 300 | 300 | 300 | 300 | 300 | 300 | 300.25 "
                             "| 300.25 | 3002500 | x | 30025e-2 | -1 | '300.25' | x"},
    {Text(OLESTR("12345678901")),
     "empty | null | o | o | o | o | o | o | o | o | 12345678901 | 12345678901 | 12345678848 | 12345678901 | "
     "123456789010000 | x | 12345678901e-0 | -1 | '12345678901' | x"},
    {Text(OLESTR("abc")),
     "empty | null | x | x | x | x | x | x | x | x | x | x | x | x | x | x | x | x | 'abc' | x"},
    {Text(OLESTR("true")),
     "empty | null | x | x | x | x | x | x | x | x | x | x | x | x | x | x | x | -1 | 'true' | x"},
    {Text(OLESTR("7/15/2003 8:09:10 AM")), "empty | null | x | x | x | x | x | x | x | x | x | x | x | x | x "
                                           "| 37817.33969907407 | x | x | '7/15/2003 8:09:10 AM' | x"},
    {Text(OLESTR("99999999999999999999999999999999")),
     "empty | null | o | o | o | o | o | o | o | o | o | o | 1e+32 | 1e+32 | o | x | o | -1 | "
     "'99999999999999999999999999999999' | x"},
};

std::vector<std::string> Cells(std::string_view line)
{
    std::vector<std::string> cells;
    for (std::size_t end = 0; end != std::string_view::npos;
         line.remove_prefix(end == line.npos ? 0 : end + 3)) {
        end = line.find(" | ");
        const std::string_view cell = line.substr(0, end);
        cells.emplace_back(cell == "x" ? "mismatch" : cell == "o" ? "overflow" : cell);
    }
    return cells;
}

TEST(VariantChangeType, Matrix)
{
    for (const Row& row : Matrix) {
        const std::vector<std::string> expected = Cells(row.Targets);
        ASSERT_EQ(std::size(TargetTypes), expected.size()) << row.Targets;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            if (expected[i] != "?") {
                EXPECT_EQ(expected[i], Converted(row.Source, TargetTypes[i]))
                    << ValueText(row.Source) << " of type " << row.Source.vt << " to " << TargetTypes[i];
            }
        }
    }
}

std::string FromReal(double value, VARTYPE type)
{
    return Converted(Make(VT_R8, &VARIANT::dblVal, value), type);
}

TEST(VariantChangeType, RealsRoundToEvenUpToTheLimits)
{
    const struct {
        VARTYPE Type;
        double Fits;
        const char* Result;
        double TooLarge;
    } limits[] = {
        {VT_I1, 127.49, "127", 127.5},
        {VT_I1, -128.5, "-128", -128.51},
        {VT_UI1, 255.49, "255", 255.5},
        {VT_UI1, -0.5, "0", -0.51},
        {VT_I2, 32767.49, "32767", 32767.5},
        {VT_I2, -32768.5, "-32768", -32768.51},
        {VT_UI2, 65534.5, "65534", 65535.5},
        {VT_I4, 2147483646.5, "2147483646", 2147483647.5},
        {VT_I4, -2147483648.5, "-2147483648", -2147483648.51},
        {VT_UI4, 4294967294.5, "4294967294", 4294967295.5},
        {VT_I8, 4e18, "4000000000000000000", 1e19},
        {VT_UI8, 9e18, "9000000000000000000", 2e19},
        {VT_CY, 922337203685477.0, "9223372036854770000", 922337203685478.0},
        {VT_R4, 3.4e38, "3.4e+38", -3.5e38},
        {VT_DATE, 2958465.5, "2958465.5", 2958466.0},
        {VT_DATE, -657434.5, "-657434.5", -657435.0},
        {VT_DECIMAL, 1e20, "5:7766279631452241920e-0", 8e28},
    };
    for (const auto& limit : limits) {
        EXPECT_EQ(limit.Result, FromReal(limit.Fits, limit.Type)) << limit.Type;
        EXPECT_EQ("overflow", FromReal(limit.TooLarge, limit.Type)) << limit.Type;
    }
}

TEST(VariantChangeType, NumbersAsText)
{
    const struct {
        VARIANT Source;
        const char* Text;
    } numbers[] = {
        {Make(VT_R8, &VARIANT::dblVal, 0.1 + 0.2), "'0.3'"},
        {Make(VT_R8, &VARIANT::dblVal, 123456789012345.0), "'123456789012345'"},
        {Make(VT_R8, &VARIANT::dblVal, 1e14), "'100000000000000'"},
        {Make(VT_R8, &VARIANT::dblVal, 0.0001), "'0.0001'"},
        {Make(VT_R8, &VARIANT::dblVal, 0.00001), "'1E-05'"},
        {Make(VT_R8, &VARIANT::dblVal, 1e100), "'1E+100'"},
        {Make(VT_R8, &VARIANT::dblVal, -0.0), "'0'"},
        {Make(VT_R4, &VARIANT::fltVal, 16777216.0F), "'1.677722E+07'"},
        {Make(VT_R4, &VARIANT::fltVal, 3e38F), "'3E+38'"},
        {Currency(LLONG_MAX), "'922337203685477.5807'"},
        {Currency(1), "'0.0001'"},
        {Currency(-15000), "'-1.5'"},
        {Decimal(1, 28), "'0.0000000000000000000000000001'"},
        {Decimal(0, 5), "'0'"},
    };
    for (const auto& number : numbers)
        EXPECT_EQ(number.Text, Converted(number.Source, VT_BSTR));

    const VARIANT yes = Make(VT_BOOL, &VARIANT::boolVal, VARIANT_TRUE);
    const VARIANT no = Make(VT_BOOL, &VARIANT::boolVal, VARIANT_FALSE);
    EXPECT_EQ("'True'", Converted(yes, VT_BSTR, VARIANT_ALPHABOOL));
    EXPECT_EQ("'False'", Converted(no, VT_BSTR, VARIANT_ALPHABOOL));
}

TEST(VariantChangeType, TextAsNumber)
{
    const struct {
        const OLECHAR* Text;
        const char* Double;
        const char* Long;
    } numbers[] = {
        {OLESTR("  12 "), "12", "12"},
        {OLESTR("7-"), "-7", "-7"},
        {OLESTR("+7"), "7", "7"},
        {OLESTR("-$7"), "-7", "-7"},
        {OLESTR("($7.5)"), "-7.5", "-8"},
        {OLESTR("1,2,3"), "123", "123"},
        {OLESTR("1,234.5"), "1234.5", "1234"},
        {OLESTR("2.5"), "2.5", "2"},
        {OLESTR("2.500000000000000000000000000000000000000000001"), "2.5", "3"},
        {OLESTR(".5"), "0.5", "0"},
        {OLESTR("5."), "5", "5"},
        {OLESTR("1.5E-3"), "0.0015", "0"},
        {OLESTR("1E+3"), "1000", "1000"},
        {OLESTR("&HFF"), "255", "255"},
        {OLESTR("&o17"), "15", "15"},
        {OLESTR("2147483648"), "2147483648", "overflow"},
        {OLESTR("1e400"), "overflow", "overflow"},
        {OLESTR("1e-400"), "0", "0"},
        {OLESTR("."), "mismatch", "mismatch"},
        {OLESTR("1e"), "mismatch", "mismatch"},
        {OLESTR("1 2"), "mismatch", "mismatch"},
        {OLESTR("--7"), "mismatch", "mismatch"},
        {OLESTR("(7"), "mismatch", "mismatch"},
        {OLESTR("7x"), "mismatch", "mismatch"},
    };
    for (const auto& number : numbers) {
        EXPECT_EQ(number.Double, Converted(Text(number.Text), VT_R8));
        EXPECT_EQ(number.Long, Converted(Text(number.Text), VT_I4)) << number.Double;
    }
    EXPECT_EQ("15e-1", Converted(Text(OLESTR("1.50")), VT_DECIMAL));
    EXPECT_EQ("0", Converted(Text(OLESTR("FALSE")), VT_BOOL));
    EXPECT_EQ("0", Converted(Text(OLESTR("0.0")), VT_BOOL));
    EXPECT_EQ("mismatch", Converted(Text(OLESTR("yes")), VT_BOOL));
}

TEST(VariantChangeType, DatesAsText)
{
    const struct {
        DATE Date;
        const char* Text;
    } dates[] = {
        {36585.5, "'2/29/2000 12:00:00 PM'"},
        {37817.33969907407, "'7/15/2003 8:09:10 AM'"},
        {37817, "'7/15/2003'"},
        {0.25, "'6:00:00 AM'"},
        {-0.5, "'12:00:00 PM'"},
        {-657434, "'1/1/100'"},
        {2958465.99999, "'12/31/9999 11:59:59 PM'"},
    };
    for (const auto& date : dates)
        EXPECT_EQ(date.Text, Converted(Make(VT_DATE, &VARIANT::date, date.Date), VT_BSTR));
    EXPECT_EQ(ResultText(E_INVALIDARG), Converted(Make(VT_DATE, &VARIANT::date, 1e9), VT_BSTR));
}

TEST(VariantChangeType, TextAsDate)
{
    const struct {
        const OLECHAR* Text;
        const char* Date;
    } dates[] = {
        {OLESTR("7/15/2003"), "37817"},
        {OLESTR("7-15-2003"), "37817"},
        {OLESTR("15/7/2003"), "37817"},
        {OLESTR("2003/07/15"), "37817"},
        {OLESTR("7/15/03"), "37817"},
        {OLESTR("1/1/99"), "36161"},
        {OLESTR("15 July 2003"), "37817"},
        {OLESTR("July 15, 2003"), "37817"},
        {OLESTR("Jul 2003"), "37803"},
        {OLESTR("1/1/100"), "-657434"},
        {OLESTR("12/31/9999"), "2958465"},
        {OLESTR("12/29/1899 6:00"), "-1.25"},
        {OLESTR("2003-07-15 08:09:10"), "37817.33969907407"},
        {OLESTR("8:09:10 7/15/2003"), "37817.33969907407"},
        {OLESTR("18:00"), "0.75"},
        {OLESTR("6 PM"), "0.75"},
        {OLESTR("12:00 AM"), "0"},
        {OLESTR("12:00 PM"), "0.5"},
        {OLESTR("2/29/2001"), "mismatch"},
        {OLESTR("13/13/2003"), "mismatch"},
        {OLESTR("8:60"), "mismatch"},
        {OLESTR("24:00"), "mismatch"},
        {OLESTR("20030715"), "mismatch"},
        {OLESTR("July"), "mismatch"},
    };
    for (const auto& date : dates)
        EXPECT_EQ(date.Date, Converted(Text(date.Text), VT_DATE));
}

TEST(VariantChangeType, TypesThatNothingIsConvertedTo)
{
    for (const VARIANT& source : {Make(VT_I4, &VARIANT::lVal, LONG{5}), Text(OLESTR("5")),
                                  Make(VT_EMPTY, &VARIANT::llVal, LONGLONG{0})}) {
        EXPECT_EQ("mismatch", Converted(source, VT_VARIANT));
        EXPECT_EQ("mismatch", Converted(source, VT_UNKNOWN));
        EXPECT_EQ("mismatch", Converted(source, VT_DISPATCH));
        EXPECT_EQ("bad type", Converted(source, 15));
        EXPECT_EQ("bad type", Converted(source, 24));
    }
}

TEST(VariantChangeType, ReferencesAreFollowed)
{
    LONG number = 5;
    EXPECT_EQ("'5'", Converted(Make(VT_I4 | VT_BYREF, &VARIANT::plVal, &number), VT_BSTR));
    EXPECT_EQ("5", Converted(Make(VT_I4 | VT_BYREF, &VARIANT::plVal, &number), VT_I4));
    BSTR text = SysAllocString(OLESTR("2.5"));
    EXPECT_EQ("2.5", Converted(Make(VT_BSTR | VT_BYREF, &VARIANT::pbstrVal, &text), VT_R8));
    SysFreeString(text);
    DECIMAL decimal = Decimal(-15, 1).decVal;
    EXPECT_EQ("-15e-1", Converted(Make(VT_DECIMAL | VT_BYREF, &VARIANT::pdecVal, &decimal), VT_DECIMAL));
    VARIANT inner = Make(VT_R8, &VARIANT::dblVal, 1.5);
    EXPECT_EQ("2", Converted(Make(VT_VARIANT | VT_BYREF, &VARIANT::pvarVal, &inner), VT_I2));
}

TEST(VariantChangeType, ConvertsInPlace)
{
    VARIANT variant = _variant_t(OLESTR("12")).Detach();
    ASSERT_EQ(S_OK, VariantChangeType(&variant, &variant, 0, VT_I4));
    EXPECT_EQ("12", ValueText(variant));
    ASSERT_EQ(S_OK, VariantChangeType(&variant, &variant, 0, VT_BSTR));
    EXPECT_EQ("'12'", ValueText(variant));
    EXPECT_EQ(DISP_E_TYPEMISMATCH, VariantChangeType(&variant, &variant, 0, VT_ERROR));
    EXPECT_EQ("'12'", ValueText(variant));
    VariantClear(&variant);
}

} // namespace
