#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/posix/Handles.h"

constexpr int THREAD_PRIORITY_LOWEST = -2;
constexpr int THREAD_PRIORITY_BELOW_NORMAL = -1;
constexpr int THREAD_PRIORITY_NORMAL = 0;
constexpr int THREAD_PRIORITY_ABOVE_NORMAL = 1;
constexpr int THREAD_PRIORITY_HIGHEST = 2;

/// Starts a thread that frees itself when `start` returns; a stack size of 0 means the default, one that is
/// too small the smallest. The result is -1 on failure (see errno) and serves for that test only.
KESRANTC_API std::uintptr_t _beginthread(void (*start)(void*), unsigned stackSize, void* argument);

/// Stands for the calling thread whoever uses it; needs no CloseHandle.
KESRANTC_API HANDLE GetCurrentThread();

KESRANTC_API DWORD GetCurrentThreadId();

/// Takes the pseudo handle of GetCurrentThread only. Without the privilege to raise a thread the priority
/// stays as it is and the call still succeeds.
KESRANTC_API BOOL SetThreadPriority(HANDLE thread, int priority);
