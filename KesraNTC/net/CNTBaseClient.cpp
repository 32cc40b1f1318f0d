#include "KesraNTC/net/CNTBaseClient.h"

#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/base/Trace.h"
#include "KesraNTC/base/private/Korean.h"

#include "KesraNTC/net/private/Backlog.h"
#include "KesraNTC/net/private/ClientState.h"
#include "KesraNTC/net/private/Drain.h"
#include "KesraNTC/net/private/IoState.h"

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

} // namespace

CNTBaseClient::CNTBaseClient()
    : ProcessOnRecvThread(false),
      Proxy(nullptr),
      Stub(nullptr),
      ServerPort(0),
      ServerAddr{},
      NetTime(0),
      ServerTime(0),
      Latency(0),
      State(std::make_shared<ClientState>())
{
    Init();
}

CNTBaseClient::~CNTBaseClient()
{
    StopReceiving();
}

CNTBaseClient::CNTBaseClient(const CNTBaseClient& other)
    : CNetClientIO(other), CNTBase(other), State(std::make_shared<ClientState>())
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
    const Held dispatching(Lock, DispatchRole);
    if (State->InDispatch)
        return 0;
    const DispatchMark mark(*State);
    Drain drain(*this);
    while (CNTPacket* packet = drain.Next())
        ProcessPacketFromServer(*packet);
    return 0;
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
    const unsigned long result = SendPacket(reinterpret_cast<char*>(buffer), packet.GetBufSize());
    // A request waits for a reply that nobody would read.
    if (Received->IsPaused && IsReplyAwaited())
        Io->Wake.Set();
    return result;
}

std::shared_ptr<ClientConnection> CNTBaseClient::NewestConnection()
{
    const Held reading(Io->SendLock, SendRole);
    return Io->Current;
}

std::shared_ptr<ClientConnection> CNTBaseClient::SpokenConnection()
{
    const auto receivers = State->GetReceivers();
    for (const auto& connection : *receivers)
        if (connection->IsCurrent())
            return connection;
    return NewestConnection();
}

END_REASON CNTBaseClient::GetEndReason()
{
    const std::shared_ptr<ClientConnection> connection = SpokenConnection();
    return connection != nullptr ? connection->GetEndReason() : END_NONE;
}

unsigned long CNTBaseClient::GetEndError()
{
    const std::shared_ptr<ClientConnection> connection = SpokenConnection();
    return connection != nullptr ? connection->GetEndError() : 0;
}

ConnectionKey CNTBaseClient::GetConnectionKey() const
{
    return {Io.get(), Io->Generation};
}

void CNTBaseClient::UpdateFrame()
{
    CheckTraffic();
}

void CNTBaseClient::CheckTraffic()
{
    const COLEDateTime now = COLEDateTime::GetTickCount();
    const Held dating(State->ReceiverLock);
    if ((now - TrafficTime).GetTotalSeconds() < TrafficPeriodSeconds)
        return;
    TRACE("5초 송신량 : %d       수신량 : %d\n"_949, static_cast<int>(GetSendBytes()),
          static_cast<int>(GetRecvBytes()));
    InitSendBytes();
    InitRecvBytes();
    TrafficTime = now;
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
