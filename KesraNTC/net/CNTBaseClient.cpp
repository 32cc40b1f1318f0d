#include "KesraNTC/net/CNTBaseClient.h"

#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/base/Korean.h"
#include "KesraNTC/base/Trace.h"
#include "KesraNTC/rpc/CNTProxy.h"
#include "KesraNTC/rpc/MessageNumbers.h"

#include <algorithm>
#include <atomic>

using namespace Kesra;

namespace
{

constexpr double TrafficPeriodSeconds = 5.0;

// The game's thread may ask for the clock while the receive thread takes in a clock message.
std::atomic_ref<unsigned int> Shared(unsigned int& value)
{
    return std::atomic_ref<unsigned int>(value);
}

/// True while a queue is being dispatched.
class DispatchMark
{
public:
    explicit DispatchMark(bool& inDispatch) : InDispatch(inDispatch) { InDispatch = true; }
    ~DispatchMark() { InDispatch = false; }
    DispatchMark(const DispatchMark&) = delete;
    DispatchMark& operator=(const DispatchMark&) = delete;

private:
    bool& InDispatch;
};

} // namespace

CNTBaseClient::CNTBaseClient()
    : ProcessOnRecvThread(false),
      Proxy(nullptr),
      Stub(nullptr),
      ServerPort(0),
      ServerAddr{},
      NetTime(0),
      ServerTime(0),
      Latency(0)
{
    Dispatching.Whole.reserve(InitialQueue);
    Init();
}

CNTBaseClient::~CNTBaseClient()
{
    StopReceiving();
}

CNTBaseClient::CNTBaseClient(const CNTBaseClient& other) : CNetClientIO(other), CNTBase(other)
{
    CopyFrom(other);
}

CNTBaseClient& CNTBaseClient::operator=(const CNTBaseClient& other)
{
    if (this != &other) {
        CNetClientIO::operator=(other);
        CNTBase::operator=(other);
        CopyFrom(other);
    }
    return *this;
}

void CNTBaseClient::CopyFrom(const CNTBaseClient& other)
{
    ProcessOnRecvThread = other.ProcessOnRecvThread;
    Proxy = other.Proxy;
    Stub = other.Stub;
    ServerPort = other.ServerPort;
    std::copy(std::begin(other.ServerAddr), std::end(other.ServerAddr), ServerAddr);
    NetTime = other.NetTime;
    ServerTime = other.ServerTime;
    Latency = other.Latency;
    ConnectTime = other.ConnectTime;
    TrafficTime = other.TrafficTime;
}

bool CNTBaseClient::Attach(CNTStub* stub)
{
    Stub = stub;
    return true;
}

bool CNTBaseClient::Attach(CNTProxy* proxy)
{
    Proxy = proxy;
    if (proxy != nullptr)
        proxy->Client = this;
    return true;
}

bool CNTBaseClient::SetServerAddr(const char* address)
{
    if (address == nullptr || std::strlen(address) >= sizeof ServerAddr)
        return false;
    std::strcpy(ServerAddr, address);
    return true;
}

void CNTBaseClient::SetServerPort(unsigned long port)
{
    ServerPort = static_cast<unsigned int>(port);
}

unsigned long CNTBaseClient::ProcessQueuedMessageFromServer()
{
    const Locked dispatching(Lock);
    if (InDispatch)
        return 0;
    const DispatchMark mark(InDispatch);
    TakeQueue(Dispatching);
    for (CNTPacket& packet : Dispatching.Whole)
        ProcessPacketFromServer(packet);
    const std::size_t dispatched = Dispatching.Whole.size() + DispatchFlood();
    Dispatching.Whole.clear();
    Dispatching.Flood.clear();
    GiveBackQueue(dispatched);
    return 0;
}

std::size_t CNTBaseClient::DispatchFlood()
{
    std::size_t dispatched = 0;
    CNTPacket packet{CNTPacket::Unzeroed{}};
    const std::vector<unsigned char>& flood = Dispatching.Flood;
    for (std::size_t at = 0; at < flood.size(); at += packet.GetBufSize()) {
        unsigned short size = 0;
        std::memcpy(&size, flood.data() + at + 2, sizeof size);
        packet.SetBufSize(0);
        packet.SetBufPoint(0);
        packet.Write(flood.data() + at, size);
        packet.SetBufPoint(0);
        ProcessPacketFromServer(packet);
        packet.SetBufSize(size);
        ++dispatched;
    }
    return dispatched;
}

void CNTBaseClient::GiveBackQueue(std::size_t dispatched)
{
    // What a flood needed goes with it; a dense stream, flood upon flood, keeps it.
    const bool isDense = dispatched > InitialQueue && LastDispatched > InitialQueue;
    LastDispatched = dispatched;
    if (!isDense)
        std::vector<unsigned char>().swap(Dispatching.Flood);
}

unsigned long CNTBaseClient::ProcessPacketFromServer(CNTPacket&)
{
    return 0;
}

unsigned long CNTBaseClient::SendToServer(CNTPacket& packet)
{
    unsigned char* buffer = packet.GetBuf();
    if (buffer == nullptr) {
        CDebug::AppendDebugMsg("Send Error!!! 샌드 버퍼 포인터가 없다"_949);
        Close();
        return SendWithoutBuffer;
    }
    return SendPacket(reinterpret_cast<char*>(buffer), packet.GetBufSize());
}

void CNTBaseClient::Disconnect()
{
    Close();
}

void CNTBaseClient::UpdateFrame()
{
    CheckTraffic();
}

void CNTBaseClient::CheckTraffic()
{
    const COLEDateTime now = COLEDateTime::GetTickCount();
    const Locked dating(QueueLock);
    if ((now - TrafficTime).GetTotalSeconds() < TrafficPeriodSeconds)
        return;
    TRACE("5초 송신량 : %d       수신량 : %d\n"_949, static_cast<int>(GetSendBytes()),
          static_cast<int>(GetRecvBytes()));
    InitSendBytes();
    InitRecvBytes();
    TrafficTime = now;
}

GS_RESULT CNTBaseClient::SC_SetNetTime(unsigned long& serverTime, unsigned long& latency)
{
    const DWORD now = ::GetTickCount();
    const unsigned int before = Shared(NetTime).load();
    if (before != 0) {
        unsigned long estimate = static_cast<std::uint32_t>(Shared(ServerTime).load() + (now - before));
        CS_ResponseNetTime(estimate);
    }
    SetNetTime(now);
    SetLatency(latency);
    Shared(ServerTime).store(static_cast<unsigned int>(serverTime));
    return GS_OK;
}

GS_RESULT CNTBaseClient::CS_ResponseNetTime(unsigned long& estimate)
{
    CNTPacket packet{CNTPacket::Unzeroed{}};
    packet << static_cast<unsigned short>(CS_RESPONSE_NET_TIME) << static_cast<unsigned short>(0) << estimate;
    if (SendToServer(packet) == SendFailed) {
        CDebug::AppendDebugMsg("Send Error!!! NetTime보내다가에러 났다"_949);
        Disconnect();
    }
    return GS_OK;
}

void CNTBaseClient::SetNetTime(unsigned long milliseconds)
{
    Shared(NetTime).store(static_cast<unsigned int>(milliseconds));
}

unsigned long CNTBaseClient::GetNetTime()
{
    return Shared(NetTime).load();
}

void CNTBaseClient::SetLatency(unsigned long milliseconds)
{
    Shared(Latency).store(static_cast<unsigned int>(milliseconds));
}

unsigned long CNTBaseClient::GetLatency()
{
    return Shared(Latency).load();
}
