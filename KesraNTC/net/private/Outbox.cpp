#include "KesraNTC/net/private/Outbox.h"

#include <new>

namespace Kesra
{

Outbox::~Outbox()
{
    // The system lets go of a closed socket's write in a moment; until then it reads from the block.
    if (Writing && !HasOverlappedIoCompleted(&Block))
        Written.Wait(1000);
}

bool Outbox::Send(const char* data, unsigned long size, std::size_t limit, SendProgress& progress)
{
    if (Failure != 0)
        return Fail(Failure, progress);
    unsigned long now = 0;
    // Most sends fit into the socket at once: nothing is copied, and nobody is woken.
    if (Waiting.IsEmpty()) {
        if (!SendNow(data, size, now, progress))
            return false;
        if (now == size)
            return true;
    } else if (Waiting.GetSize() + size > limit) {
        return false;
    }
    try {
        Waiting.Append(data + now, size - now);
    } catch (const std::bad_alloc&) {
        // A packet of which a part has left cannot be taken back.
        return now == 0 ? (progress.Error = WSA_NOT_ENOUGH_MEMORY, false)
                        : Fail(WSA_NOT_ENOUGH_MEMORY, progress);
    }
    return Advance(progress, false);
}

bool Outbox::Advance(SendProgress& progress, bool isReceiveThread)
{
    if (Failure != 0)
        return Fail(Failure, progress);
    const bool isGoing = PassOn(progress, isReceiveThread);
    if (Waiting.IsEmpty())
        Waiting.ReleaseSpare();
    Busy.store(!Waiting.IsEmpty(), std::memory_order_relaxed);
    return isGoing;
}

bool Outbox::PassOn(SendProgress& progress, bool isReceiveThread)
{
    for (;;) {
        if (Writing && !TakeCompletion(progress))
            return false;
        if (Writing || Waiting.IsEmpty())
            return true;
        const auto front = Waiting.Front();
        unsigned long now = 0;
        if (!SendNow(reinterpret_cast<const char*>(front.data()), front.size(), now, progress))
            return Fail(progress.Error, progress);
        const bool isFull = now != front.size();
        Waiting.Pop(now);
        if (isFull && !isReceiveThread) {
            Written.Set();
            return true;
        }
        if (isFull && !BeginWrite(progress))
            return false;
    }
}

bool Outbox::SendNow(const char* data, std::size_t size, unsigned long& sent, SendProgress& progress)
{
    WSABUF buffer{static_cast<ULONG>(size), const_cast<char*>(data)};
    DWORD taken = 0;
    if (WSASend(Socket, &buffer, 1, &taken, 0, nullptr, nullptr) != 0) {
        const int error = WSAGetLastError();
        if (error != WSAEWOULDBLOCK) {
            progress.Error = error;
            return false;
        }
        taken = 0;
    }
    sent = taken;
    progress.Sent += taken;
    return true;
}

bool Outbox::BeginWrite(SendProgress& progress)
{
    const auto front = Waiting.Front();
    WSABUF buffer{static_cast<ULONG>(front.size()),
                  reinterpret_cast<char*>(const_cast<unsigned char*>(front.data()))};
    Block = OVERLAPPED{};
    Block.hEvent = Written.Get();
    DWORD sent = 0;
    if (WSASend(Socket, &buffer, 1, &sent, 0, &Block, nullptr) != 0) {
        const int error = WSAGetLastError();
        if (error != WSA_IO_PENDING)
            return Fail(error, progress);
    }
    Writing = true;
    return true;
}

bool Outbox::TakeCompletion(SendProgress& progress)
{
    DWORD sent = 0;
    DWORD flags = 0;
    if (WSAGetOverlappedResult(Socket, &Block, &sent, FALSE, &flags)) {
        Writing = false;
        progress.Sent += sent;
        Waiting.Pop(sent);
        return true;
    }
    const int error = WSAGetLastError();
    if (error == WSA_IO_INCOMPLETE)
        return true;
    Writing = false;
    return Fail(error, progress);
}

bool Outbox::Fail(int error, SendProgress& progress)
{
    // Whoever finds it, the receive thread ends the connection.
    if (Failure == 0) {
        Failure = error;
        Written.Set();
    }
    progress.Error = Failure;
    return false;
}

void Outbox::Drop()
{
    if (Failure == 0)
        Failure = WSA_OPERATION_ABORTED;
    Busy.store(false, std::memory_order_relaxed);
    if (Writing && HasOverlappedIoCompleted(&Block))
        Writing = false;
    if (Writing)
        return;
    Waiting.Clear();
    Waiting.ReleaseSpare();
}

} // namespace Kesra
