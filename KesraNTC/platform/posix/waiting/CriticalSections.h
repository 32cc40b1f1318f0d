#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/posix/Types.h"

/// A lock that its owner may enter again. The members belong to the functions below.
struct CRITICAL_SECTION {
    std::uint32_t LockState;
    std::uint32_t RecursionCount;
    std::uintptr_t OwningThread;
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

KESRANTC_API void InitializeCriticalSection(CRITICAL_SECTION* section);
KESRANTC_API void DeleteCriticalSection(CRITICAL_SECTION* section);

/// Waits until no other thread is inside, spinning for a moment before it sleeps.
KESRANTC_API void EnterCriticalSection(CRITICAL_SECTION* section);

/// To be called by the owner, once for every time it entered.
KESRANTC_API void LeaveCriticalSection(CRITICAL_SECTION* section);
