#include "KesraNTC/platform/posix/waiting/private/WaitQueue.h"

#include <array>
#include <mutex>

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
    const std::lock_guard guard(Lock);
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
    const std::lock_guard guard(Lock);
    if (entry.MayBeQueued()) {
        Unlink(entry);
        entry.MarkQueued(false);
    }
}

void WaitQueue::Set(EventObject* event)
{
    WakeList wakes;
    const std::lock_guard guard(Lock);
    HandOver(event, wakes);
}

void WaitQueue::Reset(EventObject* event)
{
    const std::lock_guard guard(Lock);
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
    const std::lock_guard guard(Lock);
    if (event->Pending != nullptr)
        return false;
    event->Pending = operation;
    NotifySleepers(event);
    return true;
}

void WaitQueue::Detach(EventObject* event)
{
    const std::lock_guard guard(Lock);
    event->Pending = nullptr;
}

void WaitQueue::Alert(EventObject* event)
{
    const std::lock_guard guard(Lock);
    NotifySleepers(event);
}

void WaitQueue::NotifySleepers(const EventObject* event)
{
    for (WaitEntry* entry = FindEntry(event, First); entry != nullptr; entry = FindEntry(event, entry->Next))
        entry->Outcome->GetWaker().Notify();
}

PendingOperation* WaitQueue::PinOperation(EventObject* event, pollfd& descriptor)
{
    const std::lock_guard guard(Lock);
    return event->Pending != nullptr && event->Pending->Pin(descriptor) ? event->Pending : nullptr;
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
