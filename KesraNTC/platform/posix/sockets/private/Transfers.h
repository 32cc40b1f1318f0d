#pragma once

#include "KesraNTC/platform/posix/sockets/Sockets.h"
#include "KesraNTC/platform/posix/waiting/private/Futex.h"
#include "KesraNTC/platform/posix/waiting/private/WaitQueue.h"
#include "KesraNTC/platform/private/ReadAhead.h"

#include <memory>

namespace Kesra
{

class SocketSlot;

/// What one attempt to move bytes came to: WSA_IO_PENDING when it has to go on later.
struct TransferResult {
    int Error;
    DWORD Bytes;
};

/// A caller's OVERLAPPED, whose completion one thread may report while another asks for it.
class OverlappedState
{
public:
    explicit OverlappedState(OVERLAPPED* overlapped) : Block(overlapped) {}

    static constexpr ULONG_PTR Pending = 0x103;

    bool IsPending() const { return Load() == Pending; }
    void MarkPending() const { std::atomic_ref(Block->Internal).store(Pending, std::memory_order_relaxed); }

    /// The caller may reuse or free the block from here on.
    void Publish(TransferResult result) const
    {
        std::atomic_ref(Block->InternalHigh).store(result.Bytes, std::memory_order_relaxed);
        std::atomic_ref(Block->Internal)
            .store(static_cast<ULONG_PTR>(result.Error), std::memory_order_release);
    }

    TransferResult Result() const
    {
        const int error = static_cast<int>(Load());
        return {error,
                static_cast<DWORD>(std::atomic_ref(Block->InternalHigh).load(std::memory_order_relaxed))};
    }

private:
    ULONG_PTR Load() const { return std::atomic_ref(Block->Internal).load(std::memory_order_acquire); }

    OVERLAPPED* Block;
};

/// One direction of a socket: its lock and the overlapped operation that is pending on it, if any. Lives as
/// long as the process; only what is behind it changes when its socket is closed and the place is used again.
class Transfer : public PendingOperation
{
public:
    Transfer(SocketSlot& socket, short pollEvents) : Socket(socket), PollEvents(pollEvents) {}

    bool Pin(pollfd& descriptor) final;
    void Unpin() final;
    void Advance() final;

    /// Advances if this is what is pending.
    void AdvanceIf(const OVERLAPPED* overlapped);

    /// Keeps this direction from moving for as long as it is held.
    FutexLock& GetLock() KESRANTC_LOCKING(lock_returned(Lock)) { return Lock; }

    /// Ends what is pending with this error; nothing may begin any more.
    void Shut(int error);

protected:
    /// Moves what can be moved without waiting; called under the lock.
    virtual TransferResult Continue() KESRANTC_LOCKING(requires_capability(Lock)) = 0;

    // All under the lock: whether a new operation may begin (0, or why not); reporting how it went; posting
    // one that has failed already, which only its completion tells.
    int CheckIdle(SOCKET handle) const KESRANTC_LOCKING(requires_capability(Lock));
    int Finish(TransferResult result, OVERLAPPED* overlapped, EventObject* event, DWORD* transferred)
        KESRANTC_LOCKING(requires_capability(Lock));
    static int PostFailed(int error, OVERLAPPED* overlapped, EventObject* event);
    void Reopen() KESRANTC_LOCKING(requires_capability(Lock));

    FutexLock Lock;
    char* Data KESRANTC_LOCKING(guarded_by(Lock)) = nullptr;
    DWORD Size KESRANTC_LOCKING(guarded_by(Lock)) = 0;
    SocketSlot& Socket;

private:
    int MakePending(OVERLAPPED* overlapped, EventObject* event) KESRANTC_LOCKING(requires_capability(Lock));
    void Complete(TransferResult result) KESRANTC_LOCKING(requires_capability(Lock));

    const short PollEvents;
    bool IsShut KESRANTC_LOCKING(guarded_by(Lock)) = false;
    // Null while nothing is pending. The event is kept by a reference, as its handle may be closed meanwhile.
    OVERLAPPED* Overlapped KESRANTC_LOCKING(guarded_by(Lock)) = nullptr;
    EventObject* Event KESRANTC_LOCKING(guarded_by(Lock)) = nullptr;
};

/// Receiving, through a read-ahead buffer: one system call serves many small reads of a dense stream.
class ReadTransfer final : public Transfer
{
public:
    explicit ReadTransfer(SocketSlot& socket) : Transfer(socket, POLLIN) {}

    int Receive(SOCKET handle, const WSABUF& buffer, DWORD* received, OVERLAPPED* overlapped,
                EventObject* event);

    /// For calls without an OVERLAPPED. WSA_IO_PENDING when there is nothing yet.
    TransferResult ReceiveNow(SOCKET handle, char* data, DWORD size);

    DWORD Consume(SOCKET handle, ReadAheadTaker take, void* context);

    void Reopen();
    void ReleaseBuffer();

private:
    static constexpr DWORD ReadAheadSize = 16 * 1024;
    // After a read this short the next bytes are most likely still on their way: waiting for them beats
    // asking.
    static constexpr DWORD DrainedBelow = 2048;

    struct Unmap {
        void operator()(char* pages) const;
    };

    TransferResult Begin(bool hasEvent) KESRANTC_LOCKING(requires_capability(Lock));
    TransferResult Continue() override KESRANTC_LOCKING(requires_capability(Lock));
    bool HaveBuffer() KESRANTC_LOCKING(requires_capability(Lock));
    TransferResult Fetch(char* data, DWORD size) KESRANTC_LOCKING(requires_capability(Lock));
    DWORD Take() KESRANTC_LOCKING(requires_capability(Lock));

    // Pages of its own: untouched until data arrives, and never in the way of the heap giving memory back.
    std::unique_ptr<char[], Unmap> Buffer KESRANTC_LOCKING(guarded_by(Lock));
    DWORD Position KESRANTC_LOCKING(guarded_by(Lock)) = 0;
    DWORD End KESRANTC_LOCKING(guarded_by(Lock)) = 0;
    bool IsDrained KESRANTC_LOCKING(guarded_by(Lock)) = false;
};

/// Sending: complete when the system has taken every byte. Nothing is copied.
class WriteTransfer final : public Transfer
{
public:
    explicit WriteTransfer(SocketSlot& socket) : Transfer(socket, POLLOUT) {}

    int Send(SOCKET handle, const WSABUF& buffer, DWORD* sent, OVERLAPPED* overlapped, EventObject* event);

    /// For calls without an OVERLAPPED: what the system takes at once. WSA_IO_PENDING when that is nothing.
    TransferResult SendNow(SOCKET handle, const char* data, DWORD size);

    void Reopen();

private:
    TransferResult Continue() override KESRANTC_LOCKING(requires_capability(Lock));

    DWORD Done KESRANTC_LOCKING(guarded_by(Lock)) = 0;
};

} // namespace Kesra
