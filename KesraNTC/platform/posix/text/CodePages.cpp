#include "KesraNTC/platform/posix/text/CodePages.h"

#include "KesraNTC/platform/posix/Handles.h"
#include "KesraNTC/platform/posix/text/private/Uhc.h"

#include <cstring>

namespace Uhc = Kesra::Uhc;

namespace
{
constexpr UINT Korean = 949;
constexpr char32_t Replacement = 0xFFFD;

// Takes the converted units one character at a time; without room it only counts them.
template <typename Unit> class Output
{
public:
    Output(Unit* target, int room) : Target(target), Room(room) {}

    void Put(const Unit* units, int count)
    {
        if (Room > 0 && count > Room - Count)
            IsFull = true;
        if (Room > 0 && !IsFull)
            std::memcpy(Target + Count, units, static_cast<std::size_t>(count) * sizeof(Unit));
        Count += count;
    }
    void Put(Unit unit) { Put(&unit, 1); }

    int Result() const
    {
        if (IsFull)
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return IsFull ? 0 : Count;
    }

private:
    Unit* Target;
    int Room;
    int Count = 0;
    bool IsFull = false;
};

UINT Resolve(UINT codePage)
{
    return codePage == CP_ACP || codePage == CP_OEMCP ? Korean : codePage;
}

int Fail(DWORD error)
{
    SetLastError(error);
    return 0;
}

bool AreArgumentsValid(UINT codePage, const void* source, int sourceLength, const void* target,
                       int targetLength)
{
    return (codePage == Korean || codePage == CP_UTF8) && source && sourceLength != 0 && sourceLength >= -1 &&
           targetLength >= 0 && (targetLength == 0 || (target && target != source));
}

int LengthWithTerminator(LPCWSTR text)
{
    int length = 0;
    WCHAR unit;
    do
        std::memcpy(&unit, text + length++, sizeof unit);
    while (unit);
    return length;
}

void PutWide(Output<WCHAR>& output, char32_t character)
{
    if (character < 0x10000) {
        output.Put(static_cast<WCHAR>(character));
        return;
    }
    const WCHAR pair[2] = {static_cast<WCHAR>(0xD800 + ((character - 0x10000) >> 10)),
                           static_cast<WCHAR>(0xDC00 + ((character - 0x10000) & 0x3FF))};
    output.Put(pair, 2);
}

// False as soon as bytes stand for no character; they become '?'.
bool KoreanToWide(const unsigned char* at, const unsigned char* end, Output<WCHAR>& output)
{
    bool isValid = true;
    while (at != end) {
        unsigned code = *at++;
        // A lead byte cut off by the end or by a NUL stands alone and must not swallow the terminator.
        if (Uhc::IsLead(static_cast<unsigned char>(code)) && at != end && *at)
            code = code << 8 | *at++;
        const char16_t wide = Uhc::ToWide(code);
        const bool isMapped = wide != Uhc::Unmapped || code == 0;
        isValid = isValid && isMapped;
        output.Put(isMapped ? wide : u'?');
    }
    return isValid;
}

// Reads one character; broken bytes give Replacement and clear isValid.
char32_t NextUtf8(const unsigned char*& at, const unsigned char* end, bool& isValid)
{
    const unsigned first = *at++;
    if (first < 0x80)
        return first;
    const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
    bool isGood = first >= 0xC2 && first <= 0xF4;
    char32_t character = first & (0x3Fu >> more);
    for (int i = 0; i < more && isGood; ++i) {
        const unsigned low = i > 0 ? 0x80 : first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
        const unsigned high = i > 0 ? 0xBF : first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
        isGood = at != end && *at >= low && *at <= high;
        if (isGood)
            character = character << 6 | (*at++ & 0x3F);
    }
    isValid = isValid && isGood;
    return isGood ? character : Replacement;
}

bool Utf8ToWide(const unsigned char* at, const unsigned char* end, Output<WCHAR>& output)
{
    bool isValid = true;
    while (at != end)
        PutWide(output, NextUtf8(at, end, isValid));
    return isValid;
}

bool WideToKorean(const WCHAR* source, int length, Output<char>& output, const char* defaultChar)
{
    const char* instead = defaultChar ? defaultChar : "?";
    const int insteadLength = Uhc::IsLead(static_cast<unsigned char>(instead[0])) && instead[1] ? 2 : 1;
    bool usedDefault = false;
    for (int i = 0; i < length; ++i) {
        WCHAR wide;
        std::memcpy(&wide, source + i, sizeof wide);
        const unsigned code = Uhc::FromWide(wide);
        if (code == Uhc::Unmapped && wide != 0) {
            output.Put(instead, insteadLength);
            usedDefault = true;
        } else {
            const char bytes[2] = {static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)};
            output.Put(code > 0xFF ? bytes : bytes + 1, code > 0xFF ? 2 : 1);
        }
    }
    return usedDefault;
}

void PutUtf8(Output<char>& output, char32_t character)
{
    char bytes[4];
    int count = 0;
    const auto add = [&](char32_t bits) { bytes[count++] = static_cast<char>(bits); };
    if (character < 0x80) {
        add(character);
    } else if (character < 0x800) {
        add(0xC0 | character >> 6);
        add(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        add(0xE0 | character >> 12);
        add(0x80 | (character >> 6 & 0x3F));
        add(0x80 | (character & 0x3F));
    } else {
        add(0xF0 | character >> 18);
        add(0x80 | (character >> 12 & 0x3F));
        add(0x80 | (character >> 6 & 0x3F));
        add(0x80 | (character & 0x3F));
    }
    output.Put(bytes, count);
}

void WideToUtf8(const WCHAR* source, int length, Output<char>& output)
{
    for (int i = 0; i < length; ++i) {
        WCHAR unit;
        std::memcpy(&unit, source + i, sizeof unit);
        char32_t character = unit;
        if (unit >= 0xD800 && unit <= 0xDFFF) {
            WCHAR next = 0;
            if (unit < 0xDC00 && i + 1 < length)
                std::memcpy(&next, source + i + 1, sizeof next);
            const bool isPair = next >= 0xDC00 && next <= 0xDFFF;
            character = isPair ? 0x10000 + ((unit - 0xD800u) << 10) + (next - 0xDC00u) : Replacement;
            i += isPair;
        }
        PutUtf8(output, character);
    }
}

BOOL CopyText(LPCSTR source, LPSTR target)
{
    if (!source || !target)
        return Fail(ERROR_INVALID_PARAMETER);
    std::memmove(target, source, std::strlen(source) + 1);
    return TRUE;
}
} // namespace

int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int sourceLength, LPWSTR target,
                        int targetLength)
{
    codePage = Resolve(codePage);
    if (!AreArgumentsValid(codePage, source, sourceLength, target, targetLength))
        return Fail(ERROR_INVALID_PARAMETER);
    if (flags & ~MB_ERR_INVALID_CHARS)
        return Fail(ERROR_INVALID_FLAGS);
    const std::size_t length =
        sourceLength < 0 ? std::strlen(source) + 1 : static_cast<std::size_t>(sourceLength);
    const auto* bytes = reinterpret_cast<const unsigned char*>(source);
    Output<WCHAR> output(target, targetLength);
    const bool isValid = codePage == Korean ? KoreanToWide(bytes, bytes + length, output)
                                            : Utf8ToWide(bytes, bytes + length, output);
    if (!isValid && (flags & MB_ERR_INVALID_CHARS))
        return Fail(ERROR_NO_UNICODE_TRANSLATION);
    return output.Result();
}

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR source, int sourceLength, LPSTR target,
                        int targetLength, LPCSTR defaultChar, LPBOOL usedDefaultChar)
{
    codePage = Resolve(codePage);
    if (!AreArgumentsValid(codePage, source, sourceLength, target, targetLength) ||
        (codePage == CP_UTF8 && (defaultChar || usedDefaultChar)))
        return Fail(ERROR_INVALID_PARAMETER);
    if (flags)
        return Fail(ERROR_INVALID_FLAGS);
    const int length = sourceLength < 0 ? LengthWithTerminator(source) : sourceLength;
    Output<char> output(target, targetLength);
    bool usedDefault = false;
    if (codePage == Korean)
        usedDefault = WideToKorean(source, length, output, defaultChar);
    else
        WideToUtf8(source, length, output);
    if (usedDefaultChar)
        *usedDefaultChar = usedDefault;
    return output.Result();
}

// Both pages are the same, so nothing changes on the way.
BOOL CharToOemA(LPCSTR source, LPSTR target)
{
    return CopyText(source, target);
}

BOOL OemToCharA(LPCSTR source, LPSTR target)
{
    return CopyText(source, target);
}
