#pragma once

#include "KesraNTC/net/private/ByteBlocks.h"
#include "KesraNTC/net/private/LockRoles.h"
#include "KesraNTC/platform/private/EventHandle.h"

#include <atomic>

namespace Kesra
{

/// What became of bytes on their way out: how many the system has taken, and why there will be no more.
struct SendProgress {
    unsigned long Sent = 0;
    int Error = 0; ///< a Winsock number; 0 also when the outbox is full
};

/// What a connection has to send. Whoever comes tries the socket itself; what it does not take waits here, in
/// order, and leaves as an overlapped write of the receive thread: the system cancels the writes of a thread
/// that ends, and any other thread may. Under IoState::SendLock.
class Outbox
{
public:
    explicit Outbox(SOCKET socket) : Socket(socket) {}
    Outbox(const Outbox&) = delete;
    Outbox& operator=(const Outbox&) = delete;
    ~Outbox();

    /// Signalled when the outstanding write has ended, or when the receive thread has one to begin.
    const EventHandle& GetEvent() const { return Written; }

    /// Takes the bytes whole or not at all; false when they do not fit into the limit or sending has failed.
    bool Send(const char* data, unsigned long size, std::size_t limit, SendProgress& progress)
        KESRANTC_LOCKING(requires_capability(SendRole));
    /// Sends what the socket takes of what waits; the receive thread begins a write for the rest, others
    /// leave that to it. False when sending has failed, then and ever after.
    bool Advance(SendProgress& progress, bool isReceiveThread)
        KESRANTC_LOCKING(requires_capability(SendRole));
    /// The socket is closed: nothing waits any more.
    void Drop() KESRANTC_LOCKING(requires_capability(SendRole));

    /// Something waits, for the receive thread to look after it; to be asked without the lock.
    bool IsBusy() const { return Busy.load(std::memory_order_relaxed); }
    /// Bytes that wait and may still leave.
    std::size_t GetUnsent() const KESRANTC_LOCKING(requires_capability(SendRole))
    {
        return Failure == 0 ? Waiting.GetSize() : 0;
    }

private:
    bool Fail(int error, SendProgress& progress) KESRANTC_LOCKING(requires_capability(SendRole));
    bool PassOn(SendProgress& progress, bool isReceiveThread) KESRANTC_LOCKING(requires_capability(SendRole));
    bool SendNow(const char* data, std::size_t size, unsigned long& sent, SendProgress& progress)
        KESRANTC_LOCKING(requires_capability(SendRole));
    bool BeginWrite(SendProgress& progress) KESRANTC_LOCKING(requires_capability(SendRole));
    bool TakeCompletion(SendProgress& progress) KESRANTC_LOCKING(requires_capability(SendRole));

    const SOCKET Socket;
    EventHandle Written{EventHandle::AutoReset};
    OVERLAPPED Block KESRANTC_LOCKING(guarded_by(SendRole)){};
    ByteBlocks Waiting KESRANTC_LOCKING(guarded_by(SendRole)); ///< its front is being written while Writing
    bool Writing KESRANTC_LOCKING(guarded_by(SendRole)) = false;
    int Failure KESRANTC_LOCKING(guarded_by(SendRole)) = 0; ///< the code that ended sending
    std::atomic<bool> Busy{false};
};

} // namespace Kesra
