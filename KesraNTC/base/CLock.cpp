#include "KesraNTC/base/CLock.h"

#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/base/private/BoundedFormat.h"

#include <cstdarg>

namespace
{

constexpr std::size_t TextRoom = 512;

void LogText(const char* format, std::va_list arguments)
{
    char text[TextRoom];
    Kesra::BoundedFormat(text, format, arguments);
    CDebug::AppendDebugMsg("%s", text);
}

} // namespace

void CLock::Enter(const char* format, ...)
{
    Enter();
    CDebug::AppendDebugMsg("Enter ");
    std::va_list arguments;
    va_start(arguments, format);
    LogText(format, arguments);
    va_end(arguments);
}

void CLock::Leave(const char* format, ...)
{
    Leave();
    CDebug::AppendDebugMsg("Leave ");
    std::va_list arguments;
    va_start(arguments, format);
    LogText(format, arguments);
    va_end(arguments);
}
