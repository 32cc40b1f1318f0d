#pragma once

#include <cstdint>

// The characters of code page 949, of one byte or of two, and their case. The C runtime's multibyte functions
// know them too, but follow whatever code page a game has set there, and some of them read or write beyond
// the terminator of a text that ends in half a character.
namespace Kesra
{
constexpr bool IsLeadByte(char ch)
{
    const auto byte = static_cast<unsigned char>(ch);
    return byte >= 0x81 && byte <= 0xFE;
}

/// Takes the next character off a text: lead << 8 | trail for a double-byte one. Gives 0 at the text's end
/// and at half a character before it, and then moves no further.
constexpr unsigned int NextCharacter(const char*& at)
{
    const unsigned int first = static_cast<unsigned char>(at[0]);
    if (first == 0)
        return 0;
    if (!IsLeadByte(at[0])) {
        ++at;
        return first;
    }
    const unsigned int second = static_cast<unsigned char>(at[1]);
    if (second == 0)
        return 0;
    at += 2;
    return first << 8 | second;
}

/// Runs of double-byte letters whose lower and upper case both stand in the page: full-width Latin, Roman
/// numerals, Greek, Latin ligatures, Cyrillic.
struct CaseRun {
    std::uint16_t Lower;
    std::uint16_t Upper;
    std::uint16_t Count;
};
inline constexpr CaseRun CaseRuns[] = {
    {0xA3E1, 0xA3C1, 26}, {0xA5A1, 0xA5B0, 10}, {0xA5E1, 0xA5C1, 24}, {0xA9A1, 0xA8A1, 1},
    {0xA9A3, 0xA8A2, 1},  {0xA9A4, 0xA8A4, 1},  {0xA9A6, 0xA8A6, 1},  {0xA9A8, 0xA8A8, 4},
    {0xA9AD, 0xA8AD, 3},  {0xACD1, 0xACA1, 33},
};

/// Both keep a character's width.
constexpr unsigned int ToLower(unsigned int character)
{
    if (character < 0x100)
        return character >= 'A' && character <= 'Z' ? character + ('a' - 'A') : character;
    for (const CaseRun& run : CaseRuns)
        if (character - run.Upper < run.Count)
            return character - run.Upper + run.Lower;
    return character;
}

constexpr unsigned int ToUpper(unsigned int character)
{
    if (character < 0x100)
        return character >= 'a' && character <= 'z' ? character - ('a' - 'A') : character;
    for (const CaseRun& run : CaseRuns)
        if (character - run.Lower < run.Count)
            return character - run.Lower + run.Upper;
    return character;
}

/// Below, equal to or above 0; `map` is applied to every character first.
template <typename Map> int CompareCharacters(const char* left, const char* right, Map map)
{
    for (;;) {
        const unsigned int a = map(NextCharacter(left));
        const unsigned int b = map(NextCharacter(right));
        if (a != b)
            return a < b ? -1 : 1;
        if (a == 0)
            return 0;
    }
}
} // namespace Kesra
