#pragma once

#include <cstring>
#include <string>
#include <string_view>

// A program of results that must not depend on the system: it is built for both, and every line is compared.

/// Prints "label = result". What is no printable ASCII character comes out as \xNN.
void Print(std::string_view label, std::string_view result);

inline void Print(std::string_view label, int result)
{
    Print(label, std::to_string(result));
}

/// A text in quotes, for labels and lists.
std::string Quoted(std::string_view text);

/// All bits of a number, which no rounding on the way to a text can hide.
inline std::string BitsOf(double value)
{
    unsigned long long bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    constexpr char Digits[] = "0123456789abcdef";
    std::string text;
    for (int shift = 60; shift >= 0; shift -= 4)
        text += Digits[bits >> shift & 15];
    return text;
}

/// The same numbers on every system.
class Sequence
{
public:
    unsigned Below(unsigned limit)
    {
        State = State * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<unsigned>(State >> 33) % limit;
    }

private:
    unsigned long long State = 949;
};

void PrintFormats();
void PrintTexts();
void PrintDates();
void PrintVariants();
void PrintCollections();
