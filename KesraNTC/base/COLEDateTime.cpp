#include "KesraNTC/base/COLEDateTime.h"

#include "KesraNTC/base/private/Truncate.h"

#include <cmath>
#include <cstring>
#include <ctime>

namespace
{

constexpr double EarliestDate = -657434;
constexpr double LatestDate = 2958465;
constexpr int DayOffset = 693959;
constexpr double HalfSecond = 0.5 / 86400;
constexpr int DaysBeforeMonth[13] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

struct DateFields {
    int Year;
    int Month;
    int Day;
    int Hour;
    int Minute;
    int Second;
    int DayOfWeek;
    int DayOfYear;
};

bool IsLeapYear(int year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

bool AreFieldsValid(const DateFields& fields)
{
    if (fields.Year > 9999 || fields.Month < 1 || fields.Month > 12)
        return false;
    int daysInMonth = DaysBeforeMonth[fields.Month] - DaysBeforeMonth[fields.Month - 1];
    if (fields.Month == 2 && IsLeapYear(fields.Year))
        ++daysInMonth;
    return fields.Day >= 1 && fields.Day <= daysInMonth && fields.Hour <= 23 && fields.Minute <= 59 &&
           fields.Second <= 59;
}

double DateFromFields(const DateFields& fields)
{
    const int year = fields.Year;
    int days =
        year * 365 + year / 4 - year / 100 + year / 400 + fields.Day + DaysBeforeMonth[fields.Month - 1];
    if (fields.Month <= 2 && IsLeapYear(year))
        --days;
    days -= DayOffset;
    const double time = (fields.Hour * 3600 + fields.Minute * 60 + fields.Second) / 86400.0;
    return days >= 0 ? days + time : days - time;
}

// Takes whole units out of a count of days in which the first unit has its own length.
int TakeUnits(int& days, int firstLength, int length)
{
    if (days < firstLength)
        return 0;
    const int units = 1 + (days - firstLength) / length;
    days = (days - firstLength) % length;
    return units;
}

// The year of a day counted from 1 January of the year 0; leaves the day of the year, from 0, in `days`.
int TakeYears(int& days)
{
    const int cycles = days / 146097;
    days %= 146097;
    const int centuries = TakeUnits(days, 36525, 36524);
    const bool firstFourHaveNoLeapDay = centuries != 0;
    const int fours = TakeUnits(days, firstFourHaveNoLeapDay ? 1460 : 1461, 1461);
    const bool firstYearIsLeap = fours != 0 || !firstFourHaveNoLeapDay;
    const int years = TakeUnits(days, firstYearIsLeap ? 366 : 365, 365);
    return 400 * cycles + 100 * centuries + 4 * fours + years;
}

void SetMonthAndDay(DateFields& fields, int dayOfYear)
{
    if (IsLeapYear(fields.Year)) {
        if (dayOfYear == 59) {
            fields.Month = 2;
            fields.Day = 29;
            return;
        }
        if (dayOfYear > 59)
            --dayOfYear;
    }
    int month = 1;
    while (dayOfYear >= DaysBeforeMonth[month])
        ++month;
    fields.Month = month;
    fields.Day = dayOfYear - DaysBeforeMonth[month - 1] + 1;
}

bool FieldsFromDate(double date, DateFields& fields)
{
    // Written so that a NaN is out of range too.
    if (!(date >= EarliestDate && date <= LatestDate))
        return false;
    const double rounded = date > 0 ? date + HalfSecond : date - HalfSecond;
    const int days = static_cast<int>(rounded);
    const double size = std::fabs(rounded);
    const int seconds = static_cast<int>((size - std::floor(size)) * 86400);

    fields.DayOfWeek = (days + DayOffset - 1) % 7 + 1;
    int remaining = days + DayOffset;
    fields.Year = TakeYears(remaining);
    fields.DayOfYear = remaining + 1;
    SetMonthAndDay(fields, remaining);
    fields.Hour = seconds / 3600;
    fields.Minute = seconds / 60 % 60;
    fields.Second = seconds % 60;
    return true;
}

int FieldOf(const COLEDateTime& date, int DateFields::*field)
{
    DateFields fields{};
    if (date.GetStatus() != COLEDateTime::valid || !FieldsFromDate(date, fields))
        return -1;
    return fields.*field;
}

// Negative dates are not continuous, because their fraction counts forwards; days to calculate with are.
double ContinuousFromDate(double date)
{
    if (date >= 0)
        return date;
    const double whole = std::ceil(date);
    return whole - (date - whole);
}

double DateFromContinuous(double days)
{
    if (days >= 0)
        return days;
    const double whole = std::floor(days);
    return whole + (whole - days);
}

COLEDateTime Moved(const COLEDateTime& date, const COLEDateTimeSpan& span, double days)
{
    COLEDateTime result(DateFromContinuous(ContinuousFromDate(date) + days));
    if (date.GetStatus() == COLEDateTime::null || span.GetStatus() == COLEDateTimeSpan::null)
        result.SetStatus(COLEDateTime::null);
    else if (date.GetStatus() == COLEDateTime::invalid || span.GetStatus() == COLEDateTimeSpan::invalid)
        result.SetStatus(COLEDateTime::invalid);
    return result;
}

// The number that the leading digits of a fixed-width field make; 0 without any.
int NumberAt(const char* field, int width)
{
    int number = 0;
    for (int i = 0; i < width && field[i] >= '0' && field[i] <= '9'; ++i)
        number = number * 10 + (field[i] - '0');
    return number;
}

} // namespace

COLEDateTime::COLEDateTime(long time)
{
    *this = time;
}

COLEDateTime::COLEDateTime(const _SYSTEMTIME& time)
{
    *this = time;
}

COLEDateTime::COLEDateTime(const _FILETIME& time)
{
    *this = time;
}

COLEDateTime::COLEDateTime(unsigned short dosDate, unsigned short dosTime)
{
    if (!DosDateTimeToVariantTime(dosDate, dosTime, &Date))
        Status = invalid;
}

COLEDateTime::COLEDateTime(int year, int month, int day, int hour, int minute, int second)
{
    SetDateTime(year, month, day, hour, minute, second);
}

COLEDateTime& COLEDateTime::operator=(double date)
{
    Date = date;
    Status = valid;
    return *this;
}

COLEDateTime& COLEDateTime::operator=(const long& time)
{
    const std::time_t seconds = time;
    std::tm fields{};
    if (seconds < 0 || localtime_s(&fields, &seconds) != 0) {
        Status = invalid;
    } else {
        SetDateTime(fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min,
                    fields.tm_sec);
    }
    return *this;
}

COLEDateTime& COLEDateTime::operator=(const _SYSTEMTIME& time)
{
    SetDateTime(time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond);
    return *this;
}

COLEDateTime& COLEDateTime::operator=(const _FILETIME& time)
{
    FILETIME local{};
    SYSTEMTIME fields{};
    if (FileTimeToLocalFileTime(&time, &local) && FileTimeToSystemTime(&local, &fields))
        *this = fields;
    else
        Status = invalid;
    return *this;
}

COLEDateTime COLEDateTime::GetTickCount()
{
    return COLEDateTime(static_cast<long>(std::time(nullptr)));
}

int COLEDateTime::SetDateTime(int year, int month, int day, int hour, int minute, int second)
{
    DateFields fields{};
    fields.Year = static_cast<std::uint16_t>(year);
    fields.Month = static_cast<std::uint16_t>(month);
    fields.Day = static_cast<std::uint16_t>(day);
    fields.Hour = static_cast<std::uint16_t>(hour);
    fields.Minute = static_cast<std::uint16_t>(minute);
    fields.Second = static_cast<std::uint16_t>(second);
    if (AreFieldsValid(fields)) {
        Date = DateFromFields(fields);
        Status = valid;
    } else {
        Status = invalid;
    }
    return Status;
}

int COLEDateTime::SetDate(int year, int month, int day)
{
    return SetDateTime(year, month, day, 0, 0, 0);
}

int COLEDateTime::SetTime(int hour, int minute, int second)
{
    return SetDateTime(1899, 12, 30, hour, minute, second);
}

int COLEDateTime::ParseDateTime(const char* text, unsigned long format)
{
    if (text == nullptr || (format != 1 && format != 2))
        return 0;
    const bool separated = format == 1;
    if (std::strlen(text) < (separated ? 19U : 14U))
        return 0;
    const int gap = separated ? 1 : 0;
    const char* field = text;
    const int year = NumberAt(field, 4);
    field += 4 + gap;
    int parts[5]; // month, day, hour, minute, second
    for (int& part : parts) {
        part = NumberAt(field, 2);
        field += 2 + gap;
    }
    SetDateTime(year, parts[0], parts[1], parts[2], parts[3], parts[4]);
    return 1;
}

int COLEDateTime::GetYear() const
{
    return FieldOf(*this, &DateFields::Year);
}

int COLEDateTime::GetMonth() const
{
    return FieldOf(*this, &DateFields::Month);
}

int COLEDateTime::GetDay() const
{
    return FieldOf(*this, &DateFields::Day);
}

int COLEDateTime::GetHour() const
{
    return FieldOf(*this, &DateFields::Hour);
}

int COLEDateTime::GetMinute() const
{
    return FieldOf(*this, &DateFields::Minute);
}

int COLEDateTime::GetSecond() const
{
    return FieldOf(*this, &DateFields::Second);
}

int COLEDateTime::GetDayOfWeek() const
{
    return FieldOf(*this, &DateFields::DayOfWeek);
}

int COLEDateTime::GetDayOfYear() const
{
    return FieldOf(*this, &DateFields::DayOfYear);
}

int COLEDateTime::GetAsSystemTime(_SYSTEMTIME& time) const
{
    DateFields fields{};
    if (Status != valid || !FieldsFromDate(Date, fields))
        return 0;
    time.wYear = static_cast<WORD>(fields.Year);
    time.wMonth = static_cast<WORD>(fields.Month);
    time.wDayOfWeek = static_cast<WORD>(fields.DayOfWeek - 1);
    time.wDay = static_cast<WORD>(fields.Day);
    time.wHour = static_cast<WORD>(fields.Hour);
    time.wMinute = static_cast<WORD>(fields.Minute);
    time.wSecond = static_cast<WORD>(fields.Second);
    time.wMilliseconds = 0;
    return 1;
}

COLEDateTime COLEDateTime::operator+(const COLEDateTimeSpan& span) const
{
    COLEDateTime result = Moved(*this, span, span.GetTotalDays());
    if (result.Status == valid)
        result.CheckRange();
    return result;
}

COLEDateTime COLEDateTime::operator-(const COLEDateTimeSpan& span) const
{
    COLEDateTime result = Moved(*this, span, -span.GetTotalDays());
    if (result.Status == valid)
        result.CheckRange();
    return result;
}

COLEDateTime& COLEDateTime::operator+=(COLEDateTimeSpan span)
{
    return *this = *this + span;
}

COLEDateTime& COLEDateTime::operator-=(COLEDateTimeSpan span)
{
    return *this = *this - span;
}

COLEDateTimeSpan COLEDateTime::operator-(const COLEDateTime& other) const
{
    COLEDateTimeSpan difference(ContinuousFromDate(Date) - ContinuousFromDate(other.Date));
    if (Status == null || other.Status == null)
        difference.SetStatus(COLEDateTimeSpan::null);
    else if (Status == invalid || other.Status == invalid)
        difference.SetStatus(COLEDateTimeSpan::invalid);
    return difference;
}

int COLEDateTime::operator==(const COLEDateTime& other) const
{
    return Status == other.Status && Date == other.Date;
}

int COLEDateTime::operator!=(const COLEDateTime& other) const
{
    return !(*this == other);
}

int COLEDateTime::operator<(const COLEDateTime& other) const
{
    return ContinuousFromDate(Date) < ContinuousFromDate(other.Date);
}

int COLEDateTime::operator>(const COLEDateTime& other) const
{
    return ContinuousFromDate(Date) > ContinuousFromDate(other.Date);
}

int COLEDateTime::operator<=(const COLEDateTime& other) const
{
    return ContinuousFromDate(Date) <= ContinuousFromDate(other.Date);
}

int COLEDateTime::operator>=(const COLEDateTime& other) const
{
    return ContinuousFromDate(Date) >= ContinuousFromDate(other.Date);
}

void COLEDateTime::CheckRange()
{
    if (Date > LatestDate || Date < EarliestDate)
        Status = invalid;
}
