#include "KesraNTC/platform/posix/sockets/private/Transfers.h"

#include "KesraNTC/platform/posix/sockets/private/SocketErrors.h"
#include "KesraNTC/platform/posix/sockets/private/SocketSlot.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/mman.h>
#include <utility>

namespace Kesra
{

bool Transfer::Pin(pollfd& descriptor)
{
    if (!Socket.PinWhateverIsOpen())
        return false;
    descriptor = {Socket.GetDescriptor(), PollEvents, 0};
    return true;
}

void Transfer::Unpin()
{
    Socket.Unpin();
}

void Transfer::Advance()
{
    const LockGuard guard(Lock);
    if (Overlapped == nullptr)
        return;
    const TransferResult result = Continue();
    if (result.Error != WSA_IO_PENDING)
        Complete(result);
}

void Transfer::AdvanceIf(const OVERLAPPED* overlapped)
{
    const LockGuard guard(Lock);
    if (Overlapped != overlapped)
        return;
    const TransferResult result = Continue();
    if (result.Error != WSA_IO_PENDING)
        Complete(result);
}

void Transfer::Shut(int error)
{
    const LockGuard guard(Lock);
    IsShut = true;
    if (Overlapped != nullptr)
        Complete({error, 0});
}

void Transfer::Reopen()
{
    IsShut = false;
}

int Transfer::CheckIdle(SOCKET handle) const
{
    if (!Socket.IsOpen(handle))
        return WSAENOTSOCK;
    if (IsShut)
        return WSAESHUTDOWN;
    return Overlapped == nullptr ? 0 : WSAEWOULDBLOCK;
}

int Transfer::Finish(TransferResult result, OVERLAPPED* overlapped, EventObject* event, DWORD* transferred)
{
    if (result.Error == WSA_IO_PENDING)
        return MakePending(overlapped, event);
    if (result.Error != 0)
        return FailSocketCall(result.Error);
    if (transferred != nullptr)
        *transferred = result.Bytes;
    OverlappedState(overlapped).Publish(result);
    if (event != nullptr)
        event->Set();
    return 0;
}

int Transfer::PostFailed(int error, OVERLAPPED* overlapped, EventObject* event)
{
    OverlappedState(overlapped).Publish({error, 0});
    if (event != nullptr)
        event->Set();
    return FailSocketCall(WSA_IO_PENDING);
}

int Transfer::MakePending(OVERLAPPED* overlapped, EventObject* event)
{
    if (event != nullptr) {
        if (!WaitQueue::Of(event).Attach(event, this))
            return FailSocketCall(WSAEINVAL);
        event->Reset();
        event->AddRef();
    }
    OverlappedState(overlapped).MarkPending();
    Overlapped = overlapped;
    Event = event;
    return FailSocketCall(WSA_IO_PENDING);
}

void Transfer::Complete(TransferResult result)
{
    OVERLAPPED* overlapped = std::exchange(Overlapped, nullptr);
    EventObject* event = std::exchange(Event, nullptr);
    if (event != nullptr)
        WaitQueue::Of(event).Detach(event);
    OverlappedState(overlapped).Publish(result);
    if (event != nullptr) {
        event->Set();
        event->Release();
    }
}

int ReadTransfer::Receive(SOCKET handle, const WSABUF& buffer, DWORD* received, OVERLAPPED* overlapped,
                          EventObject* event)
{
    const LockGuard guard(Lock);
    const int refusal = CheckIdle(handle);
    if (refusal == WSAESHUTDOWN)
        return PostFailed(refusal, overlapped, event);
    if (refusal != 0)
        return FailSocketCall(refusal);
    Data = buffer.buf;
    Size = buffer.len;
    const TransferResult result = Begin(event != nullptr);
    // An end of the connection that came just before this call ends the read like one that comes just after
    // it.
    const bool isEnd = result.Error != 0 && result.Error != WSA_IO_PENDING && result.Error != WSAENOTCONN;
    return isEnd ? PostFailed(result.Error, overlapped, event) : Finish(result, overlapped, event, received);
}

TransferResult ReadTransfer::Begin(bool hasEvent)
{
    if (Position != End)
        return {0, Take()};
    // Whoever waits for the event asks the system as soon as there is something.
    return IsDrained && hasEvent ? TransferResult{WSA_IO_PENDING, 0} : Continue();
}

TransferResult ReadTransfer::ReceiveNow(SOCKET handle, char* data, DWORD size)
{
    const LockGuard guard(Lock);
    if (const int error = CheckIdle(handle); error != 0)
        return {error, 0};
    Data = data;
    Size = size;
    return Position != End ? TransferResult{0, Take()} : Fetch(data, size);
}

DWORD ReadTransfer::Consume(SOCKET handle, ReadAheadTaker take, void* context)
{
    const LockGuard guard(Lock);
    if (CheckIdle(handle) != 0 || Position == End)
        return 0;
    const DWORD size = End - Position;
    const DWORD used = std::min(take(context, Buffer.get() + Position, size), size);
    Position += used;
    return used;
}

TransferResult ReadTransfer::Continue()
{
    if (Size >= ReadAheadSize)
        return Fetch(Data, Size);
    if (!HaveBuffer())
        return {WSAENOBUFS, 0};
    const TransferResult ahead = Fetch(Buffer.get(), ReadAheadSize);
    if (ahead.Bytes == 0)
        return ahead;
    Position = 0;
    End = ahead.Bytes;
    return {0, Take()};
}

bool ReadTransfer::HaveBuffer()
{
    if (Buffer != nullptr)
        return true;
    void* pages = mmap(nullptr, ReadAheadSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED)
        return false;
    Buffer.reset(static_cast<char*>(pages));
    return true;
}

void ReadTransfer::Unmap::operator()(char* pages) const
{
    munmap(pages, ReadAheadSize);
}

TransferResult ReadTransfer::Fetch(char* data, DWORD size)
{
    const ssize_t count = ::recv(Socket.GetDescriptor(), data, size, MSG_DONTWAIT);
    IsDrained = count < static_cast<ssize_t>(DrainedBelow);
    if (count > 0)
        return {0, static_cast<DWORD>(count)};
    if (count == 0)
        return {size != 0 ? Socket.GetErrorAtEnd() : 0, 0};
    const bool again = errno == EAGAIN || errno == EINTR;
    return {again ? WSA_IO_PENDING : Socket.NoteError(errno), 0};
}

DWORD ReadTransfer::Take()
{
    const DWORD count = std::min(Size, End - Position);
    std::memcpy(Data, Buffer.get() + Position, count);
    Position += count;
    return count;
}

void ReadTransfer::Reopen()
{
    const LockGuard guard(Lock);
    Transfer::Reopen();
    Position = End = 0;
    IsDrained = false;
}

void ReadTransfer::ReleaseBuffer()
{
    const LockGuard guard(Lock);
    Buffer.reset();
}

int WriteTransfer::Send(SOCKET handle, const WSABUF& buffer, DWORD* sent, OVERLAPPED* overlapped,
                        EventObject* event)
{
    const LockGuard guard(Lock);
    if (const int error = CheckIdle(handle); error != 0)
        return FailSocketCall(error);
    Data = buffer.buf;
    Size = buffer.len;
    Done = 0;
    return Finish(Continue(), overlapped, event, sent);
}

TransferResult WriteTransfer::SendNow(SOCKET handle, const char* data, DWORD size)
{
    const LockGuard guard(Lock);
    if (const int error = CheckIdle(handle); error != 0)
        return {error, 0};
    const ssize_t count = ::send(Socket.GetDescriptor(), data, size, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count >= 0)
        return {0, static_cast<DWORD>(count)};
    const bool again = errno == EAGAIN || errno == EINTR;
    return {again ? WSA_IO_PENDING : Socket.NoteError(errno), 0};
}

TransferResult WriteTransfer::Continue()
{
    do {
        const ssize_t count =
            ::send(Socket.GetDescriptor(), Data + Done, Size - Done, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count < 0) {
            const bool again = errno == EAGAIN || errno == EINTR;
            return {again ? WSA_IO_PENDING : Socket.NoteError(errno), 0};
        }
        Done += static_cast<DWORD>(count);
    } while (Done != Size);
    return {0, Size};
}

void WriteTransfer::Reopen()
{
    const LockGuard guard(Lock);
    Transfer::Reopen();
}

} // namespace Kesra
