#pragma once

#include "KesraNTC/platform/Export.h"

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

/// Stands directly before the characters of a text, in the same allocation.
struct CStringData {
    std::atomic<std::int32_t> RefCount; ///< strings sharing the text; -1: locked, or the shared empty text
    std::int32_t DataLength;            ///< characters in use, terminator excluded
    std::int32_t AllocLength;           ///< room for characters, terminator excluded
};

namespace Kesra
{
/// The header and the one character of the empty text.
struct alignas(8) EmptyText {
    CStringData Data;
    char Terminator;
};
/// What every empty string points at; never counted, written or freed.
KESRANTC_API extern EmptyText SharedEmptyText;
} // namespace Kesra

/// A text in the ANSI code page. Copies share one buffer until one of them is modified, so passing a string
/// by value costs one atomic increment. A character is a byte; searching, comparing, case mapping and
/// reversal take a double-byte character of code page 949 as one, whatever locale and multibyte code page the
/// game has set, and stop at half a character that ends the text. Indexes and lengths count bytes. A null
/// pointer counts as the empty text.
///
/// Strings that share a buffer may live on different threads; one string object belongs to one thread at a
/// time. A text that memory cannot hold, or that would pass 2 GiB, throws std::bad_alloc, which a game cannot
/// catch when the library is a Windows DLL.
class KESRANTC_API CString
{
public:
    /// The empty text.
    CString() noexcept : Characters(EmptyCharacters()) {}
    /// `repeat` copies of `ch`; empty if `repeat` is below 1.
    CString(char ch, int repeat);
    /// Takes the characters before the NUL.
    CString(const char* text);
    /// Takes a 16-bit wide text and converts it to the ANSI code page.
    CString(const unsigned short* text);
    /// Takes the first `length` characters of a 16-bit wide text; a NUL among them ends the text.
    CString(const unsigned short* text, int length);
    /// Take a wide text as the compiler writes it, L"text", and as an automation text (`BSTR`) holds it.
    CString(const wchar_t* text);
    CString(const char16_t* text);
    /// Shares the buffer, or copies the characters of a locked string.
    CString(const CString& other);
    /// Takes the buffer over and leaves the other text empty.
    CString(CString&& other) noexcept : Characters(std::exchange(other.Characters, EmptyCharacters())) {}
    ~CString();

    /// As the constructors, but a string moved from may keep a text. A locked buffer is used if it has room.
    CString& operator=(const CString& other);
    CString& operator=(CString&& other); // NOLINT(performance-noexcept-move-constructor): may have to copy
    CString& operator=(const char* text);
    CString& operator=(const unsigned char* text);
    CString& operator=(const unsigned short* text);
    CString& operator=(const wchar_t* text);
    CString& operator=(const char16_t* text);
    CString& operator=(char ch);

    /// Bytes of the text, terminator excluded.
    int GetLength() const noexcept { return Data()->DataLength; }
    /// Characters that fit without a new buffer.
    int GetAllocLength() const noexcept { return Data()->AllocLength; }
    bool IsEmpty() const noexcept { return Data()->DataLength == 0; }
    /// Gives the buffer back; a locked one stays and holds the empty text.
    void Empty();

    /// The character at `index`; NUL outside the text.
    char operator[](int index) const noexcept;
    /// The terminated text, valid until the string is modified or destroyed.
    operator const char*() const noexcept { return Characters; }
    /// Stores `ch` at `index`; nothing happens outside the text.
    void SetAt(int index, char ch);

    /// Gives a private, writable buffer for at least `minLength` characters and the terminator, the text
    /// kept. After writing call ReleaseBuffer; until then the length is the old one.
    char* GetBuffer(int minLength);
    /// The same, and the text now has exactly `length` characters; those beyond the old text are not
    /// initialised.
    char* GetBufferSetLength(int length);
    /// Ends writing through GetBuffer: the text has `length` characters (at most GetAllocLength()), or ends
    /// at its first NUL when `length` is -1.
    void ReleaseBuffer(int length = -1);
    /// Gives back the room beyond the text.
    void FreeExtra();
    /// Makes the buffer private and keeps it so: copies of a locked string copy the characters. An assignment
    /// that does not fit the buffer takes a new, unlocked one.
    char* LockBuffer();
    /// Lets copies share the buffer again.
    void UnlockBuffer();

    /// Appends; the text may be a part of this very string.
    CString& operator+=(const char* text)
    {
        if (text)
            Append(text, std::strlen(text));
        return *this;
    }
    CString& operator+=(char ch)
    {
        Append(&ch, 1);
        return *this;
    }
    CString& operator+=(const CString& other)
    {
        Append(other.Characters, static_cast<std::size_t>(other.GetLength()));
        return *this;
    }

    /// Below, equal to or above 0 as this text is below, equal to or above the other, by character codes.
    int Compare(const char* other) const;
    /// The same, upper and lower case being equal.
    int CompareNoCase(const char* other) const;
    /// The same, in the order of a Korean dictionary as the system knows it.
    int Collate(const char* other) const;
    /// The same, upper and lower case being equal.
    int CollateNoCase(const char* other) const;

    /// The index of the first `ch` at or after `start`; -1 if there is none.
    int Find(char ch, int start = 0) const;
    /// The index of the first occurrence of the text at or after `start`; -1 if there is none. The empty text
    /// is found at `start`.
    int Find(const char* text, int start = 0) const;
    /// The index of the last `ch`; -1 if there is none.
    int ReverseFind(char ch) const;
    /// The index of the first character that is in the set; -1 if there is none.
    int FindOneOf(const char* set) const;
    /// The first `count` characters; the whole text as a shared copy when it has no more.
    CString Left(int count) const;
    /// The last `count` characters; the whole text as a shared copy when it has no more.
    CString Right(int count) const;
    /// The characters from `first` on.
    CString Mid(int first) const;
    /// At most `count` characters from `first` on; empty beyond the end, the whole text as a shared copy.
    CString Mid(int first, int count) const;
    /// The leading characters that are in the set.
    CString SpanIncluding(const char* set) const;
    /// The leading characters that are not in the set.
    CString SpanExcluding(const char* set) const;

    /// Change the case of all letters, or the order of all characters.
    void MakeUpper();
    void MakeLower();
    void MakeReverse();
    /// Replaces every occurrence and tells how many there were.
    int Replace(char oldChar, char newChar);
    /// Replaces every occurrence, from left to right and without overlap, and tells how many there were. An
    /// empty old text replaces nothing.
    int Replace(const char* oldText, const char* newText);
    /// Deletes every occurrence and tells how many there were.
    int Remove(char ch);
    /// Inserts before `index`, which is cut to the text; returns the new length.
    int Insert(int index, char ch);
    int Insert(int index, const char* text);
    /// Deletes up to `count` characters from `index` on; an index below 0 counts as 0. Returns the length the
    /// text had before.
    int Delete(int index, int count = 1);
    /// Without an argument these remove white space: space, tab, line feed, vertical tab, form feed, return.
    void TrimLeft();
    void TrimRight();
    void TrimLeft(char ch);
    void TrimRight(char ch);
    void TrimLeft(const char* set);
    void TrimRight(const char* set);
    /// Converts the text from the ANSI to the OEM code page.
    void CharToOemA();
    /// Converts the text from the OEM to the ANSI code page.
    void OemToCharA();
    /// Formats with the printf conversions of ISO C, the same text on every system and in every locale: the
    /// letters d i u x X o b B e E f F g G a A c s p n, the flags - + space 0 #, width, precision and *.
    ///
    /// The sizes: an integer has 32 bits, of which hh takes the low 8 and h the low 16; ll, q, j, L and I64
    /// are 64 bits; z, t and I those of a pointer; l takes a `long`, of which the low 32 bits count, and I32
    /// and w an int. L before e f g a takes a `long double` as this compiler has it. F before another letter
    /// and N anywhere are skipped, as are the flags ' and I.
    ///
    /// Where ISO C leaves it open: c and s take bytes, and with l or w, or as C and S (unless h stands
    /// before), a 16-bit wide character or text. A null text is "(null)". p prints all digits of an address
    /// in capitals. n skips its pointer and writes nothing. The flag 0 fills texts and characters with zeros
    /// too;
    /// + and space do nothing to unsigned numbers. Infinity is inf, what is no number nan, after its sign;
    /// the decimal point is a point. Any other letter stands for itself and takes no argument.
    ///
    /// Fields grow to 1048576 characters; a NUL ends the result. The arguments may be texts of this very
    /// string.
    void Format(const char* format, ...);
    void FormatV(const char* format, va_list arguments);
    /// Formats a message whose inserts %1 to %99, each perhaps with a printf format as in %2!d!, stand in any
    /// order. Where that fails, and where nothing comes out, the text stays as it was.
    void FormatMessageA(const char* format, ...);

private:
    // Joined texts; neither operand changes.
    friend KESRANTC_API CString operator+(const CString& left, const CString& right);
    friend KESRANTC_API CString operator+(const CString& left, const char* right);
    friend KESRANTC_API CString operator+(const char* left, const CString& right);
    friend KESRANTC_API CString operator+(const CString& left, char right);
    friend KESRANTC_API CString operator+(char left, const CString& right);

    static char* EmptyCharacters() noexcept { return &Kesra::SharedEmptyText.Terminator; }
    static char* Allocate(int length);
    static CString Join(const char* left, int leftLength, const char* right, int rightLength);

    CStringData* Data() const noexcept { return reinterpret_cast<CStringData*>(Characters) - 1; }
    bool IsSharedEmpty() const noexcept { return Characters == EmptyCharacters(); }
    bool IsShared() const noexcept { return Data()->RefCount.load(std::memory_order_acquire) > 1; }
    bool IsRoomy() const noexcept;
    int GetRoom() const noexcept;
    bool IsLocked() const noexcept;
    bool IsOwn(const char* text) const noexcept;
    std::string_view View() const noexcept { return {Characters, static_cast<std::size_t>(GetLength())}; }
    void SetLength(int length) noexcept;
    void Free() noexcept;
    void Release() noexcept;
    void TakeOver(char* characters) noexcept;
    void MoveTo(char* characters) noexcept;
    void CopyBeforeWrite();
    void Assign(const char* text, int length);
    void AssignWide(const unsigned short* text, int length);
    inline void Append(const char* text, std::size_t length);
    void AppendGrowing(const char* text, std::size_t length);
    void Truncate(std::size_t length);
    int ReplaceAll(std::string_view wanted, std::string_view instead);
    void InsertAt(int index, const char* text, std::size_t count);

    char* Characters;
};

inline CString::CString(const CString& other) : Characters(other.Characters)
{
    if (Data()->RefCount.load(std::memory_order_relaxed) >= 0)
        Data()->RefCount.fetch_add(1, std::memory_order_relaxed);
    else if (!IsSharedEmpty()) {
        Characters = EmptyCharacters();
        Assign(other.Characters, other.GetLength());
    }
}

inline CString::~CString()
{
    if (!IsSharedEmpty() && Data()->RefCount.fetch_sub(1, std::memory_order_acq_rel) <= 1)
        Free();
}

// A text that was appended to stands in a roomy block, larger than its buffer, with the room before the
// header; AllocLength grows within it. The header's address tells the kinds of block apart: a block from the
// heap is aligned to 8 bytes, and the room takes 4 of them.
inline bool CString::IsRoomy() const noexcept
{
    return reinterpret_cast<std::uintptr_t>(Data()) % 8 != 0;
}

// The most characters that fit without another block.
inline int CString::GetRoom() const noexcept
{
    // A locked buffer keeps the size that its owner knows.
    const bool mayGrow = IsRoomy() && Data()->RefCount.load(std::memory_order_relaxed) > 0;
    return mayGrow ? reinterpret_cast<const std::int32_t*>(Data())[-1] : GetAllocLength();
}

// Loops run through this: it takes few steps as long as there is room.
inline void CString::Append(const char* text, std::size_t length)
{
    CStringData* data = Data();
    const std::size_t newLength = static_cast<std::size_t>(data->DataLength) + length;
    if (IsShared() || newLength > static_cast<std::size_t>(GetRoom()) || length == 0) {
        AppendGrowing(text, length);
        return;
    }
    char* end = Characters + data->DataLength;
    std::memmove(end, text, length);
    end[length] = '\0';
    data->DataLength = static_cast<std::int32_t>(newLength);
    if (data->AllocLength < data->DataLength)
        data->AllocLength = data->DataLength;
}

inline char CString::operator[](int index) const noexcept
{
    return index >= 0 && index < GetLength() ? Characters[index] : '\0';
}

// All compare as CString::Compare does.
inline bool operator==(const CString& left, const CString& right)
{
    return left.Compare(right) == 0;
}
inline bool operator==(const CString& left, const char* right)
{
    return left.Compare(right) == 0;
}
inline bool operator==(const char* left, const CString& right)
{
    return right.Compare(left) == 0;
}
inline bool operator!=(const CString& left, const CString& right)
{
    return left.Compare(right) != 0;
}
inline bool operator!=(const CString& left, const char* right)
{
    return left.Compare(right) != 0;
}
inline bool operator!=(const char* left, const CString& right)
{
    return right.Compare(left) != 0;
}
inline bool operator<(const CString& left, const CString& right)
{
    return left.Compare(right) < 0;
}
inline bool operator<(const CString& left, const char* right)
{
    return left.Compare(right) < 0;
}
inline bool operator<(const char* left, const CString& right)
{
    return right.Compare(left) > 0;
}
inline bool operator>(const CString& left, const CString& right)
{
    return left.Compare(right) > 0;
}
inline bool operator>(const CString& left, const char* right)
{
    return left.Compare(right) > 0;
}
inline bool operator>(const char* left, const CString& right)
{
    return right.Compare(left) < 0;
}
inline bool operator<=(const CString& left, const CString& right)
{
    return left.Compare(right) <= 0;
}
inline bool operator<=(const CString& left, const char* right)
{
    return left.Compare(right) <= 0;
}
inline bool operator<=(const char* left, const CString& right)
{
    return right.Compare(left) >= 0;
}
inline bool operator>=(const CString& left, const CString& right)
{
    return left.Compare(right) >= 0;
}
inline bool operator>=(const CString& left, const char* right)
{
    return left.Compare(right) >= 0;
}
inline bool operator>=(const char* left, const CString& right)
{
    return right.Compare(left) <= 0;
}
