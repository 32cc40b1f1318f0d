#include "KesraNTC/net/CNetIO.h"

#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/base/Trace.h"
#include "KesraNTC/base/private/Korean.h"
#include "KesraNTC/net/private/DisconnectScope.h"
#include "KesraNTC/net/private/IoState.h"
#include "KesraNTC/net/private/PacketHeader.h"
#include "KesraNTC/net/private/SocketErrors.h"
#include "KesraNTC/platform/private/CancelTransfers.h"

#include <algorithm>
#include <atomic>
#include <utility>

using namespace Kesra;

namespace
{

// Another thread may close the socket or read a counter at any time.
template <class T> std::atomic_ref<T> Shared(T& value)
{
    return std::atomic_ref<T>(value);
}

void CloseSocket(SOCKET socket)
{
    if (socket == INVALID_SOCKET)
        return;
    const int on = 1;
    setsockopt(socket, SOL_SOCKET, SO_DONTLINGER, reinterpret_cast<const char*>(&on), sizeof on);
    CancelTransfers(socket);
    shutdown(socket, SD_BOTH);
    closesocket(socket);
}

void LogEmptySend()
{
    CDebug::AppendDebugMsg("%d 사이즈의 패킷을 송신했당!!!\n"_949, 0);
    CDebug::AppendDebugMsg("Send Overlapped구조체에서 에러났다."_949);
}

} // namespace

CNetIO::CNetIO()
    : OverlappedIN{},
      OverlappedOUT{},
      RecvSize(0),
      RemainSize(CNTPacket::HeaderSize),
      RecvStage(0),
      PacketSize(0),
      Socket(INVALID_SOCKET),
      SendBytes(0),
      RecvBytes(0)
{
}

CNetIO::~CNetIO() = default;

CNetIO::CNetIO(const CNetIO& other)
{
    CopyFrom(other);
}

CNetIO& CNetIO::operator=(const CNetIO& other)
{
    if (this != &other)
        CopyFrom(other);
    return *this;
}

void CNetIO::CopyFrom(const CNetIO& other)
{
    OverlappedIN = other.OverlappedIN;
    OverlappedOUT = other.OverlappedOUT;
    Lock = other.Lock;
    std::memcpy(Buf, other.Buf, sizeof Buf);
    RecvSize = other.RecvSize;
    RemainSize = other.RemainSize;
    RecvStage = other.RecvStage;
    PacketSize = other.PacketSize;
    Socket = other.Socket;
    SendBytes = other.SendBytes;
    RecvBytes = other.RecvBytes;
    Io = other.Io;
}

void CNetIO::Init()
{
    Io = std::make_shared<IoState>();
    OverlappedIN = OVERLAPPED_PLUS{};
    OverlappedOUT = OVERLAPPED_PLUS{};
    OverlappedIN.hEvent = Io->Read.Get();
    OverlappedOUT.hEvent = Io->Write.Get();
    OverlappedIN.IoType = 0;
    OverlappedOUT.IoType = 1;
    AttachClientToOVERLAPPED(static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(this)));
    std::memset(Buf, 0, sizeof Buf);
    RecvSize = RecvStage = PacketSize = 0;
    RemainSize = CNTPacket::HeaderSize;
    SendBytes = RecvBytes = 0;
    Socket = INVALID_SOCKET;
}

void CNetIO::BeginConnection()
{
    // A closed socket may complete its read a moment later.
    if (!HasOverlappedIoCompleted(&OverlappedIN))
        Io->Read.Wait(1000);
    RecvSize = RecvStage = PacketSize = 0;
    RemainSize = CNTPacket::HeaderSize;
    Io->Read.Reset();
    Io->Wake.Reset();
}

void CNetIO::Close()
{
    // ProcessDisconnection may connect again or delete this object while the operations end one by one: its
    // own call waits here until none of them is left, and nothing of this object is touched after the first.
    const std::shared_ptr<IoState> io = Io;
    if (io == nullptr) {
        CloseSocket(std::exchange(Socket, INVALID_SOCKET));
        return;
    }
    const Held closing(io->CloseLock);
    const SOCKET socket = Shared(Socket).exchange(INVALID_SOCKET);
    if (socket == INVALID_SOCKET)
        return;
    std::shared_ptr<ClientConnection> closed;
    {
        const Held sending(io->SendLock, SendRole);
        if (io->Current != nullptr && io->Current->Socket == socket)
            closed = io->Current;
    }
    if (closed != nullptr)
        closed->NoteClosed();
    CloseSocket(socket);
    if (closed == nullptr)
        return;
    {
        const Held sending(io->SendLock, SendRole);
        closed->Out.Drop();
    }
    // Wherever the receive thread waits, and whether or not the system tells it.
    io->Read.Set();
    io->Wake.Set();
}

bool CNetIO::IsConnected()
{
    return Shared(Socket).load() != INVALID_SOCKET;
}

unsigned int CNetIO::GetSocket()
{
    return static_cast<unsigned int>(Shared(Socket).load());
}

void CNetIO::SetSocket(unsigned int socket)
{
    if (Io == nullptr) {
        Socket = static_cast<SOCKET>(socket);
        return;
    }
    const Held replacing(Io->CloseLock);
    ++Io->Generation;
    Shared(Socket).store(static_cast<SOCKET>(socket));
}

void CNetIO::AttachClientToOVERLAPPED(unsigned long client)
{
    OverlappedIN.Client = OverlappedOUT.Client = client;
}

bool CNetIO::IssueNetRead()
{
    if (RecvSize + RemainSize > sizeof Buf) {
        CDebug::AppendDebugMsg("Recv Buffer가 꽉차서 IssueNetRead 그냥 리턴한다..\n"_949);
        return false;
    }
    WSABUF buffer{RemainSize, Buf + RecvSize};
    DWORD received = 0;
    DWORD flags = 0;
    if (WSARecv(Shared(Socket).load(), &buffer, 1, &received, &flags, &OverlappedIN, nullptr) == 0)
        return true;
    const int error = WSAGetLastError();
    if (error == WSA_IO_PENDING)
        return true;
    LogSocketError("Recv() ", error);
    WSASetLastError(error);
    return false;
}

unsigned long CNetIO::CollectPacket(unsigned long n)
{
    if (RecvStage == 0)
        return CollectHeader(n);
    if (RemainSize < n) {
        CDebug::AppendDebugMsg("원하는 길이보다 더 긴 메시지가 왔다. 메시지 길이 : %d\n"_949,
                               static_cast<int>(n));
        return PacketMalformed;
    }
    RemainSize -= static_cast<unsigned int>(n);
    RecvSize += static_cast<unsigned int>(n);
    return RemainSize == 0 ? PacketComplete : PacketPartial;
}

unsigned long CNetIO::CollectHeader(unsigned long n)
{
    const unsigned long total = RecvSize + n;
    if (total > CNTPacket::HeaderSize) {
        CDebug::AppendDebugMsg("헤더길이가 4바이트 보다 크다\n"_949);
        return PacketMalformed;
    }
    if (total < CNTPacket::HeaderSize) {
        RecvSize = static_cast<unsigned int>(total);
        RemainSize = CNTPacket::HeaderSize - RecvSize;
        return PacketPartial;
    }
    std::uint16_t header[2];
    std::memcpy(header, Buf, sizeof header);
    const unsigned number = header[0];
    const unsigned size = header[1];
    if (!IsUsualNumber(number))
        CDebug::AppendDebugMsg("패킷의 메시지 번호가 이상하다. 메시지 번호 : %d\n"_949, number);
    if (!IsPossibleSize(size)) {
        CDebug::AppendDebugMsg("메시지가 너무 길다. 패킷번호 : %d --- 메시지길이 : %d\n"_949, number, size);
        return PacketMalformed;
    }
    RecvSize = CNTPacket::HeaderSize;
    RemainSize = size - CNTPacket::HeaderSize;
    RecvStage = 1;
    PacketSize = size;
    return RemainSize == 0 ? PacketComplete : PacketPartial;
}

unsigned long CNetIO::SendPacket(char* data, unsigned long len)
{
    if (len > CNTPacket::Capacity) {
        TRACE("버퍼 최대길이보다 많은 데이타를 보내려고 한다.\n"_949);
        return SendFailed;
    }
    if (Io == nullptr)
        return SendBare(data, len);
    const Held sending(Io->SendLock, SendRole);
    const DisconnectScope* scope = DisconnectScope::Find(Io.get(), DisconnectScope::Request);
    if (scope != nullptr && scope->GetGeneration() != Io->Generation)
        return SendFailed;
    ClientConnection* connection = Io->Current.get();
    if (connection == nullptr || connection->Socket != Shared(Socket).load())
        return SendBare(data, len);
    return SendThrough(*connection, data, len);
}

unsigned long CNetIO::SendBare(char* data, unsigned long len)
{
    WSABUF buffer{static_cast<ULONG>(len), data};
    DWORD sent = 0;
    if (WSASend(Shared(Socket).load(), &buffer, 1, &sent, 0, &OverlappedOUT, nullptr) == 0)
        return SendStarted;
    const int error = WSAGetLastError();
    if (error == WSA_IO_PENDING)
        return SendStarted;
    LogSocketError("Send() ", error);
    return SendFailed;
}

unsigned long CNetIO::SendThrough(ClientConnection& connection, const char* data, unsigned long len)
    KESRANTC_LOCKING(requires_capability(SendRole))
{
    SendProgress progress;
    const bool isTaken = connection.Out.Send(data, len, Io->OutboxLimit, progress);
    CountSent(connection, progress.Sent);
    if (isTaken) {
        CountUp(connection.PacketsSent, 1);
        if (len == 0)
            LogEmptySend();
        return SendStarted;
    }
    if (progress.Error == 0)
        connection.NoteEnd(END_OUTBOX_FULL, WSAENOBUFS);
    else
        LogSocketError("Send() ", progress.Error);
    return SendFailed;
}

bool CNetIO::AdvanceSends(ClientConnection& connection, int& error)
{
    const Held sending(Io->SendLock, SendRole);
    SendProgress progress;
    const bool isGoing = connection.Out.Advance(progress, true);
    CountSent(connection, progress.Sent);
    error = progress.Error;
    return isGoing;
}

void CNetIO::CountSent(ClientConnection& connection, unsigned long n)
{
    AddSendBytes(n);
    CountUp(connection.BytesSent, n);
}

unsigned long CNetIO::GetUnsentBytes()
{
    if (Io == nullptr)
        return 0;
    const Held sending(Io->SendLock, SendRole);
    ClientConnection* connection = Io->Current.get();
    if (connection == nullptr)
        return 0;
    // Whoever waits here for the outbox to empty may be a handler on the receive thread.
    if (connection->Out.IsBusy() && connection->Socket == Shared(Socket).load()) {
        SendProgress progress;
        connection->Out.Advance(progress, false);
        CountSent(*connection, progress.Sent);
    }
    return static_cast<unsigned long>(connection->Out.GetUnsent());
}

void CNetIO::SetOutboxLimit(unsigned long bytes)
{
    if (Io != nullptr)
        Io->OutboxLimit = std::max<std::size_t>(bytes, CNTPacket::Capacity);
}

void CNetIO::AddSendBytes(unsigned long n)
{
    Shared(SendBytes).fetch_add(static_cast<unsigned int>(n), std::memory_order_relaxed);
}

void CNetIO::AddRecvBytes(unsigned long n)
{
    Shared(RecvBytes).fetch_add(static_cast<unsigned int>(n), std::memory_order_relaxed);
}

void CNetIO::InitSendBytes()
{
    Shared(SendBytes).store(0, std::memory_order_relaxed);
}

void CNetIO::InitRecvBytes()
{
    Shared(RecvBytes).store(0, std::memory_order_relaxed);
}

unsigned long CNetIO::GetSendBytes()
{
    return Shared(SendBytes).load(std::memory_order_relaxed);
}

unsigned long CNetIO::GetRecvBytes()
{
    return Shared(RecvBytes).load(std::memory_order_relaxed);
}

int CNetIO::SetOption(int option, int value)
{
    const SOCKET socket = Shared(Socket).load();
    if (setsockopt(socket, SOL_SOCKET, option, reinterpret_cast<const char*>(&value), sizeof value) != 0)
        return -1;
    int actual = 0;
    int size = sizeof actual;
    if (getsockopt(socket, SOL_SOCKET, option, reinterpret_cast<char*>(&actual), &size) != 0)
        return -1;
    return actual == value ? 0 : 1;
}

int CNetIO::SetBufferOption(int option, int value)
{
    const int result = SetOption(option, value);
    if (result > 0)
        CDebug::AppendDebugMsg("Error. setsockopt() didn't work actually.\n");
    return result == 0 ? 0 : -1;
}

int CNetIO::SetRecvTimeOut(int milliseconds)
{
    return SetOption(SO_RCVTIMEO, milliseconds) == 0 ? 0 : -1;
}

int CNetIO::SetSendTimeOut(int milliseconds)
{
    return SetOption(SO_SNDTIMEO, milliseconds) == 0 ? 0 : -1;
}

int CNetIO::SetSendBuffer(int bytes)
{
    return SetBufferOption(SO_SNDBUF, bytes);
}

int CNetIO::SetRecvBuffer(int bytes)
{
    return SetBufferOption(SO_RCVBUF, bytes);
}
