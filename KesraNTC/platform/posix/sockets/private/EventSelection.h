#pragma once

#include "KesraNTC/platform/posix/sockets/NetworkEvents.h"
#include "KesraNTC/platform/posix/waiting/private/Futex.h"
#include "KesraNTC/platform/posix/waiting/private/WaitQueue.h"

namespace Kesra
{

class SocketSlot;

/// The beginning and the end of a socket's connection, and the event that is told of them, if any. Lives as
/// long as its socket's place; between its lock and those of the transfers its own comes first.
class EventSelection final : public PendingOperation
{
public:
    explicit EventSelection(SocketSlot& socket) : Socket(socket) {}

    bool Pin(pollfd& descriptor) override;
    void Unpin() override;
    void Advance() override;

    /// Tells this event of these network events; null and 0 for none. Returns 0 or the error.
    int Select(SOCKET handle, EventObject* event, long networkEvents);
    bool IsActive();

    /// What was recorded, which is forgotten; resets the event unless that is null.
    WSANETWORKEVENTS Take(EventObject* reset);

    /// An attempt is under way that the calling thread does not wait for.
    void BeginConnecting();
    void SetConnected();
    /// Whether there is or was an attempt that has not failed as far as is known.
    bool HasBegun();

    /// The socket is closed, or its place used again.
    void Clear();

private:
    enum class Phase { Unconnected, Connecting, Connected, Ended };

    void Observe() KESRANTC_LOCKING(requires_capability(Lock));
    void ObserveAttempt() KESRANTC_LOCKING(requires_capability(Lock));
    void ObserveEnd() KESRANTC_LOCKING(requires_capability(Lock));
    void Record(long networkEvent, int bit, int error) KESRANTC_LOCKING(requires_capability(Lock));
    void DropEvent() KESRANTC_LOCKING(requires_capability(Lock));
    void UpdateWatch() KESRANTC_LOCKING(requires_capability(Lock));

    static constexpr int NoWatch = -1;

    SocketSlot& Socket;
    FutexLock Lock;
    Phase State KESRANTC_LOCKING(guarded_by(Lock)) = Phase::Unconnected;
    // Kept by a reference, as its handle may be closed meanwhile.
    EventObject* Event KESRANTC_LOCKING(guarded_by(Lock)) = nullptr;
    long Wanted KESRANTC_LOCKING(guarded_by(Lock)) = 0;
    WSANETWORKEVENTS Recorded KESRANTC_LOCKING(guarded_by(Lock)){};
    // What to poll for, which may be nothing but the end; read under the lock of the event's wait queue.
    std::atomic<int> Watch{NoWatch};
};

} // namespace Kesra
