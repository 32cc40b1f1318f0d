#pragma once

#include "KesraNTC/net/END_REASON.h"
#include "KesraNTC/net/private/CompactPackets.h"
#include "KesraNTC/net/private/Outbox.h"
#include "KesraNTC/platform/private/EventHandle.h"

#include <atomic>
#include <cstdint>

namespace Kesra
{

/// One connection from its first read to its end, with its receive thread, as the client and the thread see
/// it. Both share it, so that neither the thread nor a late completion ever asks a client that
/// ProcessDisconnection may have deleted, or touches a newer connection.
///
/// The thread owns the client's receive state (buffer, stage, read block), except while it runs code of the
/// game. Whoever retires it therefore waits for moments only, whatever locks the game holds.
class ClientConnection
{
public:
    ClientConnection(std::uint64_t generation, SOCKET socket, bool isOwnSocket)
        : Generation(generation), Socket(socket), IsOwnSocket(isOwnSocket), Out(socket)
    {
    }

    /// False when the system could not make its events.
    bool IsWhole() const
    {
        return Ended.Get() != nullptr && Free.Get() != nullptr && FirstRead.Get() != nullptr &&
               Out.GetEvent().Get() != nullptr;
    }

    /// Called first on the thread itself. False when another thread has begun as this one before.
    bool Begin()
    {
        if (Begun.exchange(true))
            return false;
        Current() = this;
        return true;
    }
    /// Called last on the thread itself: nothing of the client is touched afterwards.
    void End()
    {
        Current() = nullptr;
        Ended.Set();
    }
    /// Instead of Begin and End, by the client, when the thread could not be started.
    void NeverBegan(int error)
    {
        Begun = true;
        ReportFirstRead(error);
        LetGo();
        Ended.Set();
    }

    bool IsCurrent() const { return Current() == this; }
    bool WaitForEnd(DWORD milliseconds) const { return Ended.Wait(milliseconds); }

    /// The thread says once whether its first read was issued (0) or why not, and whoever connects waits for
    /// it.
    void ReportFirstRead(int error)
    {
        FirstReadError = error;
        FirstRead.Set();
    }
    int WaitForFirstRead() const
    {
        FirstRead.Wait();
        return FirstReadError;
    }

    /// On the thread itself: lets go of the receive state, before code of the game and for good at the end.
    void LetGo()
    {
        if ((State.fetch_or(Away) & Retired) != 0)
            Free.Set();
    }
    /// Takes the receive state back; false when the thread has been retired meanwhile and must end.
    bool TakeBack()
    {
        unsigned away = Away;
        return State.compare_exchange_strong(away, 0);
    }

    /// The thread ends as soon as it looks; a newer connection or a destructor took over. The receive state
    /// is free on return.
    void Retire()
    {
        if ((State.fetch_or(Retired) & Away) == 0)
            Free.Wait();
    }
    bool IsRetired() const { return (State.load(std::memory_order_relaxed) & Retired) != 0; }
    /// True for the first caller only: whoever is first decides whether ProcessDisconnection is called.
    bool ClaimNotification() { return !Claimed.exchange(true); }

    /// Its socket has been closed here.
    void NoteClosed()
    {
        NoteEnd(END_CLOSED_HERE, WSA_OPERATION_ABORTED);
        Closed.store(true);
    }
    bool IsClosed() const { return Closed.load(); }

    /// The first reason stays.
    void NoteEnd(END_REASON reason, int error)
    {
        std::uint64_t none = 0;
        Reason.compare_exchange_strong(none, static_cast<std::uint64_t>(error) << 32 | reason);
    }
    END_REASON GetEndReason() const { return static_cast<END_REASON>(Reason.load() & 0xFFFFFFFF); }
    unsigned long GetEndError() const { return static_cast<unsigned long>(Reason.load() >> 32); }

    /// Tells connections, and sockets that the game set, of one client apart.
    const std::uint64_t Generation;
    const SOCKET Socket;
    const bool IsOwnSocket; ///< made by ConnectToServer

    Outbox Out; ///< under IoState::SendLock
    /// Taken out of the read-ahead for dispatch on the receive thread, whose own it is.
    CompactPackets Ahead;
    // Since it began; each is counted by one thread at a time.
    std::atomic<std::uint64_t> BytesSent{0};
    std::atomic<std::uint64_t> PacketsSent{0};
    std::atomic<std::uint64_t> BytesReceived{0};
    std::atomic<std::uint64_t> PacketsReceived{0};

private:
    static constexpr unsigned Away = 1;
    static constexpr unsigned Retired = 2;

    static ClientConnection*& Current();

    EventHandle Ended{EventHandle::ManualReset};
    EventHandle Free{EventHandle::ManualReset}; ///< set once a retired thread has let go
    EventHandle FirstRead{EventHandle::ManualReset};
    std::atomic<int> FirstReadError{0};
    std::atomic<bool> Closed{false};
    std::atomic<unsigned> State{0};
    std::atomic<bool> Begun{false};
    std::atomic<bool> Claimed{false};
    std::atomic<std::uint64_t> Reason{0}; ///< the code above, the reason below
};

/// Counts where one thread writes and others read.
inline void CountUp(std::atomic<std::uint64_t>& counter, std::uint64_t n)
{
    counter.store(counter.load(std::memory_order_relaxed) + n, std::memory_order_relaxed);
}

} // namespace Kesra
