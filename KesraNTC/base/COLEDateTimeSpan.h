#pragma once

#include "KesraNTC/platform/Export.h"

/// A length of time: a number of days, whose fraction is part of a day, and a status. It may be negative.
class KESRANTC_API COLEDateTimeSpan
{
public:
    /// Whether the length counts: null stands for no length at all.
    enum DateTimeSpanStatus { valid = 0, invalid = 1, null = 2 };

    /// 0 days, valid.
    COLEDateTimeSpan() = default;
    /// A number of days, valid whatever it is.
    COLEDateTimeSpan(double days) : Days(days) {}
    /// See SetDateTimeSpan.
    COLEDateTimeSpan(long days, int hours, int minutes, int seconds);
    /// A number of days, valid whatever it is.
    COLEDateTimeSpan& operator=(double days);

    /// The sum of the parts, each of any size and sign; valid, without a range check.
    void SetDateTimeSpan(long days, int hours, int minutes, int seconds);

    /// Setting the status leaves the length alone.
    DateTimeSpanStatus GetStatus() const { return Status; }
    void SetStatus(DateTimeSpanStatus status) { Status = status; }
    /// Makes a span longer than 3615897 days, either way, invalid.
    void CheckRange();

    /// The whole length in days, whatever the status.
    operator double() const { return Days; }
    /// The whole length in days, as it is.
    double GetTotalDays() const { return Days; }
    /// The whole length in hours, minutes or seconds, cut toward zero.
    double GetTotalHours() const;
    double GetTotalMinutes() const;
    double GetTotalSeconds() const;

    /// The whole days, and the hours, minutes and seconds beyond them (0 to 23 and 0 to 59, negative in a
    /// negative span). Of more days than 32 bits count these are the low 32 bits.
    long GetDays() const;
    long GetHours() const;
    long GetMinutes() const;
    long GetSeconds() const;

    /// Null when either operand is null, else invalid when either is invalid, else range-checked.
    COLEDateTimeSpan operator+(const COLEDateTimeSpan& other) const;
    COLEDateTimeSpan operator-(const COLEDateTimeSpan& other) const;
    COLEDateTimeSpan& operator+=(COLEDateTimeSpan other);
    COLEDateTimeSpan& operator-=(COLEDateTimeSpan other);
    /// The opposite length, valid whatever the status was.
    COLEDateTimeSpan operator-() const;

    /// Equal when status and length are equal.
    int operator==(const COLEDateTimeSpan& other) const;
    int operator!=(const COLEDateTimeSpan& other) const;
    /// Order of the lengths alone.
    int operator<(const COLEDateTimeSpan& other) const;
    int operator>(const COLEDateTimeSpan& other) const;
    int operator<=(const COLEDateTimeSpan& other) const;
    int operator>=(const COLEDateTimeSpan& other) const;

private:
    COLEDateTimeSpan Sum(const COLEDateTimeSpan& other, double days) const;

    double Days = 0;
    DateTimeSpanStatus Status = valid;
};
