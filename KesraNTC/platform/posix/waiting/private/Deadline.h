#pragma once

#include "KesraNTC/platform/posix/waiting/Events.h"

#include <ctime>

namespace Kesra
{

/// The moment at which a wait of so many milliseconds ends; INFINITE never does.
class Deadline
{
public:
    explicit Deadline(DWORD milliseconds) : Limited(milliseconds != INFINITE)
    {
        if (!Limited)
            return;
        clock_gettime(CLOCK_MONOTONIC, &Moment);
        Moment.tv_sec += milliseconds / 1000;
        Moment.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000;
        if (Moment.tv_nsec >= NanosecondsPerSecond) {
            Moment.tv_nsec -= NanosecondsPerSecond;
            ++Moment.tv_sec;
        }
    }

    /// Null for a wait without end.
    const timespec* Absolute() const { return Limited ? &Moment : nullptr; }

    bool HasPassed() const
    {
        if (!Limited)
            return false;
        const timespec left = Remaining(Moment);
        return left.tv_sec == 0 && left.tv_nsec == 0;
    }

    /// What is left until a moment, zero when it has passed.
    static timespec Remaining(const timespec& moment)
    {
        timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        timespec left{moment.tv_sec - now.tv_sec, moment.tv_nsec - now.tv_nsec};
        if (left.tv_nsec < 0) {
            left.tv_nsec += NanosecondsPerSecond;
            --left.tv_sec;
        }
        return left.tv_sec < 0 ? timespec{0, 0} : left;
    }

private:
    static constexpr long NanosecondsPerSecond = 1000000000;

    bool Limited;
    timespec Moment{};
};

} // namespace Kesra
