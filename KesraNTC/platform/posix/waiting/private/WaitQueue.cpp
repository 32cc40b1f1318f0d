#include "KesraNTC/platform/posix/waiting/private/WaitQueue.h"

#include <array>

namespace Kesra
{

/// Threads to wake once the lock is left, so that they do not run straight into it.
class WaitQueue::WakeList
{
public:
    ~WakeList()
    {
        for (std::size_t i = 0; i < Count; ++i) {
            Wakers[i]->Notify();
            Wakers[i]->Release();
        }
    }

    void Add(Waker& waker)
    {
        // A thread that completes its own operation need not be woken.
        if (waker.IsCurrent())
            return;
        if (Count == Wakers.size()) {
            waker.Notify();
            return;
        }
        waker.AddRef();
        Wakers[Count++] = &waker;
    }

private:
    std::array<Waker*, 8> Wakers;
    std::size_t Count = 0;
};

WaitQueue& WaitQueue::Of(const EventObject* event)
{
    static std::array<WaitQueue, 256> queues;
    return queues[(reinterpret_cast<std::uintptr_t>(event) / alignof(std::max_align_t)) % queues.size()];
}

void WaitQueue::Enter(WaitEntry& entry)
{
    WakeList wakes;
    const LockGuard guard(Lock);
    Append(entry);
    entry.MarkQueued(true);
    EventObject* event = entry.Event;
    event->State.fetch_or(EventObject::HasSleepers, std::memory_order_acq_rel);
    if (!event->Consume())
        return;
    if (!entry.Outcome->Decide(entry.Index)) {
        // Another event was quicker: this signal is somebody else's. A manual-reset event still has it.
        if (!event->ManualReset)
            HandOver(event, wakes);
        return;
    }
    Unlink(entry);
    entry.MarkQueued(false);
}

void WaitQueue::Leave(WaitEntry& entry)
{
    if (!entry.MayBeQueued())
        return;
    const LockGuard guard(Lock);
    if (entry.MayBeQueued()) {
        Unlink(entry);
        entry.MarkQueued(false);
    }
}

void WaitQueue::Set(EventObject* event)
{
    WakeList wakes;
    const LockGuard guard(Lock);
    HandOver(event, wakes);
}

void WaitQueue::Reset(EventObject* event)
{
    const LockGuard guard(Lock);
    event->State.fetch_and(~EventObject::Signaled, std::memory_order_acq_rel);
}

void WaitQueue::HandOver(EventObject* event, WakeList& wakes)
{
    const bool manualReset = event->ManualReset;
    WaitEntry* released = nullptr;
    WaitEntry* next = nullptr;
    for (WaitEntry* entry = FindEntry(event, First); entry != nullptr; entry = next) {
        next = FindEntry(event, entry->Next);
        if (!entry->Outcome->Decide(entry->Index))
            continue;
        wakes.Add(entry->Outcome->GetWaker());
        Unlink(*entry);
        entry->Next = released;
        released = entry;
        if (!manualReset)
            break;
    }
    if (manualReset || released == nullptr)
        event->State.fetch_or(EventObject::Signaled, std::memory_order_acq_rel);
    for (WaitEntry* entry = released; entry != nullptr; entry = next) {
        next = entry->Next;
        entry->MarkQueued(false);
    }
}

bool WaitQueue::Attach(EventObject* event, PendingOperation* operation)
{
    const LockGuard guard(Lock);
    if (OperationOf(event) != nullptr)
        return false;
    OperationOf(event) = operation;
    NotifySleepers(event);
    return true;
}

void WaitQueue::Detach(EventObject* event)
{
    const LockGuard guard(Lock);
    OperationOf(event) = nullptr;
}

void WaitQueue::Alert(EventObject* event)
{
    const LockGuard guard(Lock);
    NotifySleepers(event);
}

void WaitQueue::NotifySleepers(const EventObject* event)
{
    for (WaitEntry* entry = FindEntry(event, First); entry != nullptr; entry = FindEntry(event, entry->Next))
        entry->Outcome->GetWaker().Notify();
}

PendingOperation* WaitQueue::PinOperation(EventObject* event, pollfd& descriptor)
{
    const LockGuard guard(Lock);
    PendingOperation* const operation = OperationOf(event);
    return operation != nullptr && operation->Pin(descriptor) ? operation : nullptr;
}

void WaitQueue::Append(WaitEntry& entry)
{
    entry.Next = nullptr;
    entry.Previous = Last;
    (Last != nullptr ? Last->Next : First) = &entry;
    Last = &entry;
}

void WaitQueue::Unlink(WaitEntry& entry)
{
    (entry.Previous != nullptr ? entry.Previous->Next : First) = entry.Next;
    (entry.Next != nullptr ? entry.Next->Previous : Last) = entry.Previous;
    if (FindEntry(entry.Event, First) == nullptr)
        entry.Event->State.fetch_and(~EventObject::HasSleepers, std::memory_order_acq_rel);
}

WaitEntry* WaitQueue::FindEntry(const EventObject* event, WaitEntry* from) const
{
    while (from != nullptr && from->Event != event)
        from = from->Next;
    return from;
}

void EventObject::SetWithSleepers()
{
    WaitQueue::Of(this).Set(this);
}

void EventObject::ResetWithSleepers()
{
    WaitQueue::Of(this).Reset(this);
}

} // namespace Kesra
