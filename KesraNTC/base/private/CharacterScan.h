#pragma once

#include "KesraNTC/platform/private/DoubleByte.h"

#include <cstddef>
#include <string_view>

namespace Kesra
{
/// Whether a character starts at `at`, when one starts at `known` before it. Any byte that cannot lead ends a
/// character; in a run of bytes that can, leads and trails take turns.
inline bool IsCharacterStart(std::string_view text, std::size_t at, std::size_t known = 0)
{
    std::size_t run = at;
    while (run > known && IsLeadByte(text[run - 1]))
        --run;
    return (at - run) % 2 == 0;
}

/// Whether the text consists of whole characters, without half a one at its end.
inline bool IsWholeCharacters(std::string_view text)
{
    return IsCharacterStart(text, text.size());
}

/// How many bytes the leading characters take that stand in the set, or that do not. A NUL and half a
/// character end both.
inline std::size_t LeadingSpan(const char* text, const char* set, bool isIncluding)
{
    const auto isInSet = [set](const char* character, std::size_t size) {
        for (const char* other = set; *other; other += IsLeadByte(*other) && other[1] ? 2 : 1)
            if (std::char_traits<char>::compare(other, character, size) == 0)
                return true;
        return false;
    };
    const char* at = text;
    for (;;) {
        const std::size_t size = IsLeadByte(*at) ? 2 : 1;
        if (!*at || !at[size - 1] || isInSet(at, size) != isIncluding)
            return static_cast<std::size_t>(at - text);
        at += size;
    }
}

/// Finds the occurrences of bytes, one after the other, at which a character starts. Looks for the bytes
/// first and at the characters only where they were found, so that searching runs at the speed of memchr.
class CharacterScan
{
public:
    CharacterScan(std::string_view text, std::size_t start) : Text(text), Start(start) {}

    /// The next occurrence behind the one found before; npos if there is none. `wanted` is not empty.
    std::size_t Next(std::string_view wanted)
    {
        std::size_t at = Start;
        while ((at = Text.find(wanted, at)) != Text.npos) {
            const bool isStart = IsCharacterStart(Text, at, Start);
            Start = isStart ? at + wanted.size() : at + 1;
            if (isStart)
                return at;
            at = Start;
        }
        return Text.npos;
    }

private:
    std::string_view Text;
    std::size_t Start;
};
} // namespace Kesra
