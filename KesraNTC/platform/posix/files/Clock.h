#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/posix/Types.h"

/// Milliseconds of a steady clock; wraps after 49.7 days.
KESRANTC_API DWORD GetTickCount();

/// The current date and time (UTC).
KESRANTC_API void GetSystemTime(SYSTEMTIME* time);

/// Lets the calling thread rest for that many milliseconds.
KESRANTC_API void Sleep(DWORD milliseconds);
