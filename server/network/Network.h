#pragma once

#include "server/Faults.h"
#include "server/Limits.h"
#include "server/network/Link.h"
#include "server/scenario/Recorder.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Kesra
{

/// Whom the network tells what happens. Called on the server's thread.
class NetworkOwner
{
public:
    virtual ~NetworkOwner() = default;
    virtual void OnAccepted(PeerID peer, Link& link) = 0;
    virtual void OnPacket(PeerID peer, const unsigned char* bytes, std::size_t size) = 0;
    /// The link dies after this call.
    virtual void OnEnded(PeerID peer) = 0;
};

/// Stands for all connections, present and future.
constexpr PeerID Everyone = 0;

/// Sockets, timers and the server's one thread.
class Network
{
public:
    /// Listens from now on; throws std::runtime_error when it cannot.
    Network(const std::string& address, unsigned short port, const ServerLimits& limits, NetworkOwner& owner,
            Recorder& recorder);
    /// Stops the thread and drops all connections without telling the owner.
    ~Network();

    unsigned short Port() const;
    /// Starts the thread, and ends it.
    void Start();
    void Stop();
    /// Runs something on the server's thread, now or after some time. From any thread.
    void Post(std::function<void()> work);
    void After(std::chrono::milliseconds delay, std::function<void()> work);
    /// Runs something on the server's thread and returns when it is done. Not from that thread.
    void Call(const std::function<void()>& work);

    // The rest: on the server's thread. A peer that is gone is ignored.
    void SetFaults(PeerID peer, const Faults& faults);
    void ReleaseReplies(PeerID peer);
    void Send(PeerID peer, const std::vector<unsigned char>& packet);
    void SendBytes(PeerID peer, const std::vector<unsigned char>& bytes);
    void Close(PeerID peer);
    void Reset(PeerID peer);

private:
    class Implementation;
    std::unique_ptr<Implementation> Inner;
};

} // namespace Kesra
