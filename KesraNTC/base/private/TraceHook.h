#pragma once

#include <cstdarg>

namespace Kesra
{

/// Passes a message of TRACE to the hook that CDebug::SetTraceHook has set; without one it is not even
/// formatted.
void PassToTraceHook(const char* format, std::va_list arguments);

} // namespace Kesra
