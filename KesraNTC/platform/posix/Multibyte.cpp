#include "KesraNTC/platform/posix/Multibyte.h"

#include "KesraNTC/platform/posix/Uhc.h"

#include <algorithm>
#include <cstring>

namespace Uhc = Kesra::Uhc;

namespace
{
// Runs of double-byte letters whose lower and upper case both stand in the page: full-width Latin, Roman
// numerals, Greek, Latin ligatures, Cyrillic.
struct CaseRun {
    std::uint16_t Lower;
    std::uint16_t Upper;
    std::uint16_t Count;
};
constexpr CaseRun CaseRuns[] = {
    {0xA3E1, 0xA3C1, 26}, {0xA5A1, 0xA5B0, 10}, {0xA5E1, 0xA5C1, 24}, {0xA9A1, 0xA8A1, 1},
    {0xA9A3, 0xA8A2, 1},  {0xA9A4, 0xA8A4, 1},  {0xA9A6, 0xA8A6, 1},  {0xA9A8, 0xA8A8, 4},
    {0xA9AD, 0xA8AD, 3},  {0xACD1, 0xACA1, 33},
};

// Takes the next character off the text: 0 at its end, lead << 8 | trail for a double-byte one.
unsigned int Next(const unsigned char*& text)
{
    const unsigned int first = *text;
    if (first == 0)
        return 0;
    ++text;
    if (!Uhc::IsLead(static_cast<unsigned char>(first)))
        return first;
    return *text ? first << 8 | *text++ : 0;
}

unsigned int ToLower(unsigned int character)
{
    if (character < 0x100)
        return character >= 'A' && character <= 'Z' ? character + ('a' - 'A') : character;
    for (const CaseRun& run : CaseRuns)
        if (character - run.Upper < run.Count)
            return character - run.Upper + run.Lower;
    return character;
}

unsigned int ToUpper(unsigned int character)
{
    if (character < 0x100)
        return character >= 'a' && character <= 'z' ? character - ('a' - 'A') : character;
    for (const CaseRun& run : CaseRuns)
        if (character - run.Lower < run.Count)
            return character - run.Lower + run.Upper;
    return character;
}

// Every mapping keeps a character's width.
template <typename Map> unsigned char* MapInPlace(unsigned char* text, Map map)
{
    const unsigned char* at = text;
    for (unsigned char* target = text; const unsigned int character = Next(at);) {
        const unsigned int mapped = map(character);
        if (mapped > 0xFF)
            *target++ = static_cast<unsigned char>(mapped >> 8);
        *target++ = static_cast<unsigned char>(mapped);
    }
    return text;
}

bool Contains(const unsigned char* set, unsigned int wanted)
{
    while (const unsigned int character = Next(set))
        if (character == wanted)
            return true;
    return false;
}

template <typename Map> int CompareMapped(const unsigned char* left, const unsigned char* right, Map map)
{
    for (;;) {
        const unsigned int a = map(Next(left));
        const unsigned int b = map(Next(right));
        if (a != b)
            return a < b ? -1 : 1;
        if (a == 0)
            return 0;
    }
}

// The place of a character in the Korean order: symbols, digits, Latin letters whatever their width and case,
// then the rest in the order of Unicode, in which the Hangul syllables stand as in a dictionary.
unsigned int Weight(unsigned int character)
{
    enum : unsigned int { Digit = 1u << 16, Latin = 2u << 16, Other = 3u << 16 };
    if (character == 0)
        return 0;
    unsigned int wide = Uhc::ToWide(ToLower(character));
    if (wide > 0xFF00 && wide < 0xFF5F)
        wide -= 0xFF00 - 0x20;
    if (wide >= '0' && wide <= '9')
        return Digit + wide;
    if (wide >= 'a' && wide <= 'z')
        return Latin + wide;
    const bool isSymbol = wide < 0xC0 || (wide >= 0x2000 && wide < 0x3040);
    return isSymbol ? wide + 1 : Other + wide;
}
} // namespace

int _setmbcp(int codePage)
{
    return codePage == 949 ? 0 : -1;
}

int _mbscmp(const unsigned char* left, const unsigned char* right)
{
    return CompareMapped(
        left, right, [](unsigned int character) { return character; });
}

int _mbsicmp(const unsigned char* left, const unsigned char* right)
{
    return CompareMapped(left, right, ToLower);
}

// Case decides only between texts that are otherwise equal, the lower one coming first.
int _mbscoll(const unsigned char* left, const unsigned char* right)
{
    const int order = _mbsicoll(left, right);
    return order ? order : -_mbscmp(left, right);
}

// Neither does width, the narrow letter coming first.
int _mbsicoll(const unsigned char* left, const unsigned char* right)
{
    const int order = CompareMapped(left, right, Weight);
    return order ? order : _mbsicmp(left, right);
}

const unsigned char* _mbspbrk(const unsigned char* text, const unsigned char* set)
{
    const unsigned char* found = text;
    for (const unsigned char* at = text;; found = at) {
        const unsigned int character = Next(at);
        if (character == 0)
            return nullptr;
        if (Contains(set, character))
            return found;
    }
}

unsigned char* _mbsupr(unsigned char* text)
{
    return MapInPlace(text, ToUpper);
}

unsigned char* _mbslwr(unsigned char* text)
{
    return MapInPlace(text, ToLower);
}

// Turning each double-byte character round first leaves it right after all bytes have been turned round.
unsigned char* _mbsrev(unsigned char* text)
{
    unsigned char* end = text;
    for (const unsigned char* at = text; Next(at); end = text + (at - text))
        if (at - end == 2)
            std::swap(end[0], end[1]);
    std::reverse(text, end);
    return text;
}
