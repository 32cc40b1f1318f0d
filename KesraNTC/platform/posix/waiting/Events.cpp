#include "KesraNTC/platform/posix/waiting/Events.h"

#include "KesraNTC/platform/posix/waiting/private/Deadline.h"
#include "KesraNTC/platform/posix/waiting/private/WaitQueue.h"

#include <new>

namespace Kesra
{
namespace
{

/// One thread's wait for any of at most `Capacity` events. The usual waits are small, and so is their share
/// of the stack.
template <DWORD Capacity> class Wait
{
public:
    Wait(EventObject* const* events, DWORD count)
    {
        Own.Prepare();
        for (; Count < count && Outcome.Get() == WaitOutcome::Open; ++Count) {
            WaitEntry& entry = Entries[Count];
            entry.Event = events[Count];
            entry.Outcome = &Outcome;
            entry.Index = Count;
            WaitQueue::Of(entry.Event).Enter(entry);
        }
    }
    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;

    ~Wait()
    {
        for (DWORD i = 0; i < Count; ++i)
            WaitQueue::Of(Entries[i].Event).Leave(Entries[i]);
        Own.EndWait();
    }

    DWORD Run(const Deadline& deadline)
    {
        while (Outcome.Get() == WaitOutcome::Open) {
            Rest(deadline);
            if (deadline.HasPassed() && Outcome.Decide(WAIT_TIMEOUT))
                break;
        }
        return Outcome.Get();
    }

private:
    /// Sleeps until woken or until one of the operations behind the events can go on.
    void Rest(const Deadline& deadline)
    {
        PendingOperation* operations[Capacity];
        pollfd descriptors[Capacity + 1];
        std::size_t pending = 0;
        for (DWORD i = 0; i < Count; ++i) {
            EventObject* event = Entries[i].Event;
            operations[pending] = WaitQueue::Of(event).PinOperation(event, descriptors[pending]);
            if (operations[pending] != nullptr)
                ++pending;
        }
        if (pending == 0) {
            Own.Sleep(deadline.Absolute());
            return;
        }
        Own.Poll(descriptors, pending, deadline.Absolute());
        for (std::size_t i = 0; i < pending; ++i) {
            if (descriptors[i].revents != 0)
                operations[i]->Advance();
            operations[i]->Unpin();
        }
    }

    Waker& Own = Waker::Current();
    WaitOutcome Outcome{Own};
    DWORD Count = 0;
    WaitEntry Entries[Capacity];
};

/// Without waiting: what the operating system would have completed by now.
void AdvanceOperations(EventObject* const* events, DWORD count)
{
    for (DWORD i = 0; i < count; ++i) {
        pollfd descriptor;
        PendingOperation* operation = WaitQueue::Of(events[i]).PinOperation(events[i], descriptor);
        if (operation != nullptr) {
            operation->Advance();
            operation->Unpin();
        }
    }
}

bool ConsumeFirst(EventObject* const* events, DWORD count, DWORD& index)
{
    for (index = 0; index < count; ++index)
        if (events[index]->Consume())
            return true;
    return false;
}

constexpr DWORD UsualCount = 4;

DWORD WaitForAny(EventObject* const* events, DWORD count, DWORD milliseconds)
{
    DWORD index = 0;
    if (ConsumeFirst(events, count, index))
        return WAIT_OBJECT_0 + index;
    if (milliseconds != 0) {
        const Deadline deadline(milliseconds);
        return count <= UsualCount ? Wait<UsualCount>(events, count).Run(deadline)
                                   : Wait<MAXIMUM_WAIT_OBJECTS>(events, count).Run(deadline);
    }
    AdvanceOperations(events, count);
    return ConsumeFirst(events, count, index) ? WAIT_OBJECT_0 + index : WAIT_TIMEOUT;
}

EventObject* FindEvent(HANDLE handle)
{
    auto* event = FromHandle<EventObject>(handle);
    if (event == nullptr)
        SetLastError(ERROR_INVALID_HANDLE);
    return event;
}

} // namespace
} // namespace Kesra

using Kesra::EventObject;

HANDLE CreateEventA(SECURITY_ATTRIBUTES* security, BOOL manualReset, BOOL initialState, const char* name)
{
    if (security != nullptr || name != nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto* event = new (std::nothrow) EventObject(manualReset != FALSE, initialState != FALSE);
    if (event == nullptr)
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return Kesra::ToHandle(event);
}

BOOL SetEvent(HANDLE event)
{
    EventObject* object = Kesra::FindEvent(event);
    if (object == nullptr)
        return FALSE;
    object->Set();
    return TRUE;
}

BOOL ResetEvent(HANDLE event)
{
    EventObject* object = Kesra::FindEvent(event);
    if (object == nullptr)
        return FALSE;
    object->Reset();
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE event, DWORD milliseconds)
{
    EventObject* object = Kesra::FindEvent(event);
    return object != nullptr ? Kesra::WaitForAny(&object, 1, milliseconds) : WAIT_FAILED;
}

DWORD WaitForMultipleObjects(DWORD count, const HANDLE* events, BOOL waitAll, DWORD milliseconds)
{
    if (count == 0 || count > MAXIMUM_WAIT_OBJECTS || waitAll != FALSE) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    EventObject* objects[MAXIMUM_WAIT_OBJECTS];
    for (DWORD i = 0; i < count; ++i) {
        objects[i] = Kesra::FindEvent(events[i]);
        if (objects[i] == nullptr)
            return WAIT_FAILED;
    }
    return Kesra::WaitForAny(objects, count, milliseconds);
}
