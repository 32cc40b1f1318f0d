#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/Platform.h"

/// A lock that the thread which holds it may enter again; it is free after as many Leave as Enter.
class KESRANTC_API CLock
{
public:
    /// A free lock.
    CLock() { InitializeCriticalSection(&Section); }
    /// A copy is a free lock of its own; assigning changes nothing.
    CLock(const CLock&) : CLock() {}
    CLock& operator=(const CLock&) { return *this; }
    ~CLock() { DeleteCriticalSection(&Section); }

    /// Waits until no other thread holds the lock and holds it.
    void Enter() { EnterCriticalSection(&Section); }
    /// Undoes one Enter of this thread.
    void Leave() { LeaveCriticalSection(&Section); }

    /// Enters, then logs "Enter " and the text, formatted as CString::Format does and cut to 511 bytes, as
    /// two lines.
    void Enter(const char* format, ...) KESRANTC_PRINTF(2, 3);
    /// Leaves, then logs "Leave " and the text in the same way, outside the lock.
    void Leave(const char* format, ...) KESRANTC_PRINTF(2, 3);

private:
    CRITICAL_SECTION Section;
};

namespace Kesra
{

/// Holds a CLock for as long as it lives.
class [[nodiscard]] Locked
{
public:
    explicit Locked(CLock& lock) : Lock(lock) { Lock.Enter(); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
    ~Locked() { Lock.Leave(); }

private:
    CLock& Lock;
};

} // namespace Kesra
