// How connections of a client begin and how they are replaced or given up.

#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/base/private/Korean.h"
#include "KesraNTC/net/CNTBaseClient.h"
#include "KesraNTC/net/private/ClientState.h"
#include "KesraNTC/net/private/DisconnectScope.h"
#include "KesraNTC/net/private/IoState.h"

#include <algorithm>
#include <new>

using namespace Kesra;

namespace
{

constexpr DWORD ConnectTimeLimit = 20000;
constexpr unsigned long MostSilence = 1000000; // seconds

bool LogConnectError(int error)
{
    CDebug::AppendDebugMsg("ConnectToServer() : error %d\n", error);
    return false;
}

SOCKET FailToMakeSocket(int error)
{
    CDebug::AppendDebugMsg("socket() Failed : %d \n", error);
    WSACleanup();
    return INVALID_SOCKET;
}

void SetNonBlocking(SOCKET socket)
{
    u_long nonBlocking = 1;
    ioctlsocket(socket, FIONBIO, &nonBlocking);
}

} // namespace

bool CNTBaseClient::Startup()
{
    WSADATA data;
    if (WSAStartup(0x0202, &data) != 0) {
        CDebug::AppendDebugMsg("Failed to load Winsock! : %d\n", WSAGetLastError());
        return false;
    }
    return true;
}

SOCKET CNTBaseClient::MakeSocket()
{
    const SOCKET socket = WSASocketA(AF_INET, SOCK_STREAM, 0, nullptr, 0, WSA_FLAG_OVERLAPPED);
    return socket != INVALID_SOCKET ? socket : FailToMakeSocket(WSAGetLastError());
}

unsigned int CNTBaseClient::CreateSocket()
{
    const SOCKET socket = MakeSocket();
    if (socket != INVALID_SOCKET)
        SetSocket(static_cast<unsigned int>(socket));
    return static_cast<unsigned int>(socket);
}

bool CNTBaseClient::ConnectToServer()
{
    // As soon as the first read is under way, or while others have their turn, the client may be deleted.
    const std::shared_ptr<ClientState> state = State;
    const Held connecting(state->ConnectLock);
    // In this order: whoever destroys the client says so before it ends the connect in progress.
    state->Abort.Reset();
    if (state->IsStopping || IsConnectingRefused())
        return LogConnectError(WSAEALREADY);
    std::shared_ptr<ClientConnection> connection;
    try {
        if (!BeginConnecting(connection))
            return false;
    } catch (const std::bad_alloc&) {
        Close();
        return LogConnectError(WSA_NOT_ENOUGH_MEMORY);
    }
    const int error = connection->WaitForFirstRead();
    if (error == 0)
        return true;
    Close();
    return LogConnectError(error);
}

bool CNTBaseClient::IsConnectingRefused()
{
    // A thread that hears of the end of its connection must not replace the newer one that another thread
    // began. It may begin the connections of other clients.
    const DisconnectScope* scope = DisconnectScope::Find(Io.get(), DisconnectScope::Thread);
    return scope != nullptr && scope->GetGeneration() != Io->Generation;
}

bool CNTBaseClient::BeginConnecting(std::shared_ptr<ClientConnection>& connection)
{
    Close();
    const auto receivers = State->GetReceivers();
    if (!receivers->empty())
        receivers->back()->Retire();
    if (!Io->IsWhole() || State->Abort.Get() == nullptr) {
        FailToMakeSocket(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
    BeginConnection();
    const SOCKET socket = MakeSocket();
    if (socket == INVALID_SOCKET)
        return false;
    try {
        connection = Connect(socket) ? Publish(socket) : nullptr;
    } catch (...) {
        closesocket(socket);
        throw;
    }
    if (connection == nullptr) {
        closesocket(socket);
        return false;
    }
    CDebug::AppendDebugMsg("ConnectToServer() : Success\n");
    {
        const Held dating(State->ReceiverLock);
        ConnectTime = TrafficTime = COLEDateTime::GetTickCount();
    }
    StartReceiver(*connection);
    return true;
}

bool CNTBaseClient::Connect(SOCKET socket)
{
    sockaddr_in address{};
    if (!ResolveServer(address)) {
        CDebug::AppendDebugMsg("서버 어드레스를 찾을 수 엄다\n"_949);
        return false;
    }
    const EventHandle connected{EventHandle::AutoReset};
    int error = connected.Get() != nullptr ? 0 : WSA_NOT_ENOUGH_MEMORY;
    if (error == 0 && WSAEventSelect(socket, connected.Get(), FD_CONNECT) != 0)
        error = WSAGetLastError();
    if (error == 0 && connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        error = WSAGetLastError();
    if (error == WSAEWOULDBLOCK)
        error = WaitForConnect(socket, connected.Get());
    WSAEventSelect(socket, nullptr, 0);
    return error == 0 || LogConnectError(error);
}

int CNTBaseClient::WaitForConnect(SOCKET socket, HANDLE connected)
{
    const HANDLE events[] = {connected, State->Abort.Get()};
    switch (WaitForMultipleObjects(2, events, FALSE, ConnectTimeLimit)) {
    case WAIT_OBJECT_0:
        break;
    case WAIT_OBJECT_0 + 1:
        return WSAEINTR;
    case WAIT_TIMEOUT:
        return WSAETIMEDOUT;
    default:
        return WSAENOBUFS;
    }
    WSANETWORKEVENTS happened{};
    if (WSAEnumNetworkEvents(socket, connected, &happened) != 0)
        return WSAGetLastError();
    return happened.iErrorCode[FD_CONNECT_BIT];
}

bool CNTBaseClient::ResolveServer(sockaddr_in& address)
{
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<unsigned short>(ServerPort));
    address.sin_addr.s_addr = inet_addr(ServerAddr);
    if (address.sin_addr.s_addr != INADDR_NONE)
        return true;
    const hostent* host = gethostbyname(ServerAddr);
    if (host == nullptr || host->h_addr_list[0] == nullptr)
        return false;
    std::memcpy(&address.sin_addr, host->h_addr_list[0], sizeof address.sin_addr);
    return true;
}

std::shared_ptr<ClientConnection> CNTBaseClient::Publish(SOCKET socket)
{
    SetNonBlocking(socket);
    ApplyOptions(socket);
    const Held replacing(Io->CloseLock);
    if (State->Abort.Wait(0)) {
        LogConnectError(WSAEINTR);
        return nullptr;
    }
    auto connection = std::make_shared<ClientConnection>(Io->Generation + 1, socket, true);
    if (!connection->IsWhole())
        throw std::bad_alloc();
    AddReceiver(connection);
    ++Io->Generation;
    std::atomic_ref(Socket).store(socket);
    DisconnectScope::Renew(Io.get(), connection->Generation);
    return connection;
}

bool CNTBaseClient::RecvFromServer()
{
    try {
        StartReceiver(*AddReceiver());
    } catch (const std::bad_alloc&) {
        CDebug::AppendDebugMsg("socket() Failed : %d \n", static_cast<int>(WSA_NOT_ENOUGH_MEMORY));
    }
    return true;
}

void CNTBaseClient::StartReceiver(ClientConnection& connection)
{
    if (_beginthread(RecvFromServer_Proc, 0, this) == static_cast<std::uintptr_t>(-1))
        connection.NeverBegan(WSA_NOT_ENOUGH_MEMORY);
}

std::shared_ptr<ClientConnection> CNTBaseClient::AddReceiver()
{
    const Held replacing(Io->CloseLock);
    const SOCKET socket = static_cast<SOCKET>(GetSocket());
    SetNonBlocking(socket);
    auto connection = std::make_shared<ClientConnection>(Io->Generation, socket, false);
    if (!connection->IsWhole())
        throw std::bad_alloc();
    AddReceiver(connection);
    return connection;
}

void CNTBaseClient::AddReceiver(const std::shared_ptr<ClientConnection>& connection)
{
    State->AddReceiver(connection);
    const Held sending(Io->SendLock, SendRole);
    Io->Current = connection;
}

std::shared_ptr<ClientConnection> CNTBaseClient::BeginReceiver()
{
    const auto receivers = State->GetReceivers();
    for (const auto& connection : *receivers)
        if (connection->Begin())
            return connection;
    // The game runs the procedure on a thread of its own.
    std::shared_ptr<ClientConnection> connection = AddReceiver();
    connection->Begin();
    return connection;
}

void CNTBaseClient::Disconnect()
{
    if (const DisconnectScope* scope = DisconnectScope::Find(Io.get())) {
        CloseConnection(scope->GetGeneration());
        return;
    }
    AbortConnecting();
    Close();
}

void CNTBaseClient::AbortConnecting()
{
    const Held aborting(Io->CloseLock);
    State->Abort.Set();
}

void CNTBaseClient::CloseConnection(unsigned long long generation)
{
    const std::shared_ptr<IoState> io = Io;
    const Held closing(io->CloseLock);
    if (io->Generation == generation)
        Close();
}

void CNTBaseClient::StopReceiving()
{
    State->IsStopping = true;
    AbortConnecting();
    std::shared_ptr<const ReceiverList> stopped;
    // ProcessDisconnection may be connecting again at this moment.
    do {
        // Whoever is inside ConnectToServer leaves first, and nobody enters any more.
        {
            const Held connecting(State->ConnectLock);
        }
        stopped = State->GetReceivers();
        for (const auto& connection : *stopped)
            connection->ClaimNotification();
        Close();
        for (const auto& connection : *stopped) {
            connection->Retire();
            if (!connection->IsCurrent())
                connection->WaitForEnd(INFINITE);
        }
    } while (stopped != State->GetReceivers());
}

bool CNTBaseClient::WaitForReceiveThread(unsigned long milliseconds)
{
    const DWORD limit = static_cast<DWORD>(milliseconds);
    const DWORD start = ::GetTickCount();
    const auto timeLeft = [&] {
        return limit == INFINITE ? INFINITE : limit - std::min<DWORD>(limit, ::GetTickCount() - start);
    };
    std::shared_ptr<const ReceiverList> ended;
    while (ended != State->GetReceivers()) {
        ended = State->GetReceivers();
        for (const auto& connection : *ended)
            if (connection->IsCurrent() || !connection->WaitForEnd(timeLeft()))
                return false;
    }
    return true;
}

void CNTBaseClient::SetSilenceLimit(unsigned long seconds)
{
    State->SilenceLimit = seconds;
    ApplyOptionsToOwnSocket();
}

void CNTBaseClient::SetNoDelay(bool noDelay)
{
    State->IsNoDelay = noDelay;
    ApplyOptionsToOwnSocket();
}

void CNTBaseClient::ApplyOptionsToOwnSocket()
{
    const std::shared_ptr<ClientConnection> connection = NewestConnection();
    if (connection != nullptr && connection->IsOwnSocket && !connection->IsClosed())
        ApplyOptions(connection->Socket);
}

/// Idle, TCP asks after half the limit and ten times more until its end; with bytes in flight it repeats them
/// until then.
void CNTBaseClient::ApplyOptions(SOCKET socket)
{
    constexpr unsigned long Probes = 10;
    const int noDelay = State->IsNoDelay;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&noDelay), sizeof noDelay);
    const unsigned long milliseconds = std::min<unsigned long>(State->SilenceLimit, MostSilence) * 1000;
    const int repeatFor = static_cast<int>(milliseconds / 1000);
    setsockopt(socket, IPPROTO_TCP, TCP_MAXRT, reinterpret_cast<const char*>(&repeatFor), sizeof repeatFor);
    tcp_keepalive ask{};
    ask.onoff = milliseconds != 0;
    ask.keepalivetime = milliseconds / 2;
    ask.keepaliveinterval = milliseconds / 2 / Probes;
    DWORD returned = 0;
    WSAIoctl(socket, SIO_KEEPALIVE_VALS, &ask, sizeof ask, nullptr, 0, &returned, nullptr, nullptr);
}
