#pragma once

#include "KesraNTC/base/COLEDateTimeSpan.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/Platform.h"

/// A point in time: the days since 30 December 1899 00:00, whose fraction is the time of day, and a status.
/// The fraction of a negative date counts forwards too: -1.25 is 29 December 1899 06:00. Dates reach from
/// 1 January 100 (-657434) to 31 December 9999 (2958465).
class KESRANTC_API COLEDateTime
{
public:
    /// Whether the date value counts: null stands for no date at all.
    enum DateTimeStatus { valid = 0, invalid = 1, null = 2 };

    /// 30 December 1899 00:00, valid.
    COLEDateTime() = default;
    /// A date value, valid whatever it is.
    COLEDateTime(double date) : Date(date) {}
    /// The local date and time of a C runtime time (seconds since 1970); invalid for a negative one.
    COLEDateTime(long time);
    /// The fields of a system time but the day of the week and the milliseconds; invalid when SetDateTime
    /// refuses them.
    COLEDateTime(const _SYSTEMTIME& time);
    /// The local date and time of a UTC file time; invalid when it has none.
    COLEDateTime(const _FILETIME& time);
    /// A DOS date and time of day as disk directories hold them; invalid when they are none.
    COLEDateTime(unsigned short dosDate, unsigned short dosTime);
    /// See SetDateTime.
    COLEDateTime(int year, int month, int day, int hour, int minute, int second);

    /// As the constructors; when the status becomes invalid the date value stays.
    COLEDateTime& operator=(double date);
    COLEDateTime& operator=(const long& time);
    COLEDateTime& operator=(const _SYSTEMTIME& time);
    COLEDateTime& operator=(const _FILETIME& time);

    /// The current local date and time to the second.
    static COLEDateTime GetTickCount();

    /// Sets the date from calendar fields, of which the low 16 bits count. Returns the new status: valid, or
    /// invalid when the calendar has no such day or time, and then the date value stays.
    int SetDateTime(int year, int month, int day, int hour, int minute, int second);
    /// The start of a day.
    int SetDate(int year, int month, int day);
    /// A time of day alone, on 30 December 1899.
    int SetTime(int hour, int minute, int second);
    /// Reads "YYYY-MM-DD HH:MM:SS" (format 1, whatever stands between the fields) or "YYYYMMDDHHMMSS"
    /// (format 2). Returns 0 and changes nothing for another format, a null or a shorter text, otherwise 1,
    /// also when SetDateTime refused the fields and the status is invalid.
    int ParseDateTime(const char* text, unsigned long format);

    /// Setting the status leaves the date value alone.
    DateTimeStatus GetStatus() const { return Status; }
    void SetStatus(DateTimeStatus status) { Status = status; }
    /// The date value, whatever the status.
    operator double() const { return Date; }

    /// The calendar fields, rounded to the second: month 1 to 12, day 1 to 31, day of the week 1 (Sunday) to
    /// 7, day of the year from 1. All are -1 unless the date is valid and in range.
    int GetYear() const;
    int GetMonth() const;
    int GetDay() const;
    int GetHour() const;
    int GetMinute() const;
    int GetSecond() const;
    int GetDayOfWeek() const;
    int GetDayOfYear() const;
    /// All calendar fields at once, with the day of the week from 0 (Sunday) and 0 milliseconds. Returns 1,
    /// or 0 and leaves the structure alone when the date is not valid or out of range.
    int GetAsSystemTime(_SYSTEMTIME& time) const;

    /// Null when either operand is null, else invalid when either is invalid, else range-checked.
    COLEDateTime operator+(const COLEDateTimeSpan& span) const;
    COLEDateTime operator-(const COLEDateTimeSpan& span) const;
    COLEDateTime& operator+=(COLEDateTimeSpan span);
    COLEDateTime& operator-=(COLEDateTimeSpan span);
    /// The time between two dates; null or invalid as above.
    COLEDateTimeSpan operator-(const COLEDateTime& other) const;

    /// Equal when status and date value are equal.
    int operator==(const COLEDateTime& other) const;
    int operator!=(const COLEDateTime& other) const;
    /// Order in time; the status is not looked at.
    int operator<(const COLEDateTime& other) const;
    int operator>(const COLEDateTime& other) const;
    int operator<=(const COLEDateTime& other) const;
    int operator>=(const COLEDateTime& other) const;

protected:
    /// Makes a date out of range invalid.
    void CheckRange();

private:
    double Date = 0;
    DateTimeStatus Status = valid;
};
