#pragma once

#include "KesraNTC/base/COLEDateTime.h"
#include "KesraNTC/net/CNTBase.h"
#include "KesraNTC/net/CNetClientIO.h"
#include "KesraNTC/net/GS_RESULT.h"

#include <atomic>
#include <memory>
#include <vector>

class CNTProxy;
class CNTStub;

namespace Kesra
{
class ReceiveThread;
}

/// The game's connection to one game server: connects, runs the receive thread, queues received packets and
/// hands them to ProcessPacketFromServer, sends, counts traffic and answers the server's clock.
///
/// The order of a game: construct client, proxy and stub; Attach both; SetServerAddr, SetServerPort, Startup;
/// ConnectToServer; then every frame ProcessQueuedMessageFromServer and UpdateFrame, requests through the
/// proxy at any time, Disconnect at the end. Connecting again on the same object is allowed.
///
/// Received packets are dispatched on the thread that calls ProcessQueuedMessageFromServer; while a request
/// of the attached proxy waits for its reply, or when ProcessOnRecvThread is set, also on the receive thread.
/// The connection's lock is held meanwhile, so that one packet is dispatched at a time.
class KESRANTC_API CNTBaseClient : public CNetClientIO, public CNTBase
{
public:
    static constexpr unsigned long SendWithoutBuffer = 3; ///< SendToServer: the packet has no buffer

    CNTBaseClient();
    /// Closes the socket and waits for every receive thread of this object. ProcessDisconnection is not
    /// called any more. A class that implements it calls StopReceiving first in its own destructor: its part
    /// of the object is gone before this one runs.
    ~CNTBaseClient() override;
    // A copy holds the same values and shares the events; it has no receive thread of its own.
    CNTBaseClient(const CNTBaseClient&);
    CNTBaseClient& operator=(const CNTBaseClient&);

    /// The connection ended: called once for every connection whose first read was started, on the receive
    /// thread. It may call ConnectToServer again, and it may delete the client.
    virtual void ProcessDisconnection() = 0;
    /// One received packet, its position at 0, the connection's lock held. The result is not looked at.
    virtual unsigned long ProcessPacketFromServer(CNTPacket& packet);

    /// Where pushed messages go. Not owned; outlives the connection. True.
    bool Attach(CNTStub* stub);
    /// Whose replies are awaited; the proxy sends through this client from now on. Not owned; outlives the
    /// connection. True.
    bool Attach(CNTProxy* proxy);

    /// A dotted IPv4 address or host name of at most 29 characters. False, and the old address stays, for a
    /// null pointer or a longer text.
    bool SetServerAddr(const char* address);
    /// Only the low 16 bits are used.
    void SetServerPort(unsigned long port);

    /// Starts Winsock 2.2, without which nothing connects. False, with a line in the log, when it cannot.
    bool Startup();
    /// Makes the overlapped socket. INVALID_SOCKET, with a line in the log and the Startup undone, when it
    /// cannot.
    unsigned int CreateSocket();
    /// Resolves, connects (blocking) and starts the receive thread. An open connection of this object is
    /// closed first. False, with a line in the log and no socket, when any of it fails.
    bool ConnectToServer();
    /// Starts the receive thread; ConnectToServer has done so already. Always true.
    bool RecvFromServer();
    /// The receive thread's procedure; the argument is the client.
    static void RecvFromServer_Proc(void* client);
    /// Waits until the receive threads of this object have ended, at most so many milliseconds. True when
    /// there is none any more; at once false on such a thread itself. Called from a handler on another thread
    /// it waits in vain when the receive thread has packets to dispatch.
    bool WaitForReceiveThread(unsigned long milliseconds);

    /// Hands every queued packet in order to ProcessPacketFromServer and empties the queue. 0. Waits while
    /// another thread dispatches; called from a handler it does nothing.
    unsigned long ProcessQueuedMessageFromServer();
    /// 0 = sent or on its way, 2 = failed, 3 = the packet has no buffer. The packet may be reused at once.
    /// Any thread.
    unsigned long SendToServer(CNTPacket& packet) override;
    /// Closes the socket; the receive thread ends after ProcessDisconnection. Any thread.
    void Disconnect() override;
    /// Once per frame: CheckTraffic.
    void UpdateFrame();
    /// Resets the traffic counters when the last reset is 5 seconds ago or more. Any thread.
    void CheckTraffic();

    /// Takes in a clock message (server time, latency, both milliseconds); every one but the first is
    /// answered.
    GS_RESULT SC_SetNetTime(unsigned long& serverTime, unsigned long& latency);
    /// Sends the clock answer: the server time as estimated here.
    GS_RESULT CS_ResponseNetTime(unsigned long& estimate);
    /// Local tick count at the last clock message, in milliseconds; 0 = none yet. Any thread.
    void SetNetTime(unsigned long milliseconds);
    unsigned long GetNetTime();
    /// Latency of the last clock message, in milliseconds. Any thread.
    void SetLatency(unsigned long milliseconds);
    unsigned long GetLatency();

    bool ProcessOnRecvThread; ///< dispatch on the receive thread after every read; set it before connecting
    CNTProxy* Proxy;          ///< the attached proxy, or null
    CNTStub* Stub;            ///< the attached stub, or null
    unsigned int ServerPort;  ///< only the low 16 bits are used
    char ServerAddr[30];      ///< NUL-terminated
    unsigned int NetTime;     ///< see GetNetTime
    unsigned int ServerTime;  ///< the server time of the last clock message, in milliseconds
    unsigned int Latency;     ///< see GetLatency
    COLEDateTime ConnectTime; ///< local time of the last successful connect, under QueueLock
    COLEDateTime TrafficTime; ///< local time of the last reset of the traffic counters, under QueueLock

protected:
    /// What the destructor does, to be called first in the destructor of a derived class. The client does not
    /// connect again.
    void StopReceiving();

private:
    void ReceiveLoop(Kesra::ReceiveThread& thread);
    bool TakeRead(CNTPacket& packet, Kesra::ReceiveThread& thread);
    bool DispatchHere(Kesra::ReceiveThread& thread, bool isComplete);
    bool TakeSendCompletion();
    bool ResolveServer(sockaddr_in& address);
    bool Connect();
    bool IsConnectingRefused();
    std::shared_ptr<Kesra::ReceiveThread> AddReceiver();
    std::shared_ptr<Kesra::ReceiveThread> BeginReceiver();
    std::shared_ptr<Kesra::ReceiveThread> NewestReceiver();
    std::vector<std::shared_ptr<Kesra::ReceiveThread>> AllReceivers();
    std::size_t DispatchFlood();
    void GiveBackQueue(std::size_t dispatched);
    void CopyFrom(const CNTBaseClient& other);

    CLock ConnectLock;                   ///< one ConnectToServer at a time
    std::atomic<bool> IsStopping{false}; ///< the client is being destroyed
    /// The newest connection's last; before it those that still run code of the game. Under QueueLock.
    std::vector<std::shared_ptr<Kesra::ReceiveThread>> Receivers;
    Kesra::ReceivedPackets Dispatching; ///< the packets of the drain in progress, under Lock
    std::size_t LastDispatched = 0;     ///< packets of the previous drain
    bool InDispatch = false;
};
