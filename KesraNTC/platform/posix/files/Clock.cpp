#include "KesraNTC/platform/posix/files/Clock.h"

#include <chrono>
#include <ctime>
#include <sched.h>
#include <thread>

DWORD GetTickCount()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<DWORD>(static_cast<std::uint64_t>(now.tv_sec) * 1000 +
                              static_cast<std::uint64_t>(now.tv_nsec) / 1000000);
}

void GetSystemTime(SYSTEMTIME* time)
{
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    tm fields;
    gmtime_r(&now.tv_sec, &fields);
    time->wYear = static_cast<WORD>(fields.tm_year + 1900);
    time->wMonth = static_cast<WORD>(fields.tm_mon + 1);
    time->wDayOfWeek = static_cast<WORD>(fields.tm_wday);
    time->wDay = static_cast<WORD>(fields.tm_mday);
    time->wHour = static_cast<WORD>(fields.tm_hour);
    time->wMinute = static_cast<WORD>(fields.tm_min);
    time->wSecond = static_cast<WORD>(fields.tm_sec);
    time->wMilliseconds = static_cast<WORD>(now.tv_nsec / 1000000);
}

void Sleep(DWORD milliseconds)
{
    if (milliseconds == 0)
        sched_yield();
    else
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}
