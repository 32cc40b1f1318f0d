#pragma once

#include "KesraNTC/base/CLock.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/net/OVERLAPPED_PLUS.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/Platform.h"

#include <memory>

namespace Kesra
{
class ClientConnection;
struct IoState;
} // namespace Kesra

/// One TCP socket with overlapped reads and writes signalled by events, and the collection of one packet at a
/// time from its stream: four header bytes first, then exactly the rest.
///
/// The receive thread alone reads and collects; any thread may send, close, and use the counters. No call
/// waits for the peer. Before Init there is no socket and no event: Close, IsConnected and SetSocket work.
class KESRANTC_API CNetIO
{
public:
    // What CollectPacket answers.
    static constexpr unsigned long PacketComplete = 0;  ///< call MakeCompletePacket next
    static constexpr unsigned long PacketMalformed = 2; ///< the stream cannot be followed; end the connection
    static constexpr unsigned long PacketPartial = 5;   ///< issue the next read

    // What SendPacket answers.
    static constexpr unsigned long SendStarted = 0; ///< all bytes are sent or on their way
    static constexpr unsigned long SendFailed = 2;  ///< nothing more of the packet will be sent

    /// Constructs the lock, without a socket; Init sets everything else.
    CNetIO();
    /// Destroys the lock and lets go of the events. The socket stays open.
    virtual ~CNetIO();
    // A copy shares the events and the send state and holds the same socket value; nothing copies a live one.
    CNetIO(const CNetIO&);
    CNetIO& operator=(const CNetIO&);

    /// Sets the initial state: two new auto-reset events, no socket, a header of four bytes wanted.
    void Init();
    /// Closes the socket; outstanding operations fail. The packet being collected stays. Any thread.
    void Close();
    /// True while there is a socket.
    bool IsConnected();
    /// The socket's number; that of INVALID_SOCKET when there is none.
    unsigned int GetSocket();
    /// Stores a socket, whose blocking mode stays; the socket before is not closed.
    void SetSocket(unsigned int socket);

    /// The receive buffer, 4096 bytes; the packet being collected starts at its first byte.
    char* GetBuf() { return Buf; }
    /// The read block.
    OVERLAPPED_PLUS* GetOverlappedIN() { return &OverlappedIN; }
    /// The write block.
    OVERLAPPED_PLUS* GetOverlappedOUT() { return &OverlappedOUT; }
    /// Stores the owner's word in both blocks.
    void AttachClientToOVERLAPPED(unsigned long client);

    /// Starts the next overlapped read, of exactly the bytes the current stage lacks. False, and a line in
    /// the log, when it cannot be started.
    bool IssueNetRead();
    /// Accounts for n bytes (at least 1) that a read delivered into the buffer.
    unsigned long CollectPacket(unsigned long n);
    /// Sends len bytes (at most 4096). It never waits for the peer. Any thread.
    ///
    /// With a receive thread: what the socket does not take at once waits in the outbox and follows in order;
    /// the data may be reused at once, and every byte is counted (GetSendBytes) once the system has it.
    /// Failed, too, when the packet does not fit into what may wait (SetOutboxLimit).
    ///
    /// Without one: starts an overlapped send with the write block, whose event is signalled on completion.
    /// The data must stay until then, one send can be outstanding, and the caller counts. Windows cancels the
    /// send when the thread that called ends before it has completed.
    unsigned long SendPacket(char* data, unsigned long len);
    /// Bytes that wait in the outbox once the socket has been offered them again; a game paces itself by it.
    /// Any thread, in handlers too.
    unsigned long GetUnsentBytes();
    /// How many bytes may wait in the outbox: 1 MiB unless set, at least 4096. Any thread; stays for later
    /// connections.
    void SetOutboxLimit(unsigned long bytes);

    /// Adds to the bytes sent since the last reset. Any thread, as all counters.
    void AddSendBytes(unsigned long n);
    /// Adds to the bytes received since the last reset.
    void AddRecvBytes(unsigned long n);
    /// Counts sent bytes from 0 again.
    void InitSendBytes();
    /// Counts received bytes from 0 again.
    void InitRecvBytes();
    /// Bytes whose send completed since the last reset.
    unsigned long GetSendBytes();
    /// Bytes received since the last reset.
    unsigned long GetRecvBytes();

    /// SO_RCVTIMEO: 0 when the value was set and reads back the same, else -1, as all socket options.
    int SetRecvTimeOut(int milliseconds);
    /// SO_SNDTIMEO.
    int SetSendTimeOut(int milliseconds);
    /// SO_SNDBUF; a value that does not read back is logged.
    int SetSendBuffer(int bytes);
    /// SO_RCVBUF; a value that does not read back is logged.
    int SetRecvBuffer(int bytes);

    OVERLAPPED_PLUS OverlappedIN;  ///< the read block
    OVERLAPPED_PLUS OverlappedOUT; ///< the write block
    CLock Lock;                    ///< the connection's lock: held while packets are dispatched
    char Buf[CNTPacket::Capacity]; ///< the packet being collected
    unsigned int RecvSize;         ///< bytes of it already in Buf
    unsigned int RemainSize;       ///< bytes the current stage still wants
    unsigned int RecvStage;        ///< 0 while collecting the header, 1 while collecting the body
    unsigned int PacketSize;       ///< its whole size, from its header
    SOCKET Socket;                 ///< INVALID_SOCKET when there is none
    unsigned int SendBytes;        ///< see GetSendBytes
    unsigned int RecvBytes;        ///< see GetRecvBytes

protected:
    /// Prepares for a new socket: the collection starts at a header, no event is set. Nobody may be
    /// receiving.
    void BeginConnection();
    /// Sends what the socket takes of what waits in the outbox. False, with the code, when sending has
    /// failed.
    bool AdvanceSends(Kesra::ClientConnection& connection, int& error);

    std::shared_ptr<Kesra::IoState> Io; ///< null before Init

private:
    void CopyFrom(const CNetIO& other);
    unsigned long CollectHeader(unsigned long n);
    unsigned long SendBare(char* data, unsigned long len);
    unsigned long SendThrough(Kesra::ClientConnection& connection, const char* data, unsigned long len);
    void CountSent(Kesra::ClientConnection& connection, unsigned long n);
    int SetOption(int option, int value);
    int SetBufferOption(int option, int value);
};
