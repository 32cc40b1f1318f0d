#pragma once

#include "KesraNTC/base/CLock.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/net/OVERLAPPED_PLUS.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/Platform.h"

#include <memory>

namespace Kesra
{
struct IoResources;
}

/// One TCP socket with overlapped reads and writes signalled by events, and the collection of one packet at a
/// time from its stream: four header bytes first, then exactly the rest.
///
/// The receive thread alone reads and collects; any thread may send, close, and use the counters.
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

    /// Constructs the lock; Init sets everything else.
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
    /// Stores a socket and makes its calls non-blocking, since a send never waits for its own bytes; the
    /// socket before is not closed.
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
    /// Sends len bytes (at most 4096), which may be reused at once. What the socket does not take immediately
    /// follows as an overlapped write from a copy, and only then is the write block's event signalled; a
    /// second sender waits until the first one's bytes are out.
    unsigned long SendPacket(char* data, unsigned long len);

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
    /// Prepares for a new socket: the collection starts at a header, no send is outstanding, no event is set.
    /// Nobody may be receiving.
    void BeginConnection();
    /// Takes in the completion of the overlapped write, if it is complete, once, whichever thread comes
    /// first. False when a write failed; the code is then in `error`.
    bool FinishSend(DWORD& error);
    /// True while a write is outstanding.
    bool IsSendPending() const;
    /// Whether calls on the socket wait. Overlapped operations never do.
    static void SetBlocking(SOCKET socket, bool blocking);

    std::shared_ptr<Kesra::IoResources> Resources; ///< the events and the state of the outstanding write

private:
    void CopyFrom(const CNetIO& other);
    unsigned long CollectHeader(unsigned long n);
    bool WaitForPreviousSend();
    unsigned long SendRest(const char* data, unsigned long len);
    void CountSend(unsigned long sent);
    int SetOption(int option, int value);
    int SetBufferOption(int option, int value);
};
