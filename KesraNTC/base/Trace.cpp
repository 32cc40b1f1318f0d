#include "KesraNTC/base/Trace.h"

#include "KesraNTC/base/private/TraceHook.h"

#include <cstdarg>

void TRACE(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    Kesra::PassToTraceHook(format, arguments);
    va_end(arguments);
}
