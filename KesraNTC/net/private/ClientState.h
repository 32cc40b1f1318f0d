#pragma once

#include "KesraNTC/net/private/ClientConnection.h"
#include "KesraNTC/net/private/LockRoles.h"

#include <memory>
#include <vector>

namespace Kesra
{

struct IoState;

using ReceiverList = std::vector<std::shared_ptr<ClientConnection>>;

/// What a client's threads share about its connections. A thread inside ConnectToServer keeps it, since the
/// client may be deleted as soon as the connection has begun.
struct ClientState {
    static constexpr unsigned long UsualSilenceLimit = 60;

    GuardLock ConnectLock;               ///< one ConnectToServer at a time; outermost
    std::atomic<bool> IsStopping{false}; ///< the client is being destroyed
    EventHandle Abort{
        EventHandle::ManualReset}; ///< the connect in progress shall end; under IoState::CloseLock

    GuardLock ReceiverLock; ///< guards Receivers and the client's two dates; innermost
    /// The newest connection last; before it those whose threads still run code of the game. Never changed,
    /// only replaced: whoever looks needs no memory.
    std::shared_ptr<const ReceiverList>
        Receivers KESRANTC_LOCKING(guarded_by(ReceiverLock)) = std::make_shared<ReceiverList>();

    bool InDispatch KESRANTC_LOCKING(guarded_by(DispatchRole)) = false;
    std::atomic<unsigned long> SilenceLimit{UsualSilenceLimit};
    std::atomic<bool> IsNoDelay{true};
    /// The generation whose clock answer has failed; answering it again would only fail again.
    std::atomic<std::uint64_t> ClockFailedOn{0};

    std::shared_ptr<const ReceiverList> GetReceivers()
    {
        const Held reading(ReceiverLock);
        return Receivers;
    }
    void AddReceiver(std::shared_ptr<ClientConnection> connection)
    {
        const Held publishing(ReceiverLock);
        auto receivers = std::make_shared<ReceiverList>(*Receivers);
        std::erase_if(*receivers, [](const auto& old) { return old->WaitForEnd(0); });
        receivers->push_back(std::move(connection));
        Receivers = std::move(receivers);
    }
};

/// True while packets are being dispatched.
class DispatchMark
{
public:
    explicit DispatchMark(ClientState& state) KESRANTC_LOCKING(requires_capability(DispatchRole))
        : Client(state)
    {
        Client.InDispatch = true;
    }
    ~DispatchMark() KESRANTC_LOCKING(requires_capability(DispatchRole)) { Client.InDispatch = false; }
    DispatchMark(const DispatchMark&) = delete;
    DispatchMark& operator=(const DispatchMark&) = delete;

private:
    ClientState& Client;
};

/// Names the connection of a client that something belongs to, also when it has long ended.
struct ConnectionKey {
    const IoState* Io = nullptr;
    std::uint64_t Generation = 0;
};

} // namespace Kesra
