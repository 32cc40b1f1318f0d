#pragma once

#include "KesraNTC/platform/posix/Types.h"

#include <cerrno>
#include <ctime>

// File times count 100-nanosecond steps since 1 January 1601. Both calls return TRUE when they succeed.

/// Shifts a UTC file time by the offset from UTC that local time has at this moment.
BOOL FileTimeToLocalFileTime(const FILETIME* fileTime, FILETIME* localFileTime);

/// Breaks a file time into calendar fields; FALSE from 0x8000000000000000 on.
BOOL FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* systemTime);

/// Local calendar fields of a time, without the shared buffer of `localtime`. Returns 0, or EINVAL for a
/// negative time, whose fields are then all -1.
int localtime_s(std::tm* fields, const std::time_t* time);
