#pragma once

#include "KesraNTC/platform/Export.h"

/// Takes a printf-style message and discards it. What is passed here never reaches the log; a debugger can
/// break on it. Safe from any thread.
KESRANTC_API void TRACE(const char* format, ...);
