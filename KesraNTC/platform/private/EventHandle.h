#pragma once

#include "KesraNTC/platform/Platform.h"

namespace Kesra
{

/// An unnamed event that closes itself.
class EventHandle
{
public:
    enum Kind { AutoReset, ManualReset };

    /// Not signalled. The handle is null when the system cannot make an event.
    explicit EventHandle(Kind kind) : Handle(CreateEventA(nullptr, kind == ManualReset, FALSE, nullptr)) {}
    ~EventHandle()
    {
        if (Handle != nullptr)
            CloseHandle(Handle);
    }
    EventHandle(const EventHandle&) = delete;
    EventHandle& operator=(const EventHandle&) = delete;

    HANDLE Get() const { return Handle; }
    void Set() const { SetEvent(Handle); }
    void Reset() const { ResetEvent(Handle); }
    /// True when the event was signalled within so many milliseconds.
    bool Wait(DWORD milliseconds = INFINITE) const
    {
        return WaitForSingleObject(Handle, milliseconds) == WAIT_OBJECT_0;
    }

private:
    HANDLE Handle;
};

} // namespace Kesra
