#pragma once

#include "KesraNTC/platform/Platform.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

// The printf conversions for whoever takes the arguments apart itself: the same text on every platform,
// whatever the local printf makes of I64, S, a 16-bit wide text or a flag that ISO C gives no meaning.
namespace Kesra
{
/// Wider fields, and more precise ones of numbers, are cut to this many characters.
constexpr int LargestPrintfField = 1 << 20;

/// One conversion: what stands between the percent sign and the type letter, and the letter.
struct PrintfField {
    /// Native is as wide as a pointer, Extended is a long double or 64 bits.
    enum class Width { Default, Char, Short, Long, Quad, Native, Extended, Wide };

    bool IsLeft = false;
    bool HasPlus = false;
    bool HasSpace = false;
    bool HasZero = false;
    bool IsAlternate = false;
    int MinWidth = 0;
    int Precision = -1; ///< -1: none given
    Width Size = Width::Default;
    char Type = '\0'; ///< NUL: the format ended before the letter

    bool IsInteger() const { return IsOneOf("diuxXobB"); }
    bool IsSigned() const { return IsOneOf("di"); }
    bool IsReal() const { return IsOneOf("eEfFgGaA"); }
    bool IsText() const { return IsOneOf("sS"); }
    bool IsCharacter() const { return IsOneOf("cC"); }
    /// Whether a text or a character is wide: the capital letters mean wide unless h says otherwise.
    bool IsWide() const
    {
        const bool isNarrow = Size == Width::Short || Size == Width::Char;
        return Size == Width::Long || Size == Width::Wide || (!isNarrow && IsOneOf("SC"));
    }

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

/// How many characters the Windows size prefix at `at` takes: I, I32 or I64 before a type letter; 0 if it is
/// none.
inline int WindowsPrefixLength(const char* at)
{
    const std::string_view rest(at);
    const std::size_t length = rest.starts_with("I64") || rest.starts_with("I32") ? 3 : 1;
    const bool isPrefix = rest.starts_with('I') && rest.size() > length &&
                          std::string_view("diuxXobBneEfFgGaA").find(rest[length]) != rest.npos;
    return isPrefix ? static_cast<int>(length) : 0;
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
        case '\'':
            // Groups of digits, which only some languages have.
            break;
        case 'I':
            // Digits of the language, where no type follows; a compiler that knows the flag takes the field
            // for one with an argument.
            if (WindowsPrefixLength(at) || !at[1] || !std::strchr("-+ #'.*0123456789", at[1]))
                return;
            break;
        default:
            return;
        }
}

inline void ReadPrintfSize(const char*& at, PrintfField& field)
{
    using Width = PrintfField::Width;
    for (;; ++at)
        switch (*at) {
        case 'h':
            field.Size = field.Size == Width::Short ? Width::Char : Width::Short;
            break;
        case 'l':
            field.Size = field.Size == Width::Long ? Width::Quad : Width::Long;
            break;
        case 'q':
        case 'j':
            field.Size = Width::Quad;
            break;
        case 'z':
        case 'Z':
        case 't':
            field.Size = Width::Native;
            break;
        case 'L':
            field.Size = Width::Extended;
            break;
        case 'w':
            field.Size = Width::Wide;
            break;
        case 'I':
            if (!WindowsPrefixLength(at))
                return;
            field.Size = at[1] == '6' ? Width::Quad : at[1] == '3' ? Width::Default : Width::Native;
            at += WindowsPrefixLength(at) - 1;
            break;
        case 'F':
            // Far pointers are long gone; elsewhere this is the conversion of a real number.
            if (!at[1] || !std::strchr("diuxXobBeEfgGaAsScCpn", at[1]))
                return;
            break;
        case 'N':
            break;
        default:
            return;
        }
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

inline void MakeCapital(std::string& number)
{
    for (char& ch : number)
        if (ch >= 'a' && ch <= 'z')
            ch = static_cast<char>(ch - 'a' + 'A');
}

/// What stands before a number's digits for its sign.
inline std::string_view SignText(const PrintfField& field, bool isNegative)
{
    return isNegative ? "-" : field.HasPlus ? "+" : field.HasSpace ? " " : "";
}

/// Appends a number, filled up to the field's width: with zeros behind the prefix, or with spaces.
inline void AppendNumber(std::string& output, const PrintfField& field, std::string_view prefix,
                         std::string_view digits, bool isZeroFilled)
{
    const std::size_t length = prefix.size() + digits.size();
    const std::size_t width = static_cast<std::size_t>(field.MinWidth);
    const std::size_t padding = width > length ? width - length : 0;
    isZeroFilled = isZeroFilled && !field.IsLeft;
    if (!field.IsLeft && !isZeroFilled)
        output.append(padding, ' ');
    output.append(prefix);
    if (isZeroFilled)
        output.append(padding, '0');
    output.append(digits);
    if (field.IsLeft)
        output.append(padding, ' ');
}

/// The low bits that count, widened to 64; Default and Long are 32 bits.
inline std::uint64_t WidenInteger(const PrintfField& field, std::uint64_t bits)
{
    using Width = PrintfField::Width;
    int count = 32;
    if (field.Size == Width::Char || field.Size == Width::Short)
        count = field.Size == Width::Char ? 8 : 16;
    else if (field.Size == Width::Quad || field.Size == Width::Extended)
        count = 64;
    else if (field.Size == Width::Native)
        count = 8 * static_cast<int>(sizeof(void*));
    const int unused = 64 - count;
    bits <<= unused;
    return field.IsSigned() ? static_cast<std::uint64_t>(static_cast<std::int64_t>(bits) >> unused)
                            : bits >> unused;
}

/// The digits of an integer without its sign, as many as the precision asks for; none of 0 when that is 0.
inline std::string IntegerDigits(const PrintfField& field, std::uint64_t magnitude)
{
    char text[64];
    const int base = field.IsOneOf("xX") ? 16 : field.IsOneOf("bB") ? 2 : field.Type == 'o' ? 8 : 10;
    char* const end = std::to_chars(text, text + sizeof text, magnitude, base).ptr;
    std::string digits(text, field.Precision == 0 && magnitude == 0 ? text : end);
    if (field.Type == 'X')
        MakeCapital(digits);
    if (field.Precision > static_cast<int>(digits.size()))
        digits.insert(0, static_cast<std::size_t>(field.Precision) - digits.size(), '0');
    if (field.IsAlternate && field.Type == 'o' && !digits.starts_with('0'))
        digits.insert(0, 1, '0');
    return digits;
}

/// Appends an integer of which the field's size says how many low bits count.
inline void AppendInteger(std::string& output, const PrintfField& field, std::uint64_t bits)
{
    bits = WidenInteger(field, bits);
    const bool isNegative = field.IsSigned() && static_cast<std::int64_t>(bits) < 0;
    std::string prefix;
    if (field.IsSigned())
        prefix = SignText(field, isNegative);
    else if (field.IsAlternate && bits != 0 && field.IsOneOf("xXbB"))
        prefix = {'0', field.Type};
    AppendNumber(output, field, prefix, IntegerDigits(field, isNegative ? 0 - bits : bits),
                 field.HasZero && field.Precision < 0);
}

/// Appends an address: all its digits in capital hexadecimal.
inline void AppendPointer(std::string& output, PrintfField field, const void* pointer)
{
    field.Type = 'X';
    field.Size = PrintfField::Width::Native;
    field.Precision = 2 * static_cast<int>(sizeof pointer);
    AppendInteger(output, field, reinterpret_cast<std::uintptr_t>(pointer));
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
