#pragma once

#include "KesraNTC/platform/EventHandle.h"

#include <atomic>

namespace Kesra
{

/// One connection's receive thread as its client and the thread itself see it. Both share it, so that the
/// thread never asks a client that ProcessDisconnection may have deleted.
///
/// The thread owns the client's receive state (buffer, stage, read block), except while it runs code of the
/// game. Whoever retires it therefore waits for moments only, whatever locks the game holds.
class ReceiveThread
{
public:
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
    void NeverBegan()
    {
        Begun = true;
        LetGo();
        Ended.Set();
    }

    bool IsCurrent() const { return Current() == this; }
    bool WaitForEnd(DWORD milliseconds) const { return Ended.Wait(milliseconds); }

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

private:
    static constexpr unsigned Away = 1;
    static constexpr unsigned Retired = 2;

    static const ReceiveThread*& Current();

    EventHandle Ended{EventHandle::ManualReset};
    EventHandle Free{EventHandle::ManualReset}; ///< set once a retired thread has let go
    std::atomic<unsigned> State{0};
    std::atomic<bool> Begun{false};
    std::atomic<bool> Claimed{false};
};

} // namespace Kesra
