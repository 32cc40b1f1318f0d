// The receive thread of a client.

#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/net/CNTBaseClient.h"
#include "KesraNTC/net/private/Backlog.h"
#include "KesraNTC/net/private/ClientState.h"
#include "KesraNTC/net/private/DisconnectScope.h"
#include "KesraNTC/net/private/IoState.h"
#include "KesraNTC/net/private/OutOfMemory.h"
#include "KesraNTC/net/private/PacketHeader.h"
#include "KesraNTC/platform/private/ReadAhead.h"

using namespace Kesra;

namespace
{

constexpr DWORD CancelTimeLimit = 1000; // for the system to end the read of a closed socket

/// A read or a write of the connection has failed, or it has to end as if one had.
bool FailTransfer(ClientConnection& connection, int error)
{
    CDebug::AppendDebugMsg("error!!! WSAGetOverlappedResult() : error %d\n", error);
    connection.NoteEnd(error == WSAETIMEDOUT ? END_SILENT_PEER : END_RESET, error);
    return false;
}

bool FailForMemory(ClientConnection& connection)
{
    connection.NoteEnd(END_NO_MEMORY, WSA_NOT_ENOUGH_MEMORY);
    return FailTransfer(connection, WSA_NOT_ENOUGH_MEMORY);
}

/// Why the watched socket has failed; 0 while it has not, the server's orderly close included.
int CloseError(const ClientConnection& connection, HANDLE happening)
{
    WSANETWORKEVENTS events{};
    WSAEnumNetworkEvents(connection.Socket, happening, &events);
    if ((events.lNetworkEvents & FD_CLOSE) == 0 || events.iErrorCode[FD_CLOSE_BIT] != 0)
        return events.iErrorCode[FD_CLOSE_BIT];
    // Not every system tells a reset from an orderly close, after which one can still send.
    WSABUF nothing{0, nullptr};
    DWORD sent = 0;
    const bool isOpen = WSASend(connection.Socket, &nothing, 1, &sent, 0, nullptr, nullptr) == 0;
    return isOpen ? 0 : WSAECONNRESET;
}

/// How far whole packets reach from the front of so many bytes, and how many they are. One with a strange
/// header is left to the collection, which says so.
std::size_t WholePackets(const char* data, std::size_t size, std::size_t& count)
{
    std::size_t end = 0;
    while (size - end >= CNTPacket::HeaderSize) {
        std::uint16_t header[2];
        std::memcpy(header, data + end, sizeof header);
        if (!IsUsualHeader(header[0], header[1]) || header[1] > size - end)
            break;
        end += header[1];
        ++count;
    }
    return end;
}

/// What the read-ahead holds is taken for one client and its connection.
struct AheadTaker {
    CNTBaseClient& Client;
    ClientConnection& Owner;
    std::uint64_t Packets = 0;
};

} // namespace

ClientConnection*& ClientConnection::Current()
{
    static thread_local ClientConnection* current = nullptr;
    return current;
}

void CNTBaseClient::RecvFromServer_Proc(void* argument)
{
    CNTBaseClient& client = *static_cast<CNTBaseClient*>(argument);
    const std::shared_ptr<IoState> io = client.Io;
    const std::shared_ptr<ClientConnection> connection = client.BeginReceiver();
    const DisconnectScope scope(io.get(), connection->Generation, DisconnectScope::Thread);
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_ABOVE_NORMAL);
    const bool began = client.IssueNetRead();
    connection->ReportFirstRead(began ? 0 : WSAGetLastError());
    if (began)
        client.ReceiveLoop(*connection);
    connection->LetGo();
    if (began && connection->ClaimNotification())
        client.ProcessDisconnection();
    connection->End();
}

void CNTBaseClient::ReceiveLoop(ClientConnection& connection)
{
    const HANDLE events[] = {OverlappedIN.hEvent, connection.Out.GetEvent().Get()};
    bool isGoing = true;
    while (isGoing) {
        switch (WaitForMultipleObjects(2, events, FALSE, INFINITE)) {
        case WAIT_OBJECT_0:
            isGoing = TakeRead(connection);
            break;
        case WAIT_OBJECT_0 + 1:
            isGoing = TakeSendCompletion(connection);
            break;
        default:
            break;
        }
    }
}

bool CNTBaseClient::TakeRead(ClientConnection& connection)
try {
    DWORD received = 0;
    DWORD flags = 0;
    // Close says so by the same event, should the system be late.
    if (connection.IsClosed() && !HasOverlappedIoCompleted(&OverlappedIN)) {
        Io->Read.Wait(CancelTimeLimit);
        return FailTransfer(connection, WSA_OPERATION_ABORTED);
    }
    if (!WSAGetOverlappedResult(connection.Socket, &OverlappedIN, &received, TRUE, &flags))
        return FailTransfer(connection, WSAGetLastError());
    if (received == 0) {
        connection.NoteEnd(END_SERVER_CLOSED, 0);
        return false;
    }
    bool isComplete = false;
    if (!Collect(connection, received, isComplete))
        return false;
    isComplete = TakeAhead(connection) || isComplete;
    if (IsRoomNeeded() && !WaitForRoom(connection))
        return false;
    const bool isReading = IssueNetRead();
    // A dense stream keeps the read event set; what waits to be sent must not starve behind it.
    if (connection.Out.IsBusy() && !TakeSendCompletion(connection))
        return false;
    return DispatchHere(connection, isComplete) && isReading;
} catch (const OutOfMemory&) {
    return FailForMemory(connection);
}

bool CNTBaseClient::Collect(ClientConnection& connection, unsigned long received, bool& isComplete)
{
    const unsigned long collected = CollectPacket(received);
    if (collected == PacketComplete) {
        QueueCollected();
        CountUp(connection.PacketsReceived, 1);
        isComplete = true;
    } else if (collected < PacketPartial) {
        CDebug::AppendDebugMsg("error!!! CollectPacket() : error \n");
        connection.NoteEnd(END_MALFORMED, 0);
        return false;
    }
    AddRecvBytes(received);
    CountUp(connection.BytesReceived, received);
    return true;
}

/// By itself, so that an idle thread's stack does not hold a packet.
[[gnu::noinline]] void CNTBaseClient::QueueCollected()
{
    CNTPacket packet{CNTPacket::Unzeroed{}};
    MakeCompletePacket(packet);
}

bool CNTBaseClient::TakeAhead(ClientConnection& connection)
{
    AheadTaker taker{*this, connection};
    const DWORD taken = ConsumeReadAhead(connection.Socket, TakeWholePackets, &taker);
    if (taken == 0)
        return false;
    AddRecvBytes(taken);
    CountUp(connection.BytesReceived, taken);
    CountUp(connection.PacketsReceived, taker.Packets);
    return true;
}

DWORD CNTBaseClient::TakeWholePackets(void* context, const char* data, DWORD size)
{
    auto& taker = *static_cast<AheadTaker*>(context);
    CNTBaseClient& client = taker.Client;
    std::size_t used = 0;
    if (client.RecvStage == 1 && client.RemainSize <= size) {
        used = client.RemainSize;
        std::memcpy(client.Buf + client.RecvSize, data, used);
        client.CollectPacket(static_cast<unsigned long>(used));
        client.QueueCollected();
        ++taker.Packets;
    }
    if (client.RecvSize != 0)
        return static_cast<DWORD>(used);
    std::size_t count = 0;
    const std::size_t whole = WholePackets(data + used, size - used, count);
    if (client.IsDispatchedHere())
        taker.Owner.Ahead.Append(data + used, whole, count);
    else
        client.QueuePackets(data + used, whole, count);
    taker.Packets += count;
    return static_cast<DWORD>(used + whole);
}

bool CNTBaseClient::IsRoomNeeded()
{
    return !IsDispatchedHere() && IsOverfull();
}

bool CNTBaseClient::WaitForRoom(ClientConnection& connection)
{
    // Nothing is being read: what happens to the socket is watched.
    const EventHandle happening{EventHandle::AutoReset};
    WSAEventSelect(connection.Socket, happening.Get(), FD_CLOSE);
    Received->IsPaused = true;
    int error = 0;
    const HANDLE events[] = {Io->Wake.Get(), connection.Out.GetEvent().Get(), happening.Get()};
    bool isOver = !IsRoomNeeded();
    while (!isOver && error == 0) {
        switch (WaitForMultipleObjects(happening.Get() != nullptr ? 3 : 2, events, FALSE, INFINITE)) {
        case WAIT_OBJECT_0:
            isOver = IsDispatchedHere() || GetQueuedBytes() <= Received->Limit / 2;
            break;
        case WAIT_OBJECT_0 + 1:
            AdvanceSends(connection, error);
            break;
        default:
            error = CloseError(connection, happening.Get());
            break;
        }
        if (connection.IsClosed())
            error = WSA_OPERATION_ABORTED;
    }
    Received->IsPaused = false;
    WSAEventSelect(connection.Socket, nullptr, 0);
    return error == 0 || FailTransfer(connection, error);
}

bool CNTBaseClient::IsDispatchedHere() const
{
    return ProcessOnRecvThread || IsReplyAwaited();
}

bool CNTBaseClient::DispatchHere(ClientConnection& connection, bool isComplete)
{
    if (!IsReplyAwaited() && !(ProcessOnRecvThread && isComplete) && connection.Ahead.Count == 0)
        return true;
    connection.LetGo();
    if (!connection.IsRetired()) {
        ProcessQueuedMessageFromServer();
        DispatchAhead(connection);
    }
    return connection.TakeBack();
}

/// As if each packet had been read by itself: a handler's Disconnect ends it, and behind the reply that a
/// request waited for the rest is the game's.
void CNTBaseClient::DispatchAhead(ClientConnection& connection)
{
    if (connection.Ahead.Count == 0)
        return;
    const Held dispatching(Lock, DispatchRole);
    const DispatchMark mark(*State);
    CNTPacket packet{CNTPacket::Unzeroed{}};
    while (connection.Ahead.Count != 0 && !connection.IsClosed()) {
        connection.Ahead.PopInto(packet);
        if (IsDispatchedHere())
            ProcessPacketFromServer(packet);
        else
            QueuePackets(reinterpret_cast<const char*>(packet.GetBuf()), packet.GetBufSize(), 1);
    }
    connection.Ahead.Clear();
}

bool CNTBaseClient::TakeSendCompletion(ClientConnection& connection)
{
    int error = 0;
    return AdvanceSends(connection, error) || FailTransfer(connection, error);
}
