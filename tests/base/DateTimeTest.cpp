#include "KesraNTC/base/COLEDateTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <ctime>
#include <limits>
#include <string>

namespace
{

constexpr double EarliestDate = -657434;
constexpr double LatestDate = 2958465;

std::string Text(const COLEDateTime& date)
{
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", date.GetYear(), date.GetMonth(),
                  date.GetDay(), date.GetHour(), date.GetMinute(), date.GetSecond());
    return text;
}

TEST(DateTime, CalendarFieldsMakeTheDateValue)
{
    COLEDateTime date;
    EXPECT_EQ(0.0, static_cast<double>(date));
    EXPECT_EQ(COLEDateTime::valid, date.GetStatus());

    EXPECT_EQ(COLEDateTime::valid, date.SetDateTime(1900, 1, 1, 0, 0, 0));
    EXPECT_EQ(2.0, static_cast<double>(date));
    date.SetDateTime(2000, 2, 29, 12, 0, 0);
    EXPECT_EQ(36585.5, static_cast<double>(date));
    date.SetDateTime(1899, 12, 29, 6, 0, 0);
    EXPECT_EQ(-1.25, static_cast<double>(date));
    date.SetDate(100, 1, 1);
    EXPECT_EQ(EarliestDate, static_cast<double>(date));
    date.SetDate(9999, 12, 31);
    EXPECT_EQ(LatestDate, static_cast<double>(date));
    date.SetTime(18, 0, 0);
    EXPECT_EQ(0.75, static_cast<double>(date));
    // Only 16 bits of a field count.
    date.SetDateTime(65536 + 1900, 65536 + 1, 1, 0, 0, 0);
    EXPECT_EQ(2.0, static_cast<double>(date));
}

TEST(DateTime, RefusedFieldsLeaveTheValueAndMakeItInvalid)
{
    const int refused[][6] = {
        {1900, 2, 29, 0, 0, 0}, {2001, 2, 29, 0, 0, 0}, {2000, 2, 30, 0, 0, 0}, {2000, 4, 31, 0, 0, 0},
        {2000, 0, 1, 0, 0, 0},  {2000, 13, 1, 0, 0, 0}, {2000, 1, 0, 0, 0, 0},  {10000, 1, 1, 0, 0, 0},
        {2000, 1, 1, 24, 0, 0}, {2000, 1, 1, 0, 60, 0}, {2000, 1, 1, 0, 0, 60}, {-1, 1, 1, 0, 0, 0},
        {2000, -1, 1, 0, 0, 0}, {2000, 1, 1, -1, 0, 0},
    };
    for (const auto& f : refused) {
        COLEDateTime date(5.5);
        EXPECT_EQ(COLEDateTime::invalid, date.SetDateTime(f[0], f[1], f[2], f[3], f[4], f[5]))
            << f[0] << f[1];
        EXPECT_EQ(5.5, static_cast<double>(date));
        EXPECT_EQ(COLEDateTime::invalid, date.GetStatus());
        EXPECT_EQ(-1, date.GetYear());
        EXPECT_EQ(COLEDateTime::valid, date.SetDateTime(2000, 2, 29, 0, 0, 0));
    }
}

TEST(DateTime, EveryDayAgreesWithTheGregorianCalendar)
{
    using namespace std::chrono;
    const sys_days origin = sys_days(year(1899) / 12 / 30);
    for (int n = static_cast<int>(EarliestDate); n <= static_cast<int>(LatestDate); ++n) {
        const sys_days day = origin + days(n);
        const year_month_day expected(day);
        const COLEDateTime date(static_cast<double>(n));
        SYSTEMTIME fields{};
        const bool agrees = date.GetAsSystemTime(fields) == 1 &&
                            static_cast<int>(expected.year()) == fields.wYear &&
                            static_cast<unsigned>(expected.month()) == fields.wMonth &&
                            static_cast<unsigned>(expected.day()) == fields.wDay &&
                            weekday(day).c_encoding() == fields.wDayOfWeek &&
                            (day - sys_days(expected.year() / 1 / 1)).count() + 1 == date.GetDayOfYear() &&
                            static_cast<double>(COLEDateTime(fields)) == n;
        ASSERT_TRUE(agrees) << "day " << n << " is " << Text(date);
    }
}

TEST(DateTime, EverySecondOfADayComesBackOnBothSidesOfZero)
{
    for (const int month : {1, 12}) {
        const int year = month == 1 ? 2003 : 1850;
        for (int second = 0; second < 86400; ++second) {
            const COLEDateTime date(year, month, 15, second / 3600, second / 60 % 60, second % 60);
            ASSERT_EQ(second / 3600, date.GetHour()) << second;
            ASSERT_EQ(second / 60 % 60, date.GetMinute()) << second;
            ASSERT_EQ(second % 60, date.GetSecond()) << second;
            ASSERT_EQ(15, date.GetDay()) << second;
        }
    }
}

TEST(DateTime, NegativeDatesCountTheirTimeForwards)
{
    const COLEDateTime date(-1.25);
    EXPECT_EQ("1899-12-29 06:00:00", Text(date));
    EXPECT_EQ(0.25, static_cast<double>(date + COLEDateTimeSpan(1.0)));
    EXPECT_EQ(-1.25, static_cast<double>(COLEDateTime(0.25) - COLEDateTimeSpan(1.0)));
    EXPECT_EQ(1.0, (COLEDateTime(0.25) - date).GetTotalDays());
    // -1.75 is later on the same day than -1.25.
    EXPECT_TRUE(COLEDateTime(-1.75) > date);
    EXPECT_TRUE(date < COLEDateTime(-1.75));
    EXPECT_TRUE(date <= COLEDateTime(-1.75) && COLEDateTime(-1.75) >= date);
    EXPECT_EQ(2, COLEDateTime(2.0).GetDayOfWeek());
    // Rounding to the second carries the day backwards here, as it does at the server.
    EXPECT_EQ("1899-12-28 00:00:00", Text(COLEDateTime(-1.999999)));
}

TEST(DateTime, OutOfRangeDatesHaveNoFields)
{
    for (const double value : {LatestDate + 1, LatestDate + 0.5, EarliestDate - 1, 1e300, -1e300,
                               std::numeric_limits<double>::infinity(), std::nan("")}) {
        const COLEDateTime date(value);
        SYSTEMTIME fields{1, 2, 3, 4, 5, 6, 7, 8};
        EXPECT_EQ(0, date.GetAsSystemTime(fields));
        EXPECT_EQ(8, fields.wMilliseconds);
        EXPECT_EQ("-001--1--1 -1:-1:-1", Text(date));
        EXPECT_EQ(-1, date.GetDayOfWeek());
        EXPECT_EQ(-1, date.GetDayOfYear());
    }
    EXPECT_EQ(COLEDateTime::invalid, (COLEDateTime(LatestDate) + COLEDateTimeSpan(1.0)).GetStatus());
    EXPECT_EQ(COLEDateTime::invalid, (COLEDateTime(EarliestDate) - COLEDateTimeSpan(1.0)).GetStatus());
}

TEST(DateTime, NullAndInvalidOperandsDecideTheResult)
{
    COLEDateTime nullDate;
    nullDate.SetStatus(COLEDateTime::null);
    COLEDateTime invalidDate;
    invalidDate.SetStatus(COLEDateTime::invalid);
    COLEDateTimeSpan nullSpan;
    nullSpan.SetStatus(COLEDateTimeSpan::null);
    COLEDateTimeSpan invalidSpan;
    invalidSpan.SetStatus(COLEDateTimeSpan::invalid);

    EXPECT_EQ(COLEDateTime::null, (nullDate + invalidSpan).GetStatus());
    EXPECT_EQ(COLEDateTime::null, (invalidDate - nullSpan).GetStatus());
    EXPECT_EQ(COLEDateTime::invalid, (COLEDateTime() + invalidSpan).GetStatus());
    EXPECT_EQ(COLEDateTimeSpan::null, (invalidDate - nullDate).GetStatus());
    EXPECT_EQ(COLEDateTimeSpan::invalid, (invalidDate - COLEDateTime()).GetStatus());
    EXPECT_EQ(COLEDateTimeSpan::null, (nullSpan + invalidSpan).GetStatus());
    EXPECT_EQ(COLEDateTimeSpan::invalid, (invalidSpan - COLEDateTimeSpan()).GetStatus());
    EXPECT_EQ(COLEDateTimeSpan::valid, (-nullSpan).GetStatus());

    COLEDateTime moved(2.0);
    moved += COLEDateTimeSpan(1.5);
    EXPECT_EQ(3.5, static_cast<double>(moved));
    moved -= nullSpan;
    EXPECT_EQ(COLEDateTime::null, moved.GetStatus());

    EXPECT_TRUE(nullDate != COLEDateTime());
    EXPECT_TRUE(COLEDateTime(1.0) == COLEDateTime(1.0));
    EXPECT_TRUE(nullDate >= COLEDateTime());
}

TEST(DateTime, RuntimeTimesAreLocal)
{
    const std::time_t now = 1'058'256'550;
    const std::tm local = *std::localtime(&now);
    const COLEDateTime date(static_cast<long>(now));
    EXPECT_EQ(COLEDateTime::valid, date.GetStatus());
    EXPECT_EQ(COLEDateTime(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                           local.tm_sec),
              date);

    COLEDateTime negative(7.0);
    negative = -1L;
    EXPECT_EQ(COLEDateTime::invalid, negative.GetStatus());
    EXPECT_EQ(7.0, static_cast<double>(negative));

    const COLEDateTime before(static_cast<long>(std::time(nullptr)));
    const COLEDateTime ticks = COLEDateTime::GetTickCount();
    EXPECT_TRUE(ticks >= before && ticks <= COLEDateTime(static_cast<long>(std::time(nullptr))));
}

TEST(DateTime, SystemAndFileTimes)
{
    EXPECT_EQ(36585.5, static_cast<double>(COLEDateTime(SYSTEMTIME{2000, 2, 99, 29, 12, 0, 0, 999})));
    EXPECT_EQ(COLEDateTime::invalid, COLEDateTime(SYSTEMTIME{2001, 2, 0, 29, 12, 0, 0, 0}).GetStatus());

    const FILETIME utc{0xB6E2'4000U, 0x01C3'4AB1U};
    FILETIME local{};
    SYSTEMTIME fields{};
    ASSERT_TRUE(FileTimeToLocalFileTime(&utc, &local) && FileTimeToSystemTime(&local, &fields));
    EXPECT_EQ(COLEDateTime(fields), COLEDateTime(utc));
    COLEDateTime date(3.0);
    date = FILETIME{0, 0xC000'0000U};
    EXPECT_EQ(COLEDateTime::invalid, date.GetStatus());
    EXPECT_EQ(3.0, static_cast<double>(date));
}

TEST(DateTime, DosDates)
{
    const auto day = static_cast<unsigned short>(23 << 9 | 7 << 5 | 15);
    const auto time = static_cast<unsigned short>(8 << 11 | 9 << 5 | 5);
    EXPECT_EQ("2003-07-15 08:09:10", Text(COLEDateTime(day, time)));
    const unsigned short hour24 = 24 << 11;
    EXPECT_EQ(COLEDateTime::invalid, COLEDateTime(day, hour24).GetStatus());
}

TEST(DateTime, ParsesTwoFormatsAndRefusesShortTexts)
{
    COLEDateTime date(5.0);
    EXPECT_EQ(1, date.ParseDateTime("2003-07-15 08:09:10", 1));
    EXPECT_EQ("2003-07-15 08:09:10", Text(date));
    COLEDateTime compact;
    EXPECT_EQ(1, compact.ParseDateTime("20030715080910 and more", 2));
    EXPECT_EQ(date, compact);
    EXPECT_EQ(1, compact.ParseDateTime("1999/12x31y23.59?58", 1));
    EXPECT_EQ("1999-12-31 23:59:58", Text(compact));

    const COLEDateTime before = compact;
    EXPECT_EQ(0, compact.ParseDateTime(nullptr, 1));
    EXPECT_EQ(0, compact.ParseDateTime("2003-07-15 08:09:10", 3));
    EXPECT_EQ(0, compact.ParseDateTime("2003-07-15 08:09:10", 0));
    EXPECT_EQ(0, compact.ParseDateTime("2003-07-15 08:09:1", 1));
    EXPECT_EQ(0, compact.ParseDateTime("2003071508091", 2));
    EXPECT_EQ(0, compact.ParseDateTime("", 2));
    EXPECT_EQ(before, compact);

    // Fields without leading digits are 0, and a refused date still counts as parsed.
    EXPECT_EQ(1, compact.ParseDateTime("2003-07-15 xx:-1:1z", 1));
    EXPECT_EQ("2003-07-15 00:00:01", Text(compact));
    EXPECT_EQ(1, compact.ParseDateTime("2003-13-15 08:09:10", 1));
    EXPECT_EQ(COLEDateTime::invalid, compact.GetStatus());
}

TEST(DateTimeSpan, PartsAndTotals)
{
    const COLEDateTimeSpan span(3L, 4, 5, 6);
    EXPECT_EQ(3, span.GetDays());
    EXPECT_EQ(4, span.GetHours());
    EXPECT_EQ(5, span.GetMinutes());
    EXPECT_EQ(6, span.GetSeconds());
    EXPECT_EQ(76, span.GetTotalHours());
    EXPECT_EQ(76 * 60 + 5, span.GetTotalMinutes());
    EXPECT_EQ((76 * 60 + 5) * 60 + 6, span.GetTotalSeconds());

    EXPECT_EQ(5.0, COLEDateTimeSpan(0L, 0, 0, 5).GetTotalSeconds());
    EXPECT_EQ(4.0, COLEDateTimeSpan(4.9999 / 86400).GetTotalSeconds());
    for (int seconds = 0; seconds < 86400; ++seconds)
        ASSERT_EQ(seconds, COLEDateTimeSpan(0L, 0, 0, seconds).GetTotalSeconds());

    // An hour that rounding completes reads as none.
    EXPECT_EQ(0, COLEDateTimeSpan(0.999999).GetHours());
    // The addend pulls negative parts toward zero.
    const COLEDateTimeSpan negative = -COLEDateTimeSpan(1L, 6, 0, 0);
    EXPECT_EQ(-1.25, negative.GetTotalDays());
    EXPECT_EQ(-1, negative.GetDays());
    EXPECT_EQ(-5, negative.GetHours());
    EXPECT_EQ(-29.0, negative.GetTotalHours());

    EXPECT_EQ(0, COLEDateTimeSpan(1e300).GetDays());
    EXPECT_EQ(0, COLEDateTimeSpan(std::nan("")).GetHours());
}

TEST(DateTimeSpan, ArithmeticIsRangeCheckedConstructionIsNot)
{
    COLEDateTimeSpan span(4'000'000L, 0, 0, 0);
    EXPECT_EQ(COLEDateTimeSpan::valid, span.GetStatus());
    EXPECT_EQ(COLEDateTimeSpan::invalid, (span + COLEDateTimeSpan(0.0)).GetStatus());
    span.CheckRange();
    EXPECT_EQ(COLEDateTimeSpan::invalid, span.GetStatus());

    COLEDateTimeSpan sum(3'615'896.0);
    sum += COLEDateTimeSpan(1.0);
    EXPECT_EQ(COLEDateTimeSpan::valid, sum.GetStatus());
    sum -= COLEDateTimeSpan(7'231'794.5);
    EXPECT_EQ(COLEDateTimeSpan::invalid, sum.GetStatus());
    EXPECT_EQ(-3'615'897.5, sum.GetTotalDays());
    EXPECT_TRUE(sum < COLEDateTimeSpan() && COLEDateTimeSpan() > sum && sum <= sum && sum >= sum);
    EXPECT_TRUE(sum == sum);
    EXPECT_TRUE(sum != COLEDateTimeSpan(-3'615'897.5));
}

} // namespace
