#include "KesraNTC/base/CLock.h"

#include "KesraNTC/base/BoundedFormat.h"
#include "KesraNTC/base/CDebug.h"

#include <cstdarg>

namespace
{

constexpr std::size_t TextRoom = 512;

} // namespace

void CLock::Enter(const char* format, ...)
{
    Enter();
    CDebug::AppendDebugMsg("Enter ");
    char text[TextRoom];
    std::va_list arguments;
    va_start(arguments, format);
    Kesra::BoundedFormat(text, format, arguments);
    va_end(arguments);
    CDebug::AppendDebugMsg("%s", text);
}

void CLock::Leave(const char* format, ...)
{
    Leave();
    CDebug::AppendDebugMsg("Leave ");
    char text[TextRoom];
    std::va_list arguments;
    va_start(arguments, format);
    Kesra::BoundedFormat(text, format, arguments);
    va_end(arguments);
    CDebug::AppendDebugMsg("%s", text);
}
