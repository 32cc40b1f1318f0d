#pragma once

#include "KesraNTC/platform/Export.h"

/// Takes a printf-style message, which never reaches the log, and discards it unless a hook wants it (see
/// CDebug::SetTraceHook). A debugger can break on it. Safe from any thread.
KESRANTC_API void TRACE(const char* format, ...);
