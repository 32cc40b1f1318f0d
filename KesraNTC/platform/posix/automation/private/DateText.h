#pragma once

#include "KesraNTC/platform/posix/automation/AutomationTypes.h"

#include <string>
#include <string_view>

namespace Kesra
{

// Dates count days since 30 December 1899, from 1 January 100 to 31 December 9999; the fraction of a negative
// one counts forwards too.
constexpr DATE EarliestDate = -657434;
constexpr DATE EndOfDates = 2958466;

struct DateFields {
    int Year = 0;
    unsigned Month = 0;
    unsigned Day = 0;
    int Seconds = 0; ///< of the day
};

/// False when the calendar has no such day, or the day no such second.
bool DateFromFields(const DateFields& fields, DATE& date);
/// To the nearest second; false out of range.
bool FieldsFromDate(DATE date, DateFields& fields);

/// "7/15/2003 8:09:10 AM", without the time at midnight and without the date on day 0.
bool DateToText(DATE date, std::string& text);
/// Reads a date, a time or both: numbers in the order month, day, year, or with the year first when it has
/// more than two digits; months by name or its first three letters; times with or without AM and PM.
bool ParseDate(std::u16string_view text, DATE& date);

} // namespace Kesra
