#include "KesraNTC/platform/Platform.h"

#include <gtest/gtest.h>

#include <ctime>

namespace
{

FILETIME FromSteps(unsigned long long steps)
{
    return FILETIME{static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
}

unsigned long long ToSteps(const FILETIME& time)
{
    return (static_cast<unsigned long long>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

constexpr unsigned long long StepsPerSecond = 10'000'000;

TEST(FileTimes, SystemTimeFields)
{
    SYSTEMTIME fields{};
    FILETIME time = FromSteps(0);
    ASSERT_TRUE(FileTimeToSystemTime(&time, &fields));
    EXPECT_EQ(1601, fields.wYear);
    EXPECT_EQ(1, fields.wMonth);
    EXPECT_EQ(1, fields.wDay);
    EXPECT_EQ(1, fields.wDayOfWeek);
    EXPECT_EQ(0, fields.wHour);

    // 29 February 2004, a Sunday, 23:59:58.765.
    time = FromSteps((11'644'473'600ULL + 1'078'099'198ULL) * StepsPerSecond + 7'654'321);
    ASSERT_TRUE(FileTimeToSystemTime(&time, &fields));
    EXPECT_EQ(2004, fields.wYear);
    EXPECT_EQ(2, fields.wMonth);
    EXPECT_EQ(0, fields.wDayOfWeek);
    EXPECT_EQ(29, fields.wDay);
    EXPECT_EQ(23, fields.wHour);
    EXPECT_EQ(59, fields.wMinute);
    EXPECT_EQ(58, fields.wSecond);
    EXPECT_EQ(765, fields.wMilliseconds);

    time = FromSteps(0x7FFF'FFFF'FFFF'FFFFULL);
    ASSERT_TRUE(FileTimeToSystemTime(&time, &fields));
    EXPECT_EQ(30828, fields.wYear);
    time = FromSteps(0x8000'0000'0000'0000ULL);
    EXPECT_FALSE(FileTimeToSystemTime(&time, &fields));
}

TEST(FileTimes, LocalTimeDiffersByTheOffsetOfThisMoment)
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ASSERT_EQ(0, localtime_s(&local, &now));

    const FILETIME utc =
        FromSteps((11'644'473'600ULL + static_cast<unsigned long long>(now)) * StepsPerSecond + 5);
    FILETIME shifted{};
    ASSERT_TRUE(FileTimeToLocalFileTime(&utc, &shifted));
    EXPECT_EQ(5U, ToSteps(shifted) % StepsPerSecond);
    SYSTEMTIME fields{};
    ASSERT_TRUE(FileTimeToSystemTime(&shifted, &fields));
    EXPECT_EQ(local.tm_year + 1900, fields.wYear);
    EXPECT_EQ(local.tm_mon + 1, fields.wMonth);
    EXPECT_EQ(local.tm_mday, fields.wDay);
    EXPECT_EQ(local.tm_hour, fields.wHour);
    EXPECT_EQ(local.tm_min, fields.wMinute);
    EXPECT_EQ(local.tm_sec, fields.wSecond);
}

} // namespace
