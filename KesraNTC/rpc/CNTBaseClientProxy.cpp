// What a client does with its proxy, and the one message that it answers itself.

#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/base/private/Korean.h"
#include "KesraNTC/net/CNTBaseClient.h"
#include "KesraNTC/net/private/ClientState.h"
#include "KesraNTC/net/private/DisconnectScope.h"
#include "KesraNTC/net/private/IoState.h"
#include "KesraNTC/rpc/CNTProxy.h"
#include "KesraNTC/rpc/MessageNumbers.h"
#include "KesraNTC/rpc/private/ProxyState.h"

#include <atomic>

using namespace Kesra;

namespace
{

// The game's thread may ask for the clock while the receive thread takes in a clock message.
std::atomic_ref<unsigned int> Shared(unsigned int& value)
{
    return std::atomic_ref<unsigned int>(value);
}

} // namespace

bool CNTBaseClient::Attach(CNTProxy* proxy)
{
    Proxy = proxy;
    if (proxy != nullptr) {
        proxy->Client = this;
        proxy->State->Owner = this;
    }
    return true;
}

bool CNTBaseClient::IsReplyAwaited() const
{
    return Proxy != nullptr && Proxy->GetPendingCount() > 0;
}

GS_RESULT CNTBaseClient::SC_SetNetTime(unsigned long& serverTime, unsigned long& latency)
{
    const DWORD now = ::GetTickCount();
    const unsigned int before = static_cast<unsigned int>(GetNetTime());
    // Once an answer has failed, those that were queued with it find the connection ended.
    const std::uint64_t failedOn = State->ClockFailedOn;
    if (before != 0 && (failedOn == 0 || failedOn != Io->Generation)) {
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
    const DisconnectScope scope(Io.get(), Io->Generation, DisconnectScope::Request);
    if (SendToServer(packet) == SendFailed) {
        CDebug::AppendDebugMsg("Send Error!!! NetTime보내다가에러 났다"_949);
        State->ClockFailedOn = scope.GetGeneration();
        Disconnect();
    }
    return GS_OK;
}

CNTStatistics CNTBaseClient::GetStatistics()
{
    CNTStatistics statistics{};
    const std::shared_ptr<ClientConnection> connection = NewestConnection();
    if (connection != nullptr) {
        statistics.BytesSent = connection->BytesSent;
        statistics.BytesReceived = connection->BytesReceived;
        statistics.PacketsSent = connection->PacketsSent;
        statistics.PacketsReceived = connection->PacketsReceived;
    }
    statistics.QueuedPackets = GetQueuedPackets();
    statistics.QueuedBytes = GetQueuedBytes();
    statistics.UnsentBytes = GetUnsentBytes();
    if (Proxy == nullptr)
        return statistics;
    statistics.RequestsInFlight = static_cast<unsigned long>(Proxy->GetPendingCount());
    const Held reading(Proxy->Lock, ProxyRole);
    const ProxyState& replies = *Proxy->State;
    if (replies.Replies == 0 || connection == nullptr || replies.RepliesOf != connection->Generation)
        return statistics;
    constexpr double Microseconds = 1000.0; // in a millisecond
    statistics.Replies = replies.Replies;
    statistics.LastReplyTime = static_cast<double>(replies.LastTime) / Microseconds;
    statistics.LongestReplyTime = static_cast<double>(replies.LongestTime) / Microseconds;
    statistics.AverageReplyTime =
        static_cast<double>(replies.TotalTime) / static_cast<double>(replies.Replies) / Microseconds;
    return statistics;
}

void CNTBaseClient::NoteTimeOut(unsigned long long generation)
{
    const std::shared_ptr<ClientConnection> connection = NewestConnection();
    if (connection != nullptr && connection->Generation == generation)
        connection->NoteEnd(END_REQUEST_TIMED_OUT, WSAETIMEDOUT);
}
