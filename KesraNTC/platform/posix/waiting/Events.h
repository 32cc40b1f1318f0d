#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/posix/Handles.h"

constexpr DWORD INFINITE = 0xFFFFFFFF;
constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_TIMEOUT = 258;
constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;

/// A new event, null on failure. An auto-reset event (`manualReset` FALSE) lets one wait through and is reset
/// by it; a manual-reset event stays set. Security and name must be null.
KESRANTC_API HANDLE CreateEventA(SECURITY_ATTRIBUTES* security, BOOL manualReset, BOOL initialState,
                                 const char* name);

KESRANTC_API BOOL SetEvent(HANDLE event);
KESRANTC_API BOOL ResetEvent(HANDLE event);

/// Waits until the event is set: WAIT_OBJECT_0, WAIT_TIMEOUT after that many milliseconds (INFINITE: never),
/// or WAIT_FAILED. Overlapped operations that signal the event proceed on the waiting thread.
KESRANTC_API DWORD WaitForSingleObject(HANDLE event, DWORD milliseconds);

/// Waits until one of 1 to MAXIMUM_WAIT_OBJECTS events is set and returns WAIT_OBJECT_0 plus its index, the
/// lowest if several are. Waiting for all of them (`waitAll` TRUE) is not offered and fails.
KESRANTC_API DWORD WaitForMultipleObjects(DWORD count, const HANDLE* events, BOOL waitAll,
                                          DWORD milliseconds);
