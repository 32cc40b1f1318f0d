#include "KesraNTC/platform/posix/text/Messages.h"

#include "KesraNTC/platform/posix/Handles.h"
#include "KesraNTC/platform/private/PrintfField.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace
{
using Kesra::PrintfField;

constexpr unsigned LastInsert = 99;

// Gives the inserts in any order, although the argument list can be read only once and forward.
class Inserts
{
public:
    explicit Inserts(va_list* arguments) : Arguments(arguments) {}

    bool Has(unsigned number) const { return Arguments && number >= 1 && number <= LastInsert; }
    std::uintptr_t Get(unsigned number)
    {
        while (Count < number)
            Values[Count++] = va_arg(*Arguments, std::uintptr_t);
        return Values[number - 1];
    }

private:
    va_list* Arguments;
    std::uintptr_t Values[LastInsert] = {};
    unsigned Count = 0;
};

class Message
{
public:
    Message(const char* format, va_list* arguments) : At(format), Arguments(arguments) {}

    bool Format();
    const std::string& GetText() const { return Text; }

private:
    bool FormatEscape();
    bool FormatInsert();
    bool Append(const PrintfField& field, std::uintptr_t value);

    const char* At;
    Inserts Arguments;
    std::string Text;
};

bool Message::Format()
{
    while (*At) {
        const char ch = *At++;
        if (ch == '%') {
            // %0 ends the message.
            if (*At == '0')
                return true;
            if (!FormatEscape())
                return false;
        } else if (ch == '\r' || ch == '\n') {
            At += ch == '\r' && *At == '\n';
            Text += "\r\n";
        } else {
            Text += ch;
        }
    }
    return true;
}

bool Message::FormatEscape()
{
    if (*At >= '1' && *At <= '9')
        return FormatInsert();
    const char ch = *At;
    if (!ch)
        return false;
    ++At;
    if (ch == 'n')
        Text += "\r\n";
    else if (ch == 'r')
        Text += '\r';
    else if (ch == 't')
        Text += '\t';
    else
        Text += ch;
    return true;
}

// An insert number of one or two digits and perhaps a printf conversion between exclamation marks, without
// its percent sign. Each * in it takes one insert more, and the value comes after them.
bool Message::FormatInsert()
{
    unsigned number = static_cast<unsigned>(*At++ - '0');
    if (*At >= '0' && *At <= '9')
        number = number * 10 + static_cast<unsigned>(*At++ - '0');
    std::string conversion = "s";
    if (*At == '!') {
        const char* end = std::strchr(At + 1, '!');
        if (!end)
            return false;
        conversion.assign(At + 1, end);
        At = end + 1;
    }
    const char* at = conversion.c_str();
    const PrintfField field = Kesra::ReadPrintfField(
        at, [&] { return Arguments.Has(number) ? static_cast<int>(Arguments.Get(number++)) : 0; });
    return *at == '\0' && Arguments.Has(number) && Append(field, Arguments.Get(number));
}

bool Message::Append(const PrintfField& field, std::uintptr_t value)
{
    const WCHAR wide = static_cast<WCHAR>(value);
    const char narrow = static_cast<char>(value);
    if (field.IsInteger())
        Kesra::AppendInteger(Text, field, value);
    else if (field.IsText() && field.IsWide())
        Kesra::AppendWideText(Text, field, reinterpret_cast<LPCWSTR>(value));
    else if (field.IsText())
        Kesra::AppendText(Text, field, reinterpret_cast<const char*>(value));
    else if (field.IsCharacter() && field.IsWide())
        Kesra::AppendWide(Text, field, &wide, 1);
    else if (field.IsCharacter())
        Kesra::AppendPadded(Text, field, {&narrow, 1});
    else if (field.Type == 'p')
        Kesra::AppendPointer(Text, field, reinterpret_cast<const void*>(value));
    else
        return false;
    return true;
}

DWORD Fail(DWORD error)
{
    SetLastError(error);
    return 0;
}
} // namespace

DWORD FormatMessageA(DWORD flags, LPCVOID source, DWORD, DWORD, LPSTR buffer, DWORD minSize,
                     va_list* arguments)
{
    if (flags != (FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ALLOCATE_BUFFER) || !source || !buffer)
        return Fail(ERROR_INVALID_PARAMETER);
    char* memory = nullptr;
    std::memcpy(buffer, &memory, sizeof memory);
    Message message(static_cast<const char*>(source), arguments);
    if (!message.Format())
        return Fail(ERROR_INVALID_PARAMETER);
    const std::size_t size = message.GetText().size() + 1;
    if (size == 1)
        return Fail(ERROR_NO_WORK_DONE);
    memory = static_cast<char*>(std::malloc(size > minSize ? size : minSize));
    if (!memory)
        return Fail(ERROR_NOT_ENOUGH_MEMORY);
    std::memcpy(memory, message.GetText().c_str(), size);
    std::memcpy(buffer, &memory, sizeof memory);
    return static_cast<DWORD>(size - 1);
}

HLOCAL LocalFree(HLOCAL memory)
{
    std::free(memory);
    return nullptr;
}
