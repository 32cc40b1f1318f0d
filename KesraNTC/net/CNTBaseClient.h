#pragma once

#include "KesraNTC/base/COLEDateTime.h"
#include "KesraNTC/net/CNTBase.h"
#include "KesraNTC/net/CNTStatistics.h"
#include "KesraNTC/net/CNetClientIO.h"
#include "KesraNTC/net/END_REASON.h"
#include "KesraNTC/net/GS_RESULT.h"

#include <memory>

class CNTProxy;
class CNTStub;

namespace Kesra
{
struct ClientState;
struct ConnectionKey;
class ClientConnection;
} // namespace Kesra

/// The game's connection to one game server: connects, runs the receive thread, queues received packets and
/// hands them to ProcessPacketFromServer, sends, counts traffic and answers the server's clock.
///
/// The order of a game: construct client, proxy and stub; Attach both; SetServerAddr, SetServerPort, Startup;
/// ConnectToServer; then every frame ProcessQueuedMessageFromServer and UpdateFrame, requests through the
/// proxy at any time, Disconnect at the end. Connecting again on the same object is allowed.
///
/// Received packets are dispatched on the thread that calls ProcessQueuedMessageFromServer; while a request
/// of the attached proxy waits for its reply, or when ProcessOnRecvThread is set, also on the receive thread.
/// The connection's lock is held meanwhile, so that one packet is dispatched at a time. An exception that a
/// handler throws on the game's thread leaves ProcessQueuedMessageFromServer: its packet counts as handled,
/// those behind it stay queued in order. On the receive thread, and on Windows through the DLL unless game
/// and DLL share their C++ runtime, it ends the process.
///
/// Nothing waits for the server but ConnectToServer and waiting requests. Every connection that
/// ConnectToServer has begun ends in one call of ProcessDisconnection; GetEndReason says why. A normal
/// Disconnect logs "error 995" of the read that it ends: that is how an end on purpose looks.
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

    /// The connection ended: called once for every connection that was begun, on its receive thread. It may
    /// call Disconnect and ConnectToServer as often as it likes, and it may delete the client at any moment.
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
    /// Resolves, connects and starts the receive thread; true once its first read is under way. An open
    /// connection of this object is closed first. False, with a line in the log and no socket, when any of it
    /// fails. Waits 20 seconds at most for the connect, which Disconnect ends; a host name adds what the
    /// system's resolver takes. IPv4.
    ///
    /// Any thread, also inside ProcessDisconnection. There it is refused (error 10037 in the log) when
    /// another thread has begun a newer connection meanwhile, and so it is while the client is being
    /// destroyed.
    bool ConnectToServer();
    /// Starts the receive thread on a socket that the game has made and connected itself; the socket becomes
    /// non-blocking. ConnectToServer has done so already. Always true.
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
    /// Closes the socket, drops what waits in the outbox and ends a connect that another thread waits for;
    /// the receive thread ends after ProcessDisconnection. Any thread. On a receive thread it concerns the
    /// newest connection that was begun on that thread, else the thread's own; and when a request calls it,
    /// the connection on which the request was made: a newer one is left alone.
    void Disconnect() override;
    /// Why the newest connection ended; in ProcessDisconnection the one that it tells of. Any thread.
    END_REASON GetEndReason();
    /// The Winsock code that came with it, such as 10054 for a reset; 0 for none. Any thread.
    unsigned long GetEndError();
    /// What the newest connection has carried so far. Any thread.
    CNTStatistics GetStatistics();
    /// After how many seconds a server that neither acknowledges nor answers ends the connection, idle or
    /// with bytes in flight: 60 unless set, 0 for the system's own limits (hours). Nothing but TCP's own
    /// probes travels for it. Concerns the sockets that ConnectToServer makes; acts at once and on later
    /// ones. Any thread.
    void SetSilenceLimit(unsigned long seconds);
    /// Whether small packets leave at once (TCP_NODELAY), true unless set. For the same sockets. Any thread.
    void SetNoDelay(bool noDelay);

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
    COLEDateTime ConnectTime; ///< local time of the last successful connect
    COLEDateTime TrafficTime; ///< local time of the last reset of the traffic counters

protected:
    /// What the destructor does, to be called first in the destructor of a derived class. The client does not
    /// connect again.
    void StopReceiving();

private:
    friend class CNTProxy;
    friend class CNTProxy_CLToGS;

    bool BeginConnecting(std::shared_ptr<Kesra::ClientConnection>& connection);
    bool IsConnectingRefused();
    SOCKET MakeSocket();
    bool ResolveServer(sockaddr_in& address);
    bool Connect(SOCKET socket);
    int WaitForConnect(SOCKET socket, HANDLE connected);
    std::shared_ptr<Kesra::ClientConnection> Publish(SOCKET socket);
    void StartReceiver(Kesra::ClientConnection& connection);
    std::shared_ptr<Kesra::ClientConnection> AddReceiver();
    void AddReceiver(const std::shared_ptr<Kesra::ClientConnection>& connection);
    std::shared_ptr<Kesra::ClientConnection> BeginReceiver();
    void AbortConnecting();
    void CloseConnection(unsigned long long generation);

    std::shared_ptr<Kesra::ClientConnection> NewestConnection();
    std::shared_ptr<Kesra::ClientConnection> SpokenConnection();
    Kesra::ConnectionKey GetConnectionKey() const;
    void NoteTimeOut(unsigned long long generation);
    void ApplyOptions(SOCKET socket);
    void ApplyOptionsToOwnSocket();

    void ReceiveLoop(Kesra::ClientConnection& connection);
    bool TakeRead(Kesra::ClientConnection& connection);
    bool Collect(Kesra::ClientConnection& connection, unsigned long received, bool& isComplete);
    void QueueCollected();
    bool TakeAhead(Kesra::ClientConnection& connection);
    static DWORD TakeWholePackets(void* context, const char* data, DWORD size);
    bool WaitForRoom(Kesra::ClientConnection& connection);
    bool IsRoomNeeded();
    bool IsDispatchedHere() const;
    bool DispatchHere(Kesra::ClientConnection& connection, bool isComplete);
    void DispatchAhead(Kesra::ClientConnection& connection);
    bool TakeSendCompletion(Kesra::ClientConnection& connection);
    bool IsReplyAwaited() const;
    void CopyFrom(const CNTBaseClient& other);

    std::shared_ptr<Kesra::ClientState> State;
};
