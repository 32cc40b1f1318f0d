#include "KesraNTC/platform/posix/text/Multibyte.h"

#include "KesraNTC/platform/posix/Handles.h"
#include "KesraNTC/platform/posix/text/CodePages.h"
#include "KesraNTC/platform/posix/text/private/Uhc.h"
#include "KesraNTC/platform/private/DoubleByte.h"

#include <string>
#include <string_view>

namespace Uhc = Kesra::Uhc;

namespace
{
char16_t WideOf(unsigned int character)
{
    return Uhc::ToWide(character);
}

bool IsFullWidth(unsigned int character)
{
    const char16_t wide = WideOf(character);
    return wide > 0xFF00 && wide < 0xFF5F;
}

// The place of a character in the Korean order: symbols, digits, Latin letters whatever their width and case,
// then the rest in the order of Unicode, in which the Hangul syllables stand as in a dictionary.
unsigned int Weight(unsigned int character)
{
    constexpr std::string_view Symbols = "'- \t\n\v\f\r!\"#$%&()*,./:;?@[]^_`{|}~\\+<=>";
    enum : unsigned int { Symbol = 1u << 16, Digit = 2u << 16, Latin = 3u << 16, Other = 4u << 16 };
    if (character == 0)
        return 0;
    unsigned int wide = WideOf(Kesra::ToLower(character));
    if (IsFullWidth(character))
        wide -= 0xFF00 - 0x20;
    const std::size_t place = wide < 0x80 ? Symbols.find(static_cast<char>(wide)) : Symbols.npos;
    if (place != Symbols.npos)
        return Symbol + static_cast<unsigned int>(place);
    if (wide >= '0' && wide <= '9')
        return Digit + wide;
    if (wide >= 'a' && wide <= 'z')
        return Latin + wide;
    const bool isControl = wide < 0x20 || wide == 0x7F;
    const bool isSymbol = wide < 0xC0 || (wide >= 0x2000 && wide < 0x3040);
    return isControl ? wide + 1 : isSymbol ? Symbol + wide : Other + wide;
}

// What decides between texts that are otherwise equal: first the case, then the width.
unsigned int WidthWeight(unsigned int character)
{
    return character == 0 ? 0 : IsFullWidth(character) ? 2 : 1;
}

unsigned int CaseWeight(unsigned int character)
{
    const bool isUpper = Kesra::ToLower(character) != character;
    return WidthWeight(character) + (isUpper ? 2 : 0);
}

std::string Text(LPCSTR text, int length)
{
    return length < 0 ? std::string(text) : std::string(text, static_cast<std::size_t>(length));
}

int Fail(DWORD error)
{
    SetLastError(error);
    return 0;
}
} // namespace

int CompareStringA(LCID, DWORD flags, LPCSTR left, int leftLength, LPCSTR right, int rightLength)
{
    if (!left || !right)
        return Fail(ERROR_INVALID_PARAMETER);
    if ((flags | NORM_IGNORECASE) != (SORT_STRINGSORT | NORM_IGNORECASE))
        return Fail(ERROR_INVALID_FLAGS);
    const std::string first = Text(left, leftLength);
    const std::string second = Text(right, rightLength);
    int order = Kesra::CompareCharacters(first.c_str(), second.c_str(), Weight);
    if (order == 0)
        order = Kesra::CompareCharacters(first.c_str(), second.c_str(),
                                         flags & NORM_IGNORECASE ? WidthWeight : CaseWeight);
    return CSTR_EQUAL + order;
}
