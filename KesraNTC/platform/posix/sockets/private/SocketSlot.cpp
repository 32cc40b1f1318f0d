#include "KesraNTC/platform/posix/sockets/private/SocketSlot.h"

#include "KesraNTC/platform/posix/sockets/private/SocketErrors.h"

#include <array>
#include <cerrno>
#include <new>
#include <sys/ioctl.h>
#include <unistd.h>

namespace Kesra
{

/// All places. Looking one up takes no lock; only opening and closing do.
class SocketTable
{
public:
    static SocketTable& Get()
    {
        static constinit SocketTable table;
        return table;
    }

    SocketSlot* Find(std::uint32_t index)
    {
        SocketSlot* chunk = Chunks[index / ChunkSize].load(std::memory_order_acquire);
        return chunk != nullptr ? chunk + index % ChunkSize : nullptr;
    }

    SocketSlot* Acquire()
    {
        const LockGuard guard(Lock);
        // A closed place rests at the end of the line, so that a stale SOCKET stays recognisable for long.
        if (FreeCount < RestingPlaces && !Grow() && FreeCount == 0)
            return nullptr;
        SocketSlot* slot = FirstFree;
        FirstFree = slot->NextFree;
        --FreeCount;
        return slot;
    }

    void Release(SocketSlot* slot)
    {
        const LockGuard guard(Lock);
        slot->NextFree = nullptr;
        (FreeCount != 0 ? LastFree->NextFree : FirstFree) = slot;
        LastFree = slot;
        ++FreeCount;
    }

private:
    static constexpr std::uint32_t ChunkSize = 32;
    static constexpr std::uint32_t ChunkCount = (SocketSlot::IndexMask + 1) / ChunkSize;
    static constexpr std::uint32_t RestingPlaces = 8;

    bool Grow() KESRANTC_LOCKING(requires_capability(Lock))
    {
        if (UsedChunks == ChunkCount)
            return false;
        void* memory = ::operator new(sizeof(SocketSlot) * ChunkSize, std::nothrow);
        if (memory == nullptr)
            return false;
        auto* chunk = static_cast<SocketSlot*>(memory);
        for (std::uint32_t i = 0; i < ChunkSize; ++i) {
            SocketSlot* slot = new (chunk + i) SocketSlot(UsedChunks * ChunkSize + i);
            (FreeCount != 0 ? LastFree->NextFree : FirstFree) = slot;
            LastFree = slot;
            ++FreeCount;
        }
        Chunks[UsedChunks++].store(chunk, std::memory_order_release);
        return true;
    }

    std::array<std::atomic<SocketSlot*>, ChunkCount> Chunks{};
    FutexLock Lock;
    std::uint32_t UsedChunks KESRANTC_LOCKING(guarded_by(Lock)) = 0;
    SocketSlot* FirstFree KESRANTC_LOCKING(guarded_by(Lock)) = nullptr;
    SocketSlot* LastFree KESRANTC_LOCKING(guarded_by(Lock)) = nullptr;
    std::uint32_t FreeCount KESRANTC_LOCKING(guarded_by(Lock)) = 0;
};

SocketSlot* SocketSlot::Find(SOCKET socket)
{
    return SocketTable::Get().Find(socket & IndexMask);
}

SOCKET SocketSlot::Open(int descriptor)
{
    SocketSlot* slot = SocketTable::Get().Acquire();
    if (slot == nullptr) {
        close(descriptor);
        SetLastError(WSAENOBUFS);
        return INVALID_SOCKET;
    }
    return slot->Begin(descriptor);
}

SOCKET SocketSlot::Begin(int descriptor)
{
    Read.Reopen();
    Write.Reopen();
    Selection.Clear();
    IsNonBlocking.store(false, std::memory_order_relaxed);
    HadPeer.store(false, std::memory_order_relaxed);
    for (std::atomic<int>* timeout : {&ReceiveTimeout, &SendTimeout, &MaxRetransmission})
        timeout->store(0, std::memory_order_relaxed);
    for (std::atomic<int>* buffer : {&ReceiveBuffer, &SendBuffer})
        buffer->store(NeverSet, std::memory_order_relaxed);
    FatalError.store(0, std::memory_order_relaxed);
    Descriptor = descriptor;
    std::uint32_t generation =
        static_cast<std::uint32_t>(Life.load(std::memory_order_relaxed) >> GenerationShift);
    // Generation 0 is never used, so that small numbers are no sockets.
    if ((generation & GenerationMask) == 0)
        ++generation;
    Life.store(static_cast<std::uint64_t>(generation) << GenerationShift | OpenBit | 1,
               std::memory_order_release);
    return (generation & GenerationMask) << IndexBits | Index;
}

bool SocketSlot::Close(SOCKET socket)
{
    std::uint64_t life = Life.load(std::memory_order_relaxed);
    do {
        if (!IsOpenAs(life, socket))
            return false;
    } while (!Life.compare_exchange_weak(life, (life ^ OpenBit) + (1ULL << GenerationShift),
                                         std::memory_order_acq_rel, std::memory_order_relaxed));
    Read.Shut(WSA_OPERATION_ABORTED);
    Write.Shut(WSA_OPERATION_ABORTED);
    Selection.Clear();
    Read.ReleaseBuffer();
    // Calls of other threads that wait inside the system come back.
    if ((life & PinMask) > 1)
        ::shutdown(Descriptor, SHUT_RDWR);
    Unpin();
    return true;
}

bool SocketSlot::Pin(SOCKET socket)
{
    std::uint64_t life = Life.load(std::memory_order_relaxed);
    do {
        if (!IsOpenAs(life, socket))
            return false;
    } while (
        !Life.compare_exchange_weak(life, life + 1, std::memory_order_acq_rel, std::memory_order_relaxed));
    return true;
}

bool SocketSlot::PinWhateverIsOpen()
{
    std::uint64_t life = Life.load(std::memory_order_relaxed);
    do {
        if ((life & OpenBit) == 0)
            return false;
    } while (
        !Life.compare_exchange_weak(life, life + 1, std::memory_order_acq_rel, std::memory_order_relaxed));
    return true;
}

void SocketSlot::Unpin()
{
    if ((Life.fetch_sub(1, std::memory_order_acq_rel) & PinMask) != 1)
        return;
    close(Descriptor);
    SocketTable::Get().Release(this);
}

namespace
{

/// Whether the connection is gone with this error, rather than one call.
bool EndsConnection(int error)
{
    switch (error) {
    case WSAECONNRESET:
    case WSAECONNABORTED:
    case WSAECONNREFUSED:
    case WSAETIMEDOUT:
    case WSAENETDOWN:
    case WSAENETUNREACH:
    case WSAENETRESET:
    case WSAEHOSTDOWN:
    case WSAEHOSTUNREACH:
        return true;
    default:
        return false;
    }
}

} // namespace

int SocketSlot::NoteError(int systemError)
{
    if (systemError == EPIPE && !HadPeer.load(std::memory_order_relaxed))
        return WSAENOTCONN;
    // The system reports a reset once, to whichever direction asks first.
    if (const int known = GetFatalError(); known != 0)
        return known;
    const int error = SocketErrorFromErrno(systemError);
    if (EndsConnection(error))
        FatalError.store(error, std::memory_order_relaxed);
    return error;
}

int SocketSlot::TakeError()
{
    // A direction that has just been handed the error notes it before it leaves its lock.
    const LockGuard reading(Read.GetLock());
    const LockGuard writing(Write.GetLock());
    int error = 0;
    socklen_t size = sizeof error;
    if (::getsockopt(Descriptor, SOL_SOCKET, SO_ERROR, &error, &size) != 0)
        error = errno;
    return error != 0 ? NoteError(error) : GetFatalError();
}

int SocketSlot::GetErrorAtEnd()
{
    const LockGuard writing(Write.GetLock());
    return GetFatalError();
}

int SocketSlot::SetNonBlocking(bool nonBlocking)
{
    int value = nonBlocking;
    if (::ioctl(Descriptor, FIONBIO, &value) != 0)
        return SocketErrorFromErrno(errno);
    IsNonBlocking.store(nonBlocking, std::memory_order_relaxed);
    return 0;
}

SocketPin::SocketPin(SOCKET socket) : Slot(SocketSlot::Find(socket))
{
    if (Slot != nullptr && Slot->Pin(socket))
        return;
    Slot = nullptr;
    SetLastError(WSAENOTSOCK);
}

} // namespace Kesra
