#include "KesraNTC/net/CNetIO.h"

#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/base/Korean.h"
#include "KesraNTC/base/Trace.h"
#include "KesraNTC/net/IoResources.h"
#include "KesraNTC/net/SocketErrors.h"

#include <algorithm>
#include <atomic>

using namespace Kesra;

namespace
{

// Another thread may close the socket or read a counter at any time.
template <class T> std::atomic_ref<T> Shared(T& value)
{
    return std::atomic_ref<T>(value);
}

constexpr unsigned LowestUsualNumber = 101;
constexpr unsigned HighestUsualNumber = 62000;

} // namespace

CNetIO::CNetIO() = default;

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
    Resources = other.Resources;
}

void CNetIO::Init()
{
    Resources = std::make_shared<IoResources>();
    OverlappedIN = OVERLAPPED_PLUS{};
    OverlappedOUT = OVERLAPPED_PLUS{};
    OverlappedIN.hEvent = Resources->Read.Get();
    OverlappedOUT.hEvent = Resources->Write.Get();
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
    // A sender of the previous connection leaves once its socket is closed.
    const Locked sending(Resources->SendLock);
    const Locked writing(Resources->WriteLock);
    RecvSize = RecvStage = PacketSize = 0;
    RemainSize = CNTPacket::HeaderSize;
    Resources->Read.Reset();
    Resources->Write.Reset();
    Resources->IsWriting = false;
    Resources->SendError = 0;
}

void CNetIO::Close()
{
    // ProcessDisconnection may connect again or delete this object while the operations end one by one: its
    // own call waits here until none of them is left, and nothing of this object is touched after the first.
    const std::shared_ptr<IoResources> resources = Resources;
    const Locked closing(resources->CloseLock);
    const SOCKET socket = Shared(Socket).exchange(INVALID_SOCKET);
    if (socket == INVALID_SOCKET)
        return;
    const int on = 1;
    setsockopt(socket, SOL_SOCKET, SO_DONTLINGER, reinterpret_cast<const char*>(&on), sizeof on);
    shutdown(socket, SD_BOTH);
    closesocket(socket);
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
    // Sends try what the socket takes at once and never wait.
    SetBlocking(static_cast<SOCKET>(socket), false);
    Shared(Socket).store(static_cast<SOCKET>(socket));
}

void CNetIO::SetBlocking(SOCKET socket, bool blocking)
{
    u_long nonBlocking = blocking ? 0 : 1;
    ioctlsocket(socket, FIONBIO, &nonBlocking);
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
    if (number < LowestUsualNumber || number > HighestUsualNumber)
        CDebug::AppendDebugMsg("패킷의 메시지 번호가 이상하다. 메시지 번호 : %d\n"_949, number);
    if (size > CNTPacket::Capacity || size < CNTPacket::HeaderSize) {
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
    const Locked sending(Resources->SendLock);
    if (!WaitForPreviousSend())
        return SendFailed;
    // Most sends fit into the socket at once: the sender counts them itself, and nobody is woken.
    WSABUF buffer{static_cast<ULONG>(len), data};
    DWORD sent = 0;
    if (WSASend(Shared(Socket).load(), &buffer, 1, &sent, 0, nullptr, nullptr) != 0) {
        const int error = WSAGetLastError();
        if (error != WSAEWOULDBLOCK) {
            LogSocketError("Send() ", error);
            return SendFailed;
        }
        sent = 0;
    }
    if (sent == len) {
        CountSend(sent);
        return SendStarted;
    }
    AddSendBytes(sent);
    return SendRest(data + sent, len - sent);
}

unsigned long CNetIO::SendRest(const char* data, unsigned long len)
{
    std::memcpy(Resources->Rest, data, len);
    // The receive thread may look at any time, and OverlappedOUT still tells of the previous write.
    const Locked beginning(Resources->WriteLock);
    Resources->SendFinished.Reset();
    Resources->IsWriting = true;
    WSABUF buffer{static_cast<ULONG>(len), Resources->Rest};
    DWORD sent = 0;
    if (WSASend(Shared(Socket).load(), &buffer, 1, &sent, 0, &OverlappedOUT, nullptr) == 0)
        return SendStarted;
    const int error = WSAGetLastError();
    if (error == WSA_IO_PENDING)
        return SendStarted;
    Resources->IsWriting = false;
    LogSocketError("Send() ", error);
    return SendFailed;
}

bool CNetIO::WaitForPreviousSend()
{
    const HANDLE events[] = {Resources->Write.Get(), Resources->SendFinished.Get()};
    while (Resources->IsWriting) {
        DWORD error = 0;
        if (WaitForMultipleObjects(2, events, FALSE, INFINITE) == WAIT_OBJECT_0 && !FinishSend(error)) {
            // The receive thread ends the connection.
            Resources->SendError = error;
            Resources->Write.Set();
            return false;
        }
    }
    return Resources->SendError == 0;
}

bool CNetIO::FinishSend(DWORD& error)
{
    const Locked finishing(Resources->WriteLock);
    if (!Resources->IsWriting) {
        error = Resources->SendError;
        return error == 0;
    }
    DWORD sent = 0;
    DWORD flags = 0;
    const bool done =
        WSAGetOverlappedResult(Shared(Socket).load(), &OverlappedOUT, &sent, FALSE, &flags) != FALSE;
    error = done ? 0 : static_cast<DWORD>(WSAGetLastError());
    if (error == WSA_IO_INCOMPLETE) {
        error = 0;
        return true;
    }
    if (done)
        CountSend(sent);
    Resources->IsWriting = false;
    Resources->SendFinished.Set();
    return done;
}

bool CNetIO::IsSendPending() const
{
    return Resources->IsWriting.load(std::memory_order_relaxed);
}

void CNetIO::CountSend(unsigned long sent)
{
    AddSendBytes(sent);
    if (sent == 0) {
        CDebug::AppendDebugMsg("%d 사이즈의 패킷을 송신했당!!!\n"_949, 0);
        CDebug::AppendDebugMsg("Send Overlapped구조체에서 에러났다."_949);
    }
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
