#include "KesraNTC/base/CString.h"

#include "KesraNTC/platform/Platform.h"
#include "KesraNTC/platform/private/DoubleByte.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

constinit Kesra::EmptyText Kesra::SharedEmptyText = {{-1, 0, 0}, '\0'};

namespace
{
constexpr std::size_t HeaderSize = sizeof(CStringData);
static_assert(HeaderSize == 12 && offsetof(Kesra::EmptyText, Terminator) == HeaderSize);
static_assert(alignof(std::max_align_t) >= 8, "the heap aligns blocks as a roomy block needs it");

constexpr int LongestText = INT_MAX - static_cast<int>(HeaderSize) - 1;

int TextLength(const char* text)
{
    const std::size_t length = text ? std::strlen(text) : 0;
    if (length > static_cast<std::size_t>(LongestText))
        throw std::bad_alloc();
    return static_cast<int>(length);
}

int WideLength(const unsigned short* text)
{
    std::size_t length = 0;
    while (text && text[length])
        ++length;
    if (length > static_cast<std::size_t>(LongestText / 2))
        throw std::bad_alloc();
    return static_cast<int>(length);
}

int CombinedLength(int left, std::size_t right)
{
    if (right > static_cast<std::size_t>(LongestText - left))
        throw std::bad_alloc();
    return left + static_cast<int>(right);
}

// The bytes of the characters before the NUL or half a character.
int WholeLength(const char* text)
{
    const char* at = text;
    while (at - text < LongestText && Kesra::NextCharacter(at) != 0) {
    }
    return static_cast<int>(at - text);
}

int CollateKorean(const char* left, const char* right, DWORD flags)
{
    constexpr LCID Korean = 0x0412;
    const int order =
        CompareStringA(Korean, SORT_STRINGSORT | flags, left, WholeLength(left), right, WholeLength(right));
    return order - CSTR_EQUAL;
}

// A character of more than 16 bits becomes two units.
template <typename Character> std::vector<unsigned short> WideUnits(const Character* text)
{
    std::vector<unsigned short> units;
    for (; text && *text; ++text) {
        const auto code = static_cast<char32_t>(*text);
        if (code > 0xFFFF)
            units.push_back(static_cast<unsigned short>(0xD7C0 + (code >> 10)));
        units.push_back(static_cast<unsigned short>(code > 0xFFFF ? 0xDC00 + (code & 0x3FF) : code));
    }
    if (units.size() > static_cast<std::size_t>(LongestText / 2))
        throw std::bad_alloc();
    return units;
}

// A private buffer of `length` characters, terminated there, in a block that has room for `room`.
char* NewBuffer(int length, std::int32_t room, bool isRoomy)
{
    const std::size_t before = isRoomy ? sizeof room : 0;
    auto* block = static_cast<char*>(std::malloc(before + HeaderSize + static_cast<std::size_t>(room) + 1));
    if (!block)
        throw std::bad_alloc();
    std::memcpy(block, &room, before);
    new (block + before) CStringData{1, length, length};
    char* characters = block + before + HeaderSize;
    characters[length] = '\0';
    return characters;
}

char* NewRoomyBuffer(int length)
{
    constexpr int LeastRoom = 47;
    return NewBuffer(length, length > LongestText / 2 ? LongestText : std::max(length * 2, LeastRoom), true);
}

void CopyCharacters(char* to, const char* from, int length)
{
    std::memcpy(to, from, static_cast<std::size_t>(length));
}
} // namespace

CString::CString(char ch, int repeat) : CString()
{
    if (repeat < 1)
        return;
    Characters = Allocate(repeat);
    std::memset(Characters, ch, static_cast<std::size_t>(repeat));
}

CString::CString(const char* text) : Characters(Allocate(TextLength(text)))
{
    if (const int length = GetLength())
        CopyCharacters(Characters, text, length);
}

CString::CString(const unsigned short* text) : CString()
{
    AssignWide(text, WideLength(text));
}

CString::CString(const unsigned short* text, int length) : CString()
{
    AssignWide(text, text ? length : 0);
}

CString::CString(const wchar_t* text) : CString()
{
    *this = text;
}

CString::CString(const char16_t* text) : CString()
{
    *this = text;
}

CString& CString::operator=(const CString& other)
{
    if (Characters == other.Characters)
        return *this;
    CStringData* theirs = other.Data();
    if (IsLocked() || theirs->RefCount.load(std::memory_order_relaxed) < 0) {
        Assign(other.Characters, theirs->DataLength);
    } else {
        theirs->RefCount.fetch_add(1, std::memory_order_relaxed);
        TakeOver(other.Characters);
    }
    return *this;
}

CString&
CString::operator=(CString&& other) // NOLINT(performance-noexcept-move-constructor): may have to copy
{
    if (IsLocked() || other.Data()->RefCount.load(std::memory_order_relaxed) < 0)
        return *this = static_cast<const CString&>(other);
    std::swap(Characters, other.Characters);
    return *this;
}

CString& CString::operator=(const char* text)
{
    Assign(text, TextLength(text));
    return *this;
}

CString& CString::operator=(const unsigned char* text)
{
    return *this = reinterpret_cast<const char*>(text);
}

CString& CString::operator=(const unsigned short* text)
{
    AssignWide(text, WideLength(text));
    return *this;
}

CString& CString::operator=(const wchar_t* text)
{
    const std::vector<unsigned short> wide = WideUnits(text);
    AssignWide(wide.data(), static_cast<int>(wide.size()));
    return *this;
}

CString& CString::operator=(const char16_t* text)
{
    const std::vector<unsigned short> wide = WideUnits(text);
    AssignWide(wide.data(), static_cast<int>(wide.size()));
    return *this;
}

CString& CString::operator=(char ch)
{
    Assign(&ch, 1);
    return *this;
}

void CString::Empty()
{
    if (IsLocked())
        SetLength(0);
    else
        Release();
}

void CString::SetAt(int index, char ch)
{
    if (index < 0 || index >= GetLength())
        return;
    CopyBeforeWrite();
    Characters[index] = ch;
}

char* CString::GetBuffer(int minLength)
{
    if (IsShared() || minLength > GetRoom())
        MoveTo(Allocate(std::max(minLength, GetLength())));
    else if (minLength > GetAllocLength())
        Data()->AllocLength = minLength;
    return Characters;
}

char* CString::GetBufferSetLength(int length)
{
    GetBuffer(length);
    SetLength(std::max(length, 0));
    return Characters;
}

void CString::ReleaseBuffer(int length)
{
    CopyBeforeWrite();
    const int room = GetAllocLength();
    if (length < 0)
        length = static_cast<int>(strnlen(Characters, static_cast<std::size_t>(room)));
    SetLength(std::min(length, room));
}

void CString::FreeExtra()
{
    if (GetRoom() > GetLength())
        MoveTo(Allocate(GetLength()));
}

char* CString::LockBuffer()
{
    GetBuffer(0);
    if (!IsSharedEmpty())
        Data()->RefCount.store(-1, std::memory_order_relaxed);
    return Characters;
}

void CString::UnlockBuffer()
{
    if (IsLocked())
        Data()->RefCount.store(1, std::memory_order_relaxed);
}

CString operator+(const CString& left, const CString& right)
{
    return CString::Join(left, left.GetLength(), right, right.GetLength());
}

CString operator+(const CString& left, const char* right)
{
    return CString::Join(left, left.GetLength(), right, TextLength(right));
}

CString operator+(const char* left, const CString& right)
{
    return CString::Join(left, TextLength(left), right, right.GetLength());
}

CString operator+(const CString& left, char right)
{
    return CString::Join(left, left.GetLength(), &right, 1);
}

CString operator+(char left, const CString& right)
{
    return CString::Join(&left, 1, right, right.GetLength());
}

int CString::Compare(const char* other) const
{
    return Kesra::CompareCharacters(
        Characters, other ? other : "", [](unsigned int ch) { return ch; });
}

int CString::CompareNoCase(const char* other) const
{
    return Kesra::CompareCharacters(Characters, other ? other : "", Kesra::ToLower);
}

int CString::Collate(const char* other) const
{
    return CollateKorean(Characters, other ? other : "", 0);
}

int CString::CollateNoCase(const char* other) const
{
    return CollateKorean(Characters, other ? other : "", NORM_IGNORECASE);
}

// A buffer of exactly `length` characters, already terminated there; the shared empty one for no characters.
char* CString::Allocate(int length)
{
    if (length <= 0)
        return EmptyCharacters();
    if (length > LongestText)
        throw std::bad_alloc();
    return NewBuffer(length, length, false);
}

CString CString::Join(const char* left, int leftLength, const char* right, int rightLength)
{
    CString joined;
    joined.Characters = Allocate(CombinedLength(leftLength, static_cast<std::size_t>(rightLength)));
    if (leftLength)
        CopyCharacters(joined.Characters, left, leftLength);
    if (rightLength)
        CopyCharacters(joined.Characters + leftLength, right, rightLength);
    return joined;
}

bool CString::IsLocked() const noexcept
{
    return !IsSharedEmpty() && Data()->RefCount.load(std::memory_order_relaxed) < 0;
}

void CString::SetLength(int length) noexcept
{
    if (IsSharedEmpty())
        return;
    Data()->DataLength = length;
    Characters[length] = '\0';
}

void CString::Free() noexcept
{
    std::free(Characters - HeaderSize - (IsRoomy() ? sizeof(std::int32_t) : 0));
}

void CString::Release() noexcept
{
    TakeOver(EmptyCharacters());
}

// Gives up this string's part in its buffer and takes over the one at `characters`.
void CString::TakeOver(char* characters) noexcept
{
    CString old;
    old.Characters = std::exchange(Characters, characters);
}

// Takes over a buffer that has the room for the text and moves the text there.
void CString::MoveTo(char* characters) noexcept
{
    const int length = GetLength();
    CopyCharacters(characters, Characters, length);
    TakeOver(characters);
    SetLength(length);
}

void CString::CopyBeforeWrite()
{
    if (IsShared())
        GetBuffer(0);
}

// The text may lie inside this string's own buffer: the old buffer goes only after it has been copied.
void CString::Assign(const char* text, int length)
{
    if (IsShared() || length > GetAllocLength()) {
        char* fresh = Allocate(length);
        if (length)
            CopyCharacters(fresh, text, length);
        TakeOver(fresh);
    } else {
        if (length)
            std::memmove(Characters, text, static_cast<std::size_t>(length));
        SetLength(length);
    }
}

void CString::AssignWide(const unsigned short* text, int length)
{
    if (length > LongestText / 2)
        throw std::bad_alloc();
    const int room = std::max(length, 0) * 2;
    if (IsShared() || room > GetAllocLength())
        TakeOver(Allocate(room));
    int written = 0;
    if (length > 0)
        written = WideCharToMultiByte(CP_ACP, 0, reinterpret_cast<LPCWSTR>(text), length, Characters, room,
                                      nullptr, nullptr);
    SetLength(written);
    ReleaseBuffer();
}

// The text may lie inside this string's own buffer: the old buffer goes only after it has been copied.
void CString::AppendGrowing(const char* text, std::size_t length)
{
    if (length == 0)
        return;
    const int oldLength = GetLength();
    char* fresh = NewRoomyBuffer(CombinedLength(oldLength, length));
    CopyCharacters(fresh, Characters, oldLength);
    std::memcpy(fresh + oldLength, text, length);
    TakeOver(fresh);
}
