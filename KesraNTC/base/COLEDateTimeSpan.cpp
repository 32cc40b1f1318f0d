#include "KesraNTC/base/COLEDateTimeSpan.h"

#include "KesraNTC/base/private/Truncate.h"

#include <cmath>

namespace
{

constexpr double HalfSecond = 0.5 / 86400;
constexpr double LongestSpan = 3615897;

// The whole units in a part of a bigger unit, which reads as none when rounding filled the bigger unit.
long UnitsWithin(double biggerUnits, int unitsPerBigger)
{
    const double fraction = biggerUnits - std::trunc(biggerUnits);
    const auto units = static_cast<std::int32_t>(Kesra::Truncate((fraction + HalfSecond) * unitsPerBigger));
    return units == unitsPerBigger ? 0 : units;
}

} // namespace

COLEDateTimeSpan::COLEDateTimeSpan(long days, int hours, int minutes, int seconds)
{
    SetDateTimeSpan(days, hours, minutes, seconds);
}

COLEDateTimeSpan& COLEDateTimeSpan::operator=(double days)
{
    Days = days;
    Status = valid;
    return *this;
}

void COLEDateTimeSpan::SetDateTimeSpan(long days, int hours, int minutes, int seconds)
{
    Days = static_cast<double>(days) + hours / 24.0 + minutes / 1440.0 + seconds / 86400.0;
    Status = valid;
}

void COLEDateTimeSpan::CheckRange()
{
    if (Days < -LongestSpan || Days > LongestSpan)
        Status = invalid;
}

double COLEDateTimeSpan::GetTotalHours() const
{
    return std::trunc(Days * 24 + HalfSecond);
}

double COLEDateTimeSpan::GetTotalMinutes() const
{
    return std::trunc(Days * 1440 + HalfSecond);
}

double COLEDateTimeSpan::GetTotalSeconds() const
{
    return std::trunc(Days * 86400 + HalfSecond);
}

long COLEDateTimeSpan::GetDays() const
{
    return static_cast<std::int32_t>(Kesra::Truncate(Days));
}

long COLEDateTimeSpan::GetHours() const
{
    return UnitsWithin(Days, 24);
}

long COLEDateTimeSpan::GetMinutes() const
{
    return UnitsWithin(Days * 24, 60);
}

long COLEDateTimeSpan::GetSeconds() const
{
    return UnitsWithin(Days * 1440, 60);
}

COLEDateTimeSpan COLEDateTimeSpan::Sum(const COLEDateTimeSpan& other, double days) const
{
    COLEDateTimeSpan result;
    if (Status == null || other.Status == null) {
        result.Status = null;
    } else if (Status == invalid || other.Status == invalid) {
        result.Status = invalid;
    } else {
        result.Days = days;
        result.CheckRange();
    }
    return result;
}

COLEDateTimeSpan COLEDateTimeSpan::operator+(const COLEDateTimeSpan& other) const
{
    return Sum(other, Days + other.Days);
}

COLEDateTimeSpan COLEDateTimeSpan::operator-(const COLEDateTimeSpan& other) const
{
    return Sum(other, Days - other.Days);
}

COLEDateTimeSpan& COLEDateTimeSpan::operator+=(COLEDateTimeSpan other)
{
    return *this = *this + other;
}

COLEDateTimeSpan& COLEDateTimeSpan::operator-=(COLEDateTimeSpan other)
{
    return *this = *this - other;
}

COLEDateTimeSpan COLEDateTimeSpan::operator-() const
{
    return {-Days};
}

int COLEDateTimeSpan::operator==(const COLEDateTimeSpan& other) const
{
    return Status == other.Status && Days == other.Days;
}

int COLEDateTimeSpan::operator!=(const COLEDateTimeSpan& other) const
{
    return !(*this == other);
}

int COLEDateTimeSpan::operator<(const COLEDateTimeSpan& other) const
{
    return Days < other.Days;
}

int COLEDateTimeSpan::operator>(const COLEDateTimeSpan& other) const
{
    return Days > other.Days;
}

int COLEDateTimeSpan::operator<=(const COLEDateTimeSpan& other) const
{
    return Days <= other.Days;
}

int COLEDateTimeSpan::operator>=(const COLEDateTimeSpan& other) const
{
    return Days >= other.Days;
}
