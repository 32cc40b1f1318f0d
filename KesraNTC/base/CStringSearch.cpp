#include "KesraNTC/base/CString.h"
#include "KesraNTC/base/private/CharacterScan.h"

#include <algorithm>

namespace
{
int ToIndex(std::size_t found)
{
    return found == std::string_view::npos ? -1 : static_cast<int>(found);
}
} // namespace

int CString::Find(char ch, int start) const
{
    // A byte that leads a double-byte character is no character itself.
    if (start >= GetLength() || Kesra::IsLeadByte(ch))
        return -1;
    const std::size_t first = static_cast<std::size_t>(std::max(start, 0));
    return ToIndex(Kesra::CharacterScan(View(), first).Next({&ch, 1}));
}

int CString::Find(const char* text, int start) const
{
    const std::string_view wanted = text ? text : "";
    start = std::max(start, 0);
    if (start > GetLength() || !Kesra::IsWholeCharacters(wanted))
        return -1;
    if (wanted.empty())
        return start;
    return ToIndex(Kesra::CharacterScan(View(), static_cast<std::size_t>(start)).Next(wanted));
}

int CString::ReverseFind(char ch) const
{
    if (Kesra::IsLeadByte(ch))
        return -1;
    const std::string_view text = View();
    std::size_t at = text.rfind(ch);
    while (at != text.npos && !Kesra::IsCharacterStart(text, at))
        at = at > 0 ? text.rfind(ch, at - 1) : text.npos;
    return ToIndex(at);
}

int CString::FindOneOf(const char* set) const
{
    const char* found = Characters + Kesra::LeadingSpan(Characters, set ? set : "", false);
    const char* behind = found;
    return Kesra::NextCharacter(behind) ? static_cast<int>(found - Characters) : -1;
}

CString CString::Left(int count) const
{
    return Mid(0, count);
}

CString CString::Right(int count) const
{
    return Mid(GetLength() - std::clamp(count, 0, GetLength()));
}

CString CString::Mid(int first) const
{
    return Mid(first, GetLength());
}

CString CString::Mid(int first, int count) const
{
    const int length = GetLength();
    first = std::clamp(first, 0, length);
    count = std::clamp(count, 0, length - first);
    if (count == length)
        return *this;
    CString part;
    part.Assign(Characters + first, count);
    return part;
}

CString CString::SpanIncluding(const char* set) const
{
    return Left(static_cast<int>(Kesra::LeadingSpan(Characters, set ? set : "", true)));
}

CString CString::SpanExcluding(const char* set) const
{
    return Left(static_cast<int>(Kesra::LeadingSpan(Characters, set ? set : "", false)));
}
