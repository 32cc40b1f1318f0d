#include "KesraNTC/platform/posix/automation/private/DateText.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <vector>

namespace Kesra
{

namespace
{

using std::chrono::sys_days;

constexpr int SecondsPerDay = 86'400;
constexpr sys_days DayZero = std::chrono::December / 30 / 1899;
constexpr int LastTwoDigitYear = 2029;

struct Token {
    enum Kind { Number, Month, HalfDay, Separator } Type;
    int Value;      ///< of a number; month 1 to 12; hours that AM or PM adds; separator character
    int Digits = 0; ///< of a number
};

constexpr std::array<std::string_view, 12> MonthNames = {"january",   "february", "march",    "april",
                                                         "may",       "june",     "july",     "august",
                                                         "september", "october",  "november", "december"};

bool IsLetter(char16_t ch)
{
    return (ch | 0x20) >= u'a' && (ch | 0x20) <= u'z';
}

bool IsDigit(char16_t ch)
{
    return ch >= u'0' && ch <= u'9';
}

bool WordToken(const std::string& word, std::vector<Token>& tokens)
{
    if (word == "am" || word == "a" || word == "pm" || word == "p") {
        tokens.push_back({Token::HalfDay, word[0] == 'p' ? 12 : 0});
        return true;
    }
    for (std::size_t i = 0; i < MonthNames.size(); ++i) {
        if (word == MonthNames[i] || word == MonthNames[i].substr(0, 3)) {
            tokens.push_back({Token::Month, static_cast<int>(i) + 1});
            return true;
        }
    }
    return false;
}

bool Tokenize(std::u16string_view text, std::vector<Token>& tokens)
{
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t start = i;
        const char16_t ch = text[i];
        if (ch == u' ' || ch == u'\t') {
            ++i;
        } else if (ch == u'/' || ch == u'-' || ch == u',' || ch == u':') {
            tokens.push_back({Token::Separator, ch});
            ++i;
        } else if (IsDigit(ch)) {
            int value = 0;
            for (; i < text.size() && IsDigit(text[i]); ++i)
                value = std::min(value * 10 + (text[i] - u'0'), 100'000);
            tokens.push_back({Token::Number, value, static_cast<int>(i - start)});
        } else {
            std::string word;
            for (; i < text.size() && IsLetter(text[i]); ++i)
                word += static_cast<char>(text[i] | 0x20);
            if (!WordToken(word, tokens))
                return false;
        }
    }
    return true;
}

int CurrentYear()
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return local.tm_year + 1900;
}

class DateParser
{
public:
    explicit DateParser(const std::vector<Token>& tokens) : Tokens(tokens) {}

    bool Parse(DATE& date)
    {
        while (At < Tokens.size())
            if (!ParseElement())
                return false;
        if (Numbers.empty() && Month == 0) {
            date = static_cast<double>(Fields.Seconds) / SecondsPerDay;
            return HasTime;
        }
        return ResolveDay() && DateFromFields(Fields, date);
    }

private:
    bool Is(std::size_t index, Token::Kind type) const
    {
        return index < Tokens.size() && Tokens[index].Type == type;
    }
    bool IsSeparator(std::size_t index, char ch) const
    {
        return Is(index, Token::Separator) && Tokens[index].Value == ch;
    }

    bool ParseElement()
    {
        if (IsSeparator(At + 1, ':') || (Is(At, Token::Number) && Is(At + 1, Token::HalfDay)))
            return ParseTime();
        const Token& token = Tokens[At++];
        switch (token.Type) {
        case Token::Number:
            Numbers.push_back(token);
            break;
        case Token::Month:
            if (Month != 0)
                return false;
            Month = token.Value;
            break;
        default:
            return false;
        }
        // One separator may stand between two elements of a date.
        if (Is(At, Token::Separator) && (Is(At + 1, Token::Number) || Is(At + 1, Token::Month)))
            ++At;
        return Numbers.size() <= 3;
    }

    bool ParseTime()
    {
        std::array<int, 3> parts{};
        std::size_t count = 0;
        do {
            if (HasTime || count == parts.size() || !Is(At, Token::Number))
                return false;
            parts[count++] = Tokens[At++].Value;
        } while (IsSeparator(At, ':') && ++At);
        HasTime = true;

        if (Is(At, Token::HalfDay)) {
            const int afternoon = Tokens[At++].Value;
            if (parts[0] > 12 && afternoon == 0)
                return false;
            parts[0] = parts[0] > 12 ? parts[0] : parts[0] % 12 + afternoon;
        }
        if (parts[0] > 23 || parts[1] > 59 || parts[2] > 59)
            return false;
        Fields.Seconds = (parts[0] * 60 + parts[1]) * 60 + parts[2];
        return true;
    }

    static bool IsYear(const Token& token) { return token.Digits > 2 || token.Value > 31; }

    bool ResolveDay()
    {
        // In the order month, day, year.
        std::vector<Token> parts = Numbers;
        if (parts.size() > 1 && IsYear(parts.front()))
            std::rotate(parts.begin(), parts.begin() + 1, parts.end());
        if (Month != 0)
            parts.insert(parts.begin(), Token{Token::Number, Month, 2});
        if (parts.size() == 2 && IsYear(parts[1]))
            parts.insert(parts.begin() + 1, Token{Token::Number, 1, 1});
        else if (parts.size() == 2)
            parts.push_back(Token{Token::Number, CurrentYear(), 4});
        if (parts.size() != 3)
            return false;
        if (Month == 0 && parts[0].Value > 12)
            std::swap(parts[0], parts[1]);
        Fields.Month = static_cast<unsigned>(parts[0].Value);
        Fields.Day = static_cast<unsigned>(parts[1].Value);
        Fields.Year = FullYear(parts[2]);
        return true;
    }

    static int FullYear(const Token& year)
    {
        if (year.Digits > 2)
            return year.Value;
        const int inCentury = year.Value + LastTwoDigitYear / 100 * 100;
        return inCentury > LastTwoDigitYear ? inCentury - 100 : inCentury;
    }

    const std::vector<Token>& Tokens;
    std::size_t At = 0;
    std::vector<Token> Numbers;
    int Month = 0;
    bool HasTime = false;
    DateFields Fields;
};

std::string TwoDigits(int value)
{
    return {static_cast<char>('0' + value / 10), static_cast<char>('0' + value % 10)};
}

std::string TimeText(int seconds)
{
    const int hour = seconds / 3600;
    return std::to_string((hour + 11) % 12 + 1) + ':' + TwoDigits(seconds / 60 % 60) + ':' +
           TwoDigits(seconds % 60) + (hour < 12 ? " AM" : " PM");
}

} // namespace

bool DateFromFields(const DateFields& fields, DATE& date)
{
    using namespace std::chrono;
    const year_month_day calendar(year(fields.Year), month(fields.Month), day(fields.Day));
    if (fields.Year < 100 || fields.Year > 9999 || !calendar.ok() || fields.Seconds < 0 ||
        fields.Seconds >= SecondsPerDay)
        return false;
    const auto days = static_cast<double>((sys_days(calendar) - DayZero).count());
    const double time = static_cast<double>(fields.Seconds) / SecondsPerDay;
    date = days < 0 ? days - time : days + time;
    return true;
}

bool FieldsFromDate(DATE date, DateFields& fields)
{
    if (!(date > EarliestDate - 1 && date < EndOfDates))
        return false;
    const double whole = std::trunc(date);
    fields.Seconds = static_cast<int>(std::lround(std::fabs(date - whole) * SecondsPerDay));
    auto days = static_cast<int>(whole);
    if (fields.Seconds == SecondsPerDay) {
        fields.Seconds = 0;
        ++days;
    }
    if (days >= EndOfDates)
        return false;
    const std::chrono::year_month_day calendar(DayZero + std::chrono::days(days));
    fields.Year = static_cast<int>(calendar.year());
    fields.Month = static_cast<unsigned>(calendar.month());
    fields.Day = static_cast<unsigned>(calendar.day());
    return true;
}

bool DateToText(DATE date, std::string& text)
{
    DateFields fields;
    if (!FieldsFromDate(date, fields))
        return false;
    text.clear();
    if (fields.Year != 1899 || fields.Month != 12 || fields.Day != 30)
        text = std::to_string(fields.Month) + '/' + std::to_string(fields.Day) + '/' +
               std::to_string(fields.Year);
    if (text.empty() || fields.Seconds != 0)
        text += (text.empty() ? "" : " ") + TimeText(fields.Seconds);
    return true;
}

bool ParseDate(std::u16string_view text, DATE& date)
{
    std::vector<Token> tokens;
    return Tokenize(text.substr(0, text.find(u'\0')), tokens) && DateParser(tokens).Parse(date);
}

} // namespace Kesra
