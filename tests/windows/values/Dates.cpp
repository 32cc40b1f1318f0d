#include "tests/windows/values/Values.h"

#include <KesraNTC/KesraNTC.h>

#include <limits>

namespace
{
constexpr double Dates[] = {
    0,       0.5,       1.25, -1.25, -0.25,    36526,     36526.999995, 45658.7, 2958465, 2958465.9999,
    -657434, -657434.5, 60,   61,    59.99999, 2958466.5, -657435,      1e300,   -1e300,  38411.123456789};
constexpr double Lengths[] = {0,      1,       -1,      0.5,      -0.75, 1.0 / 86400,
                              365.25, 3615897, 3615898, -3615898, 1e12,  1.0 / 3};

std::string Fields(const COLEDateTime& date)
{
    std::string text = std::to_string(date.GetStatus()) + " " + BitsOf(date);
    for (const int field : {date.GetYear(), date.GetMonth(), date.GetDay(), date.GetHour(), date.GetMinute(),
                            date.GetSecond(), date.GetDayOfWeek(), date.GetDayOfYear()})
        text += " " + std::to_string(field);
    _SYSTEMTIME time{};
    text += " system " + std::to_string(date.GetAsSystemTime(time));
    for (const int field : {time.wYear, time.wMonth, time.wDayOfWeek, time.wDay, time.wHour, time.wMinute,
                            time.wSecond, time.wMilliseconds})
        text += " " + std::to_string(field);
    return text;
}

std::string Parts(const COLEDateTimeSpan& span)
{
    std::string text = std::to_string(span.GetStatus()) + " " + BitsOf(span);
    for (const double total : {span.GetTotalHours(), span.GetTotalMinutes(), span.GetTotalSeconds()})
        text += " " + BitsOf(total);
    for (const long part : {span.GetDays(), span.GetHours(), span.GetMinutes(), span.GetSeconds()})
        text += " " + std::to_string(part);
    return text;
}

void PrintArithmetic(const COLEDateTime& date)
{
    for (const double length : Lengths) {
        const COLEDateTimeSpan span(length);
        const std::string label = BitsOf(date) + " and " + BitsOf(length);
        Print("sum of " + label, Fields(date + span));
        Print("difference of " + label, Fields(date - span));
    }
    for (const double other : Dates)
        Print("from " + BitsOf(other) + " to " + BitsOf(date), Parts(date - COLEDateTime(other)));
}

void PrintCalendar()
{
    Sequence sequence;
    for (int round = 0; round < 300; ++round) {
        const int year = static_cast<int>(sequence.Below(10100)) - 20;
        const int month = static_cast<int>(sequence.Below(14));
        const int day = static_cast<int>(sequence.Below(33));
        const int hour = static_cast<int>(sequence.Below(26));
        const int minute = static_cast<int>(sequence.Below(62));
        const int second = static_cast<int>(sequence.Below(62));
        CString text;
        text.Format("%04d-%02d-%02d %02d:%02d:%02d", year, month, day, hour, minute, second);
        Print("calendar " + std::string(text), Fields(COLEDateTime(year, month, day, hour, minute, second)));
        COLEDateTime parsed;
        const int result = parsed.ParseDateTime(text, 1);
        Print("parsed " + std::string(text), std::to_string(result) + " " + Fields(parsed));
        // Not month 0, for which systems have dates of their own.
        const auto dosDate = static_cast<unsigned short>(
            (sequence.Below(128) << 9) + ((sequence.Below(15) + 1) << 5) + sequence.Below(32));
        const auto dosTime = static_cast<unsigned short>(sequence.Below(0x10000));
        Print("disk " + std::to_string(dosDate) + " " + std::to_string(dosTime),
              Fields(COLEDateTime(dosDate, dosTime)));
    }
    for (const char* text :
         {"20260301123456", "2026030112345", "abcdefghijklmn", "", "2026-03-01 12:34:5x"}) {
        COLEDateTime parsed;
        const int result = parsed.ParseDateTime(text, 2);
        Print("parsed " + Quoted(text), std::to_string(result) + " " + Fields(parsed));
    }
}
} // namespace

void PrintDates()
{
    for (const double value : Dates) {
        Print("date " + BitsOf(value), Fields(COLEDateTime(value)));
        PrintArithmetic(COLEDateTime(value));
    }
    Print("no date", Fields(COLEDateTime(std::numeric_limits<double>::quiet_NaN())));
    for (const double length : Lengths)
        Print("span " + BitsOf(length), Parts(COLEDateTimeSpan(length)));
    Sequence sequence;
    for (int round = 0; round < 100; ++round) {
        const COLEDateTimeSpan span(
            static_cast<long>(sequence.Below(100000)) - 50000, static_cast<int>(sequence.Below(100)) - 50,
            static_cast<int>(sequence.Below(200)) - 100, static_cast<int>(sequence.Below(200)) - 100);
        Print("span " + std::to_string(round), Parts(span) + " opposite " + Parts(-span));
    }
    PrintCalendar();
}
