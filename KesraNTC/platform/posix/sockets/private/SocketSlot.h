#pragma once

#include "KesraNTC/platform/posix/sockets/private/EventSelection.h"
#include "KesraNTC/platform/posix/sockets/private/Transfers.h"

namespace Kesra
{

/// The place of one socket. Places are numbered, are never freed and are used again; a SOCKET names the place
/// and the generation of its use, so that a stale SOCKET is told from a current one without a table lock.
/// Whoever uses the descriptor outside the locks of the transfers pins the socket; the descriptor is closed
/// with the last pin.
class SocketSlot
{
public:
    explicit SocketSlot(std::uint32_t index) : Index(index) {}
    SocketSlot(const SocketSlot&) = delete;
    SocketSlot& operator=(const SocketSlot&) = delete;

    /// The place a SOCKET names, which may belong to another socket by now; null when there never was one.
    static SocketSlot* Find(SOCKET socket);

    /// Takes over the descriptor. INVALID_SOCKET when there is no memory or no place; the descriptor is then
    /// closed.
    static SOCKET Open(int descriptor);

    /// False when the socket was closed before.
    bool Close(SOCKET socket);

    /// The descriptor stays open for as long as the caller has a pin or the lock of a transfer, which Close
    /// does not get past.
    bool IsOpen(SOCKET socket) const { return IsOpenAs(Life.load(std::memory_order_acquire), socket); }

    bool Pin(SOCKET socket);
    bool PinWhateverIsOpen();
    void Unpin();

    int GetDescriptor() const { return Descriptor; }

    /// An error that ended the connection, for the direction that did not see it; 0 for none.
    int GetFatalError() const { return FatalError.load(std::memory_order_relaxed); }
    int NoteError(int systemError);

    /// Takes the error that the system holds and keeps it for later reads. Returns what ended the connection,
    /// 0 for nothing. The caller holds no lock of a transfer.
    int TakeError();
    /// The error behind an end of the stream, 0 for a peer that closed. Takes the lock of Write, before which
    /// that of Read may be taken.
    int GetErrorAtEnd();
    /// The next connection does not inherit it.
    void ForgetError() { FatalError.store(0, std::memory_order_relaxed); }

    /// Whether calls without an OVERLAPPED wait. Returns 0 or the error.
    int SetNonBlocking(bool nonBlocking);

    ReadTransfer Read{*this};
    WriteTransfer Write{*this};
    EventSelection Selection{*this};

    std::atomic<bool> IsNonBlocking;
    // There is, was or is about to be a peer.
    std::atomic<bool> HadPeer;
    // Values as they were set, since the system rounds them; a buffer may be set to 0, too.
    static constexpr int NeverSet = -1;
    std::atomic<int> ReceiveTimeout;
    std::atomic<int> SendTimeout;
    std::atomic<int> ReceiveBuffer;
    std::atomic<int> SendBuffer;
    std::atomic<int> MaxRetransmission;

private:
    // The low half of Life counts the pins, the open socket itself being one; the high half is the
    // generation.
    static constexpr std::uint64_t OpenBit = 1ULL << 31;
    static constexpr std::uint64_t PinMask = OpenBit - 1;
    static constexpr unsigned GenerationShift = 32;
    // A SOCKET: place in the low bits, generation above, the top bit clear so that it fits an int.
    static constexpr unsigned IndexBits = 18;
    static constexpr std::uint32_t IndexMask = (1U << IndexBits) - 1;
    static constexpr std::uint32_t GenerationMask = (1U << (31 - IndexBits)) - 1;

    friend class SocketTable;

    static bool IsOpenAs(std::uint64_t life, SOCKET socket)
    {
        return (life & OpenBit) != 0 && ((life >> GenerationShift) & GenerationMask) == socket >> IndexBits;
    }

    SOCKET Begin(int descriptor);

    std::atomic<std::uint64_t> Life{0};
    int Descriptor = -1;
    std::atomic<int> FatalError;
    const std::uint32_t Index;
    SocketSlot* NextFree = nullptr;
};

/// Pins a socket for one call; on failure the call's error is WSAENOTSOCK.
class SocketPin
{
public:
    explicit SocketPin(SOCKET socket);
    SocketPin(const SocketPin&) = delete;
    SocketPin& operator=(const SocketPin&) = delete;
    ~SocketPin()
    {
        if (Slot != nullptr)
            Slot->Unpin();
    }

    explicit operator bool() const { return Slot != nullptr; }
    SocketSlot* operator->() const { return Slot; }
    int Descriptor() const { return Slot->GetDescriptor(); }

private:
    SocketSlot* Slot;
};

} // namespace Kesra
