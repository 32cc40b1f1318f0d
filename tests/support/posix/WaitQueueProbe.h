#pragma once

#include "KesraNTC/platform/posix/waiting/private/WaitQueue.h"

namespace Kesra
{

/// Stands in the place of a thread that has the lock of an event's queue.
class WaitQueueProbe
{
public:
    explicit WaitQueueProbe(EventObject& event) : Event(event), Queue(WaitQueue::Of(&event)) {}

    void Lock() KESRANTC_LOCKING(acquire_capability(Queue.Lock)) { Queue.Lock.lock(); }
    void Unlock() KESRANTC_LOCKING(release_capability(Queue.Lock)) { Queue.Lock.unlock(); }
    /// Whether another thread waits for the lock.
    bool IsAwaited() { return Queue.Lock.IsContended(); }
    /// Whether a thread sleeps on the event or is about to.
    bool HasSleepers() { return (Event.State & EventObject::HasSleepers) != 0; }
    void GiveSignalBack() { Event.State.fetch_or(EventObject::Signaled); }

private:
    EventObject& Event;
    WaitQueue& Queue;
};

} // namespace Kesra
