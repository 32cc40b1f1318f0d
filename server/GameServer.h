#pragma once

#include "server/Faults.h"
#include "server/Limits.h"
#include "server/scenario/Recorder.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class CNTPacket;

namespace Kesra
{

struct ServerOptions {
    std::string Address = "127.0.0.1";
    unsigned short Port = 0; ///< 0 lets the system choose one
    /// Time between two clock messages to everybody who is logged on; 0 sends only the one after a logon.
    std::chrono::milliseconds ClockInterval{5000};
    /// An unknown account comes into being when it logs on.
    bool OpenAccounts = true;
    ServerLimits Limits;
    /// The scenario starts by itself when somebody enters a play session and nobody else is in any.
    bool StartsScenario = false;
    /// A scenario begins again when it is over, as long as anybody is in a play session.
    bool LoopsScenario = false;
    /// Receives every log line, which begins with the time (UTC), on the server's thread: it must not block.
    /// LogWriter writes to streams that may.
    std::function<void(const std::string&)> Log;
};

/// The reference game server, for embedding in tests and tools: it runs on one thread of its own from
/// construction to destruction. All members may be called from any other thread; what they change is in
/// force when they return.
///
/// A test drives clients against it, switches faults on (Faults.h), pushes what play does not lead to, and
/// waits for what it has received with WaitFor.
class GameServer
{
public:
    /// Listens; throws std::runtime_error when it cannot.
    explicit GameServer(const ServerOptions& options = {});
    /// Drops all connections and stops.
    ~GameServer();
    GameServer(const GameServer&) = delete;
    GameServer& operator=(const GameServer&) = delete;

    unsigned short GetPort() const;

    /// Adds an account or changes its password and rights. Game masters may give CS_GM_ commands.
    void AddAccount(const std::string& name, const std::string& password, bool master);

    /// Sends a packet, which carries its number and whole payload, to one connection or to all. A packet
    /// made with Notification (Notifications.h) has the right widths.
    void Push(PeerID peer, const CNTPacket& packet);
    void PushAll(const CNTPacket& packet);

    /// Loads a scenario (docs/server.md) for StartScenario and the chat line "/scenario"; throws
    /// std::runtime_error naming the line and value that is wrong and what would fit. The name, of its file
    /// say, stands in front of that.
    void LoadScenario(const std::string& text, const std::string& name = {});
    void StartScenario();

    /// Misbehaviour from now on, for one connection or for all, those to come included.
    void SetFaults(const Faults& faults);
    void SetFaults(PeerID peer, const Faults& faults);
    /// Sends what ReplyFault::Held kept back.
    void ReleaseReplies();
    /// Any bytes at all, and a lone header with any number and size.
    void SendBytes(PeerID peer, const std::vector<unsigned char>& bytes);
    void SendHeader(PeerID peer, unsigned short number, unsigned short size);
    /// Ends a connection: in an orderly way, or so that the peer sees a reset.
    void Close(PeerID peer);
    void Reset(PeerID peer);

    /// Blocks until the predicate holds for what has been counted; it is looked at after every change. The
    /// limit only keeps a broken test from hanging. False when it has passed.
    bool WaitFor(const std::function<bool(const ServerCounters&)>& predicate,
                 std::chrono::milliseconds limit = std::chrono::seconds(60)) const;
    /// The same for the packets of one number received so far, from all connections.
    bool WaitForReceived(unsigned short number, unsigned count = 1) const;
    ServerCounters GetCounters() const;
    std::vector<std::string> GetLog() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> Inner;
};

} // namespace Kesra
