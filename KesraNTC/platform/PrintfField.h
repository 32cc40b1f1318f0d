#pragma once

#include "KesraNTC/platform/Platform.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

// The printf conversions of the Windows runtime, for whoever takes the arguments apart itself: the same text
// on every platform, whatever the local printf makes of I64, S or a 16-bit wide text.
namespace Kesra
{
/// Wider fields, and more precise ones of numbers, are cut to this many characters.
constexpr int LargestPrintfField = 1 << 20;

/// One conversion: what stands between the percent sign and the type letter, and the letter.
struct PrintfField {
    enum class Width { Default, Short, Long, Quad };

    bool IsLeft = false;
    bool HasPlus = false;
    bool HasSpace = false;
    bool HasZero = false;
    bool IsAlternate = false;
    int MinWidth = 0;
    int Precision = -1; ///< -1: none given
    Width Size = Width::Default;
    char Type = '\0'; ///< NUL: the format ended before the letter

    bool IsInteger() const { return IsOneOf("diuxXo"); }
    bool IsReal() const { return IsOneOf("eEgGf"); }
    bool IsText() const { return IsOneOf("sS"); }
    bool IsCharacter() const { return IsOneOf("cC"); }
    /// Whether a text or a character is wide: the capital letters mean wide unless h or l says otherwise.
    bool IsWide() const
    {
        return Size == Width::Long || (Size != Width::Short && (Type == 'S' || Type == 'C'));
    }

private:
    bool IsOneOf(std::string_view letters) const { return Type && letters.find(Type) != letters.npos; }
};

inline int CutPrintfField(long long number)
{
    return number > LargestPrintfField ? LargestPrintfField : static_cast<int>(number);
}

inline int ReadPrintfNumber(const char*& at)
{
    long long number = 0;
    for (; *at >= '0' && *at <= '9'; ++at)
        number = std::min<long long>(number * 10 + (*at - '0'), INT32_MAX);
    return static_cast<int>(number);
}

inline void ReadPrintfFlags(const char*& at, PrintfField& field)
{
    for (;; ++at)
        switch (*at) {
        case '-':
            field.IsLeft = true;
            break;
        case '+':
            field.HasPlus = true;
            break;
        case ' ':
            field.HasSpace = true;
            break;
        case '0':
            field.HasZero = true;
            break;
        case '#':
            field.IsAlternate = true;
            break;
        default:
            return;
        }
}

inline void ReadPrintfSize(const char*& at, PrintfField& field)
{
    using Width = PrintfField::Width;
    for (;; ++at)
        if (*at == 'h')
            field.Size = Width::Short;
        else if (*at == 'l')
            field.Size = field.Size == Width::Long ? Width::Quad : Width::Long;
        else if (at[0] == 'I' && at[1] == '6' && at[2] == '4') {
            field.Size = Width::Quad;
            at += 2;
        } else if (*at != 'F' && *at != 'N')
            return;
}

/// Reads one conversion; `at` moves from behind the percent sign to behind the type letter. `nextInt`
/// supplies what stands for a *.
template <typename NextInt> PrintfField ReadPrintfField(const char*& at, NextInt nextInt)
{
    PrintfField field;
    ReadPrintfFlags(at, field);
    long long width = 0;
    if (*at == '*') {
        ++at;
        width = nextInt();
        field.IsLeft = field.IsLeft || width < 0;
    } else {
        width = ReadPrintfNumber(at);
    }
    field.MinWidth = CutPrintfField(width < 0 ? -width : width);
    if (*at == '.') {
        ++at;
        const bool isGiven = *at == '*';
        field.Precision = std::max(isGiven ? (++at, static_cast<int>(nextInt())) : ReadPrintfNumber(at), -1);
    }
    ReadPrintfSize(at, field);
    field.Type = *at;
    // That of a text adds no character to it.
    if (!field.IsText())
        field.Precision = CutPrintfField(field.Precision);
    if (*at)
        ++at;
    return field;
}

/// Lets the C runtime print one number and appends it.
template <typename Value>
void AppendPrinted(std::string& output, const PrintfField& field, const char* type, Value value)
{
    std::string format = "%";
    format.append(field.IsLeft, '-').append(field.HasPlus, '+').append(field.HasSpace, ' ');
    format.append(field.HasZero, '0').append(field.IsAlternate, '#').append("*.*").append(type);
    const auto print = [&](char* target, std::size_t room) {
        return std::snprintf(target, room, format.c_str(), field.MinWidth, field.Precision, value);
    };
    char shortText[64];
    const int printed = print(shortText, sizeof shortText);
    if (printed < 0)
        return;
    const std::size_t length = static_cast<std::size_t>(printed);
    if (length < sizeof shortText) {
        output.append(shortText, length);
        return;
    }
    const std::size_t start = output.size();
    output.resize(start + length + 1);
    print(output.data() + start, length + 1);
    output.resize(start + length);
}

/// Appends an integer of which the field's size says how many low bits count; Default and Long are 32 bits.
inline void AppendInteger(std::string& output, const PrintfField& field, std::uint64_t bits)
{
    using Width = PrintfField::Width;
    const bool isSigned = field.Type == 'd' || field.Type == 'i';
    if (field.Size == Width::Short)
        bits = isSigned ? static_cast<std::uint64_t>(static_cast<std::int16_t>(bits))
                        : static_cast<std::uint16_t>(bits);
    else if (field.Size != Width::Quad)
        bits = isSigned ? static_cast<std::uint64_t>(static_cast<std::int32_t>(bits))
                        : static_cast<std::uint32_t>(bits);
    const char type[] = {'l', 'l', field.Type, '\0'};
    if (isSigned)
        AppendPrinted(output, field, type, static_cast<long long>(bits));
    else
        AppendPrinted(output, field, type, static_cast<unsigned long long>(bits));
}

inline void AppendReal(std::string& output, const PrintfField& field, double value)
{
    const char type[] = {field.Type, '\0'};
    AppendPrinted(output, field, type, value);
}

/// Appends an address: all its digits in capital hexadecimal.
inline void AppendPointer(std::string& output, PrintfField field, const void* pointer)
{
    field.Precision = 2 * static_cast<int>(sizeof pointer);
    AppendPrinted(output, field, "llX",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(pointer)));
}

/// Appends bytes as they are, filled up to the field's width.
inline void AppendPadded(std::string& output, const PrintfField& field, std::string_view text)
{
    const std::size_t width = static_cast<std::size_t>(field.MinWidth);
    const std::size_t padding = width > text.size() ? width - text.size() : 0;
    if (!field.IsLeft)
        output.append(padding, field.HasZero ? '0' : ' ');
    output.append(text);
    if (field.IsLeft)
        output.append(padding, ' ');
}

/// Appends at most as many bytes as the precision says and reads no byte beyond them; null is "(null)".
inline void AppendText(std::string& output, const PrintfField& field, const char* text)
{
    if (!text)
        text = "(null)";
    const std::size_t most = field.Precision < 0 ? SIZE_MAX : static_cast<std::size_t>(field.Precision);
    std::size_t length = 0;
    while (length < most && text[length])
        ++length;
    AppendPadded(output, field, {text, length});
}

/// Appends wide characters in the ANSI code page.
inline void AppendWide(std::string& output, const PrintfField& field, LPCWSTR text, int length)
{
    std::string bytes(static_cast<std::size_t>(length) * 2, '\0');
    if (length > 0)
        bytes.resize(static_cast<std::size_t>(
            WideCharToMultiByte(CP_ACP, 0, text, length, bytes.data(), length * 2, nullptr, nullptr)));
    AppendPadded(output, field, bytes);
}

/// The same as AppendText for a 16-bit wide text; the precision counts its wide characters.
inline void AppendWideText(std::string& output, const PrintfField& field, LPCWSTR text)
{
    if (!text) {
        AppendText(output, field, nullptr);
        return;
    }
    constexpr int MostUnits = INT32_MAX / 2;
    const int most = field.Precision < 0 ? MostUnits : std::min(field.Precision, MostUnits);
    int length = 0;
    // Unlike a comparison in place this may read a text of whichever 16-bit type.
    for (WCHAR unit; length < most && (std::memcpy(&unit, text + length, sizeof unit), unit != 0);)
        ++length;
    AppendWide(output, field, text, length);
}
} // namespace Kesra
