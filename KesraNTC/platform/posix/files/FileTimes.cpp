#include "KesraNTC/platform/posix/files/FileTimes.h"

#include <chrono>

namespace
{

constexpr std::uint64_t StepsPerMillisecond = 10'000;
constexpr std::uint64_t StepsPerSecond = 1000 * StepsPerMillisecond;
constexpr std::uint64_t StepsPerDay = 86'400 * StepsPerSecond;

std::uint64_t Steps(const FILETIME& time)
{
    return (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

} // namespace

BOOL FileTimeToLocalFileTime(const FILETIME* fileTime, FILETIME* localFileTime)
{
    const std::time_t now = std::time(nullptr);
    std::tm fields{};
    if (localtime_r(&now, &fields) == nullptr)
        return FALSE;
    const std::uint64_t local =
        Steps(*fileTime) + static_cast<std::uint64_t>(fields.tm_gmtoff) * StepsPerSecond;
    localFileTime->dwLowDateTime = static_cast<DWORD>(local);
    localFileTime->dwHighDateTime = static_cast<DWORD>(local >> 32);
    return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* systemTime)
{
    using namespace std::chrono;
    const std::uint64_t steps = Steps(*fileTime);
    if (steps > INT64_MAX)
        return FALSE;

    const sys_days day = sys_days(January / 1 / 1601) + days(steps / StepsPerDay);
    const year_month_day date(day);
    const auto inDay = static_cast<std::uint32_t>(steps % StepsPerDay / StepsPerMillisecond);
    systemTime->wYear = static_cast<WORD>(static_cast<int>(date.year()));
    systemTime->wMonth = static_cast<WORD>(static_cast<unsigned>(date.month()));
    systemTime->wDayOfWeek = static_cast<WORD>(weekday(day).c_encoding());
    systemTime->wDay = static_cast<WORD>(static_cast<unsigned>(date.day()));
    systemTime->wHour = static_cast<WORD>(inDay / 3'600'000);
    systemTime->wMinute = static_cast<WORD>(inDay / 60'000 % 60);
    systemTime->wSecond = static_cast<WORD>(inDay / 1000 % 60);
    systemTime->wMilliseconds = static_cast<WORD>(inDay % 1000);
    return TRUE;
}

int localtime_s(std::tm* fields, const std::time_t* time)
{
    if (*time >= 0 && localtime_r(time, fields) != nullptr)
        return 0;
    *fields = std::tm{};
    fields->tm_sec = fields->tm_min = fields->tm_hour = fields->tm_mday = fields->tm_mon = fields->tm_year =
        -1;
    fields->tm_wday = fields->tm_yday = fields->tm_isdst = -1;
    return EINVAL;
}
