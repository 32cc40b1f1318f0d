#pragma once

#include "KesraNTC/platform/posix/waiting/private/KernelObject.h"

namespace Kesra
{

class PendingOperation;

/// An event: one atomic word. Only when somebody sleeps on it do setters look further (see WaitQueue.h).
class EventObject final : public KernelObject
{
public:
    static constexpr Type ObjectKind = Type::Event;

    EventObject(bool manualReset, bool initialState)
        : KernelObject(ObjectKind), ManualReset(manualReset), State(initialState ? Signaled : 0)
    {
    }

    /// Hands the signal to a sleeper or leaves it for the next waiter. The event may be gone as soon as it is
    /// set, since whoever waited for it may close it: nothing here touches it after that point.
    void Set()
    {
        std::uint32_t old = State.load(std::memory_order_relaxed);
        do {
            if ((old & HasSleepers) != 0) {
                SetWithSleepers();
                return;
            }
        } while (!State.compare_exchange_weak(old, Signaled, std::memory_order_acq_rel,
                                              std::memory_order_relaxed));
    }

    void Reset()
    {
        // A thread on its way to sleep may hold the signal for a moment and give it back.
        if ((State.fetch_and(~Signaled, std::memory_order_acq_rel) & HasSleepers) != 0)
            ResetWithSleepers();
    }

    /// True when the event was set; an auto-reset event is reset by that.
    bool Consume()
    {
        if ((State.load(std::memory_order_acquire) & Signaled) == 0)
            return false;
        if (ManualReset)
            return true;
        return (State.fetch_and(~Signaled, std::memory_order_acq_rel) & Signaled) != 0;
    }

private:
    friend class WaitQueue;
    friend class WaitQueueProbe;

    static constexpr std::uint32_t Signaled = 1;
    static constexpr std::uint32_t HasSleepers = 2;

    void SetWithSleepers();
    void ResetWithSleepers();

    const bool ManualReset;
    // HasSleepers stands exactly while the wait queue holds an entry of this event.
    std::atomic<std::uint32_t> State;
    // The overlapped operation that will set this event; guarded by the wait queue.
    PendingOperation* Pending = nullptr;
};

} // namespace Kesra
