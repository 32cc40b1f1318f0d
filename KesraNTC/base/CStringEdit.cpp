#include "KesraNTC/base/CString.h"
#include "KesraNTC/base/private/CharacterScan.h"
#include "KesraNTC/platform/Platform.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <functional>
#include <new>
#include <string>

namespace
{
// Every mapping keeps a character's width.
template <typename Map> void MapCharacters(char* text, Map map)
{
    const char* at = text;
    while (unsigned int character = Kesra::NextCharacter(at)) {
        character = map(character);
        if (character > 0xFF)
            *text++ = static_cast<char>(character >> 8);
        *text++ = static_cast<char>(character & 0xFF);
    }
}

bool IsWhiteSpace(char ch)
{
    return ch == ' ' || (ch >= '\t' && ch <= '\r');
}

// What a code page lacks may become shorter or longer, and half a character may take the terminator with it.
template <typename Convert> std::string Converted(const char* text, Convert convert)
{
    std::string converted(2 * std::strlen(text) + 2, '\0');
    convert(text, converted.data());
    return converted;
}

std::size_t Count(std::string_view text, std::string_view wanted)
{
    Kesra::CharacterScan scan(text, 0);
    std::size_t count = 0;
    while (scan.Next(wanted) != text.npos)
        ++count;
    return count;
}

// Writes the text with every `wanted` replaced. The target may be the text itself when it does not grow: what
// is written then never reaches what is still to be read.
void CopyReplacing(char* target, std::string_view text, std::string_view wanted, std::string_view instead)
{
    Kesra::CharacterScan scan(text, 0);
    std::size_t done = 0;
    for (;;) {
        const std::size_t found = scan.Next(wanted);
        const std::size_t kept = std::min(found, text.size()) - done;
        if (target != text.data() + done)
            std::memmove(target, text.data() + done, kept);
        target += kept;
        if (found == text.npos)
            return;
        target = std::copy(instead.begin(), instead.end(), target);
        done = found + wanted.size();
    }
}
} // namespace

void CString::MakeUpper()
{
    CopyBeforeWrite();
    MapCharacters(Characters, Kesra::ToUpper);
}

void CString::MakeLower()
{
    CopyBeforeWrite();
    MapCharacters(Characters, Kesra::ToLower);
}

void CString::MakeReverse()
{
    CopyBeforeWrite();
    // Turning each double-byte character round first leaves it right after all bytes have been turned round.
    char* end = Characters;
    for (const char* at = end; Kesra::NextCharacter(at); end = Characters + (at - Characters))
        if (at - end == 2)
            std::swap(end[0], end[1]);
    std::reverse(Characters, end);
}

int CString::Replace(char oldChar, char newChar)
{
    if (oldChar == newChar)
        return 0;
    return ReplaceAll({&oldChar, 1}, {&newChar, 1});
}

int CString::Replace(const char* oldText, const char* newText)
{
    if (IsOwn(oldText) || IsOwn(newText))
        return Replace(CString(oldText), CString(newText));
    return ReplaceAll(oldText ? oldText : "", newText ? newText : "");
}

int CString::Remove(char ch)
{
    return ReplaceAll({&ch, 1}, {});
}

int CString::Insert(int index, char ch)
{
    InsertAt(index, &ch, 1);
    return GetLength();
}

int CString::Insert(int index, const char* text)
{
    if (IsOwn(text))
        return Insert(index, CString(text));
    const std::string_view inserted = text ? text : "";
    InsertAt(index, inserted.data(), inserted.size());
    return GetLength();
}

int CString::Delete(int index, int count)
{
    const int length = GetLength();
    index = std::max(index, 0);
    if (count < 1 || index >= length)
        return length;
    count = std::min(count, length - index);
    CopyBeforeWrite();
    std::memmove(Characters + index, Characters + index + count,
                 static_cast<std::size_t>(length - index - count));
    SetLength(length - count);
    return length;
}

void CString::TrimLeft()
{
    const std::string_view text = View();
    Delete(0, static_cast<int>(std::find_if_not(text.begin(), text.end(), IsWhiteSpace) - text.begin()));
}

void CString::TrimRight()
{
    const std::string_view text = View();
    std::size_t end = text.size();
    while (end > 0 && IsWhiteSpace(text[end - 1]) && Kesra::IsCharacterStart(text, end - 1))
        --end;
    Truncate(end);
}

void CString::TrimLeft(char ch)
{
    const char set[] = {ch, '\0'};
    TrimLeft(set);
}

void CString::TrimRight(char ch)
{
    const char set[] = {ch, '\0'};
    TrimRight(set);
}

void CString::TrimLeft(const char* set)
{
    Delete(0, SpanIncluding(set).GetLength());
}

void CString::TrimRight(const char* set)
{
    const CString wanted(set);
    const std::size_t length = View().size();
    std::size_t end = 0;
    for (std::size_t at = 0; at < length;) {
        const char* rest = Characters + at;
        const std::size_t others = Kesra::LeadingSpan(rest, wanted.Characters, false);
        const std::size_t trimmed = Kesra::LeadingSpan(rest + others, wanted.Characters, true);
        if (others > 0)
            end = at + others;
        at += others + trimmed;
        // A NUL or half a character stops both; it stays.
        if (trimmed == 0 && at < length)
            end = ++at;
    }
    Truncate(end);
}

void CString::CharToOemA()
{
    *this = Converted(Characters, ::CharToOemA).c_str();
}

void CString::OemToCharA()
{
    *this = Converted(Characters, ::OemToCharA).c_str();
}

bool CString::IsOwn(const char* text) const noexcept
{
    const std::less_equal<const char*> upTo;
    return !IsSharedEmpty() && upTo(Characters, text) && upTo(text, Characters + GetAllocLength());
}

void CString::Truncate(std::size_t length)
{
    if (length >= View().size())
        return;
    CopyBeforeWrite();
    SetLength(static_cast<int>(length));
}

// Neither text lies in this string's buffer.
int CString::ReplaceAll(std::string_view wanted, std::string_view instead)
{
    if (wanted.empty() || !Kesra::IsWholeCharacters(wanted))
        return 0;
    const std::string_view text = View();
    const std::size_t count = Count(text, wanted);
    if (count == 0)
        return 0;
    if (instead.size() > wanted.size() && (INT_MAX - text.size()) / (instead.size() - wanted.size()) < count)
        throw std::bad_alloc();
    const int length = static_cast<int>(text.size() - count * wanted.size() + count * instead.size());
    if (!IsShared() && instead.size() <= wanted.size()) {
        CopyReplacing(Characters, text, wanted, instead);
        SetLength(length);
        return static_cast<int>(count);
    }
    CString replaced;
    replaced.Characters = Allocate(length);
    CopyReplacing(replaced.Characters, text, wanted, instead);
    if (IsShared() || length > GetAllocLength())
        std::swap(Characters, replaced.Characters);
    else
        Assign(replaced.Characters, length);
    return static_cast<int>(count);
}

// The text does not lie in this string's buffer.
void CString::InsertAt(int index, const char* text, std::size_t count)
{
    const int length = GetLength();
    if (count == 0)
        return;
    if (count > static_cast<std::size_t>(INT_MAX - length))
        throw std::bad_alloc();
    index = std::clamp(index, 0, length);
    GetBuffer(length + static_cast<int>(count));
    char* at = Characters + index;
    std::memmove(at + count, at, static_cast<std::size_t>(length - index));
    std::memcpy(at, text, count);
    SetLength(length + static_cast<int>(count));
}
