#include "KesraNTC/base/CString.h"
#include "KesraNTC/base/private/CharacterScan.h"
#include "KesraNTC/platform/private/PrintfField.h"
#include "KesraNTC/platform/private/PrintfReal.h"

#include <climits>
#include <cstring>
#include <new>

namespace
{
using Kesra::PrintfField;

// Prints a format field by field into storage that grows, so that no count can be too small.
class Formatter
{
public:
    explicit Formatter(va_list arguments) { va_copy(Arguments, arguments); }
    ~Formatter() { va_end(Arguments); }
    Formatter(const Formatter&) = delete;
    Formatter& operator=(const Formatter&) = delete;

    void Print(const char* format);
    const std::string& GetOutput() const { return Output; }

private:
    void PrintField(const PrintfField& field);
    void PrintCharacter(const PrintfField& field);
    std::uint64_t NextInteger(PrintfField::Width size);

    va_list Arguments;
    std::string Output;
};

void Formatter::Print(const char* format)
{
    while (*format) {
        if (*format != '%') {
            // The second byte of a character is never a percent sign.
            const bool isDouble = Kesra::IsLeadByte(*format) && format[1];
            Output.append(format, isDouble ? 2 : 1);
            format += isDouble ? 2 : 1;
            continue;
        }
        ++format;
        PrintField(Kesra::ReadPrintfField(format, [this] { return va_arg(Arguments, int); }));
    }
}

void Formatter::PrintField(const PrintfField& field)
{
    if (field.IsInteger())
        Kesra::AppendInteger(Output, field, NextInteger(field.Size));
    else if (field.IsReal() && field.Size == PrintfField::Width::Extended)
        Kesra::AppendReal(Output, field, va_arg(Arguments, long double));
    else if (field.IsReal())
        Kesra::AppendReal(Output, field, va_arg(Arguments, double));
    else if (field.IsText() && field.IsWide())
        Kesra::AppendWideText(Output, field, static_cast<LPCWSTR>(va_arg(Arguments, const void*)));
    else if (field.IsText())
        Kesra::AppendText(Output, field, va_arg(Arguments, const char*));
    else if (field.IsCharacter())
        PrintCharacter(field);
    else if (field.Type == 'p')
        Kesra::AppendPointer(Output, field, va_arg(Arguments, const void*));
    else if (field.Type == 'n')
        static_cast<void>(va_arg(Arguments, void*));
    else if (field.Type)
        Output += field.Type;
}

void Formatter::PrintCharacter(const PrintfField& field)
{
    const int character = va_arg(Arguments, int);
    const WCHAR wide = static_cast<WCHAR>(character);
    const char narrow = static_cast<char>(character);
    if (field.IsWide())
        Kesra::AppendWide(Output, field, &wide, 1);
    else
        Kesra::AppendPadded(Output, field, {&narrow, 1});
}

std::uint64_t Formatter::NextInteger(PrintfField::Width size)
{
    switch (size) {
    case PrintfField::Width::Quad: // NOLINT(bugprone-branch-clone): the types differ, not everywhere in size
    case PrintfField::Width::Extended:
        return static_cast<std::uint64_t>(va_arg(Arguments, long long));
    case PrintfField::Width::Native:
        return static_cast<std::uint64_t>(va_arg(Arguments, std::intptr_t));
    case PrintfField::Width::Long:
        return static_cast<std::uint64_t>(va_arg(Arguments, long));
    default:
        return static_cast<std::uint64_t>(va_arg(Arguments, int));
    }
}
} // namespace

void CString::Format(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    FormatV(format, arguments);
    va_end(arguments);
}

void CString::FormatV(const char* format, va_list arguments)
{
    Formatter formatter(arguments);
    formatter.Print(format ? format : "");
    const std::size_t length = std::strlen(formatter.GetOutput().c_str());
    if (length > INT_MAX / 2)
        throw std::bad_alloc();
    Assign(formatter.GetOutput().c_str(), static_cast<int>(length));
}

void CString::FormatMessageA(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    char* message = nullptr;
    const DWORD length =
        ::FormatMessageA(FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ALLOCATE_BUFFER, format ? format : "", 0,
                         0, reinterpret_cast<LPSTR>(&message), 0, &arguments);
    va_end(arguments);
    if (length == 0 || !message)
        return;
    *this = message;
    LocalFree(message);
}
