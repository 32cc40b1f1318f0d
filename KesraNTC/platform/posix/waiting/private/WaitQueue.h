#pragma once

#include "KesraNTC/platform/posix/waiting/private/EventObject.h"
#include "KesraNTC/platform/posix/waiting/private/Futex.h"
#include "KesraNTC/platform/posix/waiting/private/Waker.h"

namespace Kesra
{

/// An overlapped operation that a thread waiting for its event drives forward.
class PendingOperation
{
public:
    /// Fills in the descriptor and what to wait for, and keeps it open until Unpin. False when there is
    /// nothing to wait for any more. Called under the lock of the event's wait queue.
    virtual bool Pin(pollfd& descriptor) = 0;
    virtual void Unpin() = 0;

    /// Does what can be done without waiting; sets the event if that completes the operation.
    virtual void Advance() = 0;

protected:
    ~PendingOperation() = default;
};

/// Which of its events has released a waiting thread. Setters of several events may try at once; one wins.
class WaitOutcome
{
public:
    static constexpr DWORD Open = 0xFFFFFFFF;

    explicit WaitOutcome(Waker& waker) : Owner(waker) {}

    bool Decide(DWORD index)
    {
        DWORD expected = Open;
        return Index.compare_exchange_strong(expected, index, std::memory_order_acq_rel);
    }
    DWORD Get() const { return Index.load(std::memory_order_acquire); }
    Waker& GetWaker() const { return Owner; }

private:
    std::atomic<DWORD> Index{Open};
    Waker& Owner;
};

/// A waiting thread's entry for one of its events.
struct WaitEntry {
    EventObject* Event;
    WaitOutcome* Outcome;
    DWORD Index;
    WaitEntry* Previous;
    WaitEntry* Next;
    // Cleared under the queue's lock as the last thing a setter does with the entry and its event: a waiter
    // that finds it cleared may go without taking the lock.
    bool IsQueued;

    bool MayBeQueued() { return std::atomic_ref(IsQueued).load(std::memory_order_acquire); }
    void MarkQueued(bool queued) { std::atomic_ref(IsQueued).store(queued, std::memory_order_release); }
};

/// Where threads sleep on events. There is a fixed number of queues and every event belongs to one of them by
/// its address, so that a setter which has let its waiter go touches nothing that the waiter may have freed.
class alignas(64) WaitQueue
{
public:
    static WaitQueue& Of(const EventObject* event);

    /// Queues the entry, unless its event turns out to be set and decides the outcome at once.
    void Enter(WaitEntry& entry);

    /// Takes the entry out if no setter has done so.
    void Leave(WaitEntry& entry);

    void Set(EventObject* event);
    void Reset(EventObject* event);

    /// Binds the operation that is going to set the event and tells the sleepers. An event serves one
    /// operation at a time: false when it has one.
    bool Attach(EventObject* event, PendingOperation* operation);
    void Detach(EventObject* event);
    /// Lets the sleepers look again at what the event's operation waits for.
    void Alert(EventObject* event);

    /// The event's operation, pinned, or null.
    PendingOperation* PinOperation(EventObject* event, pollfd& descriptor);

private:
    // Holds a queue still, for tests of what threads do that meet at its lock.
    friend class WaitQueueProbe;
    class WakeList;

    PendingOperation*& OperationOf(EventObject* event) KESRANTC_LOCKING(requires_capability(Lock))
    {
        return event->Pending;
    }
    void Append(WaitEntry& entry) KESRANTC_LOCKING(requires_capability(Lock));
    void Unlink(WaitEntry& entry) KESRANTC_LOCKING(requires_capability(Lock));
    WaitEntry* FindEntry(const EventObject* event, WaitEntry* from) const
        KESRANTC_LOCKING(requires_capability(Lock));
    void HandOver(EventObject* event, WakeList& wakes) KESRANTC_LOCKING(requires_capability(Lock));
    void NotifySleepers(const EventObject* event) KESRANTC_LOCKING(requires_capability(Lock));

    FutexLock Lock;
    WaitEntry* First KESRANTC_LOCKING(guarded_by(Lock)) = nullptr;
    WaitEntry* Last KESRANTC_LOCKING(guarded_by(Lock)) = nullptr;
};

} // namespace Kesra
