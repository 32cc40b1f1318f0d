// How connections of a client begin and how they are replaced or given up.

#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/base/Korean.h"
#include "KesraNTC/net/CNTBaseClient.h"
#include "KesraNTC/net/ReceiveThread.h"

#include <algorithm>

using namespace Kesra;

bool CNTBaseClient::Startup()
{
    WSADATA data;
    if (WSAStartup(0x0202, &data) != 0) {
        CDebug::AppendDebugMsg("Failed to load Winsock! : %d\n", WSAGetLastError());
        return false;
    }
    return true;
}

unsigned int CNTBaseClient::CreateSocket()
{
    const SOCKET socket = WSASocketA(AF_INET, SOCK_STREAM, 0, nullptr, 0, WSA_FLAG_OVERLAPPED);
    if (socket == INVALID_SOCKET) {
        CDebug::AppendDebugMsg("socket() Failed : %d \n", WSAGetLastError());
        WSACleanup();
        return static_cast<unsigned int>(INVALID_SOCKET);
    }
    SetSocket(static_cast<unsigned int>(socket));
    return GetSocket();
}

bool CNTBaseClient::ConnectToServer()
{
    const Locked connecting(ConnectLock);
    if (IsConnectingRefused())
        return false;
    Close();
    if (const std::shared_ptr<ReceiveThread> previous = NewestReceiver())
        previous->Retire();
    BeginConnection();
    if (CreateSocket() == static_cast<unsigned int>(INVALID_SOCKET) || !Connect())
        return false;
    CDebug::AppendDebugMsg("ConnectToServer() : Success\n");
    {
        const Locked dating(QueueLock);
        ConnectTime = TrafficTime = COLEDateTime::GetTickCount();
    }
    return RecvFromServer();
}

bool CNTBaseClient::IsConnectingRefused()
{
    // A thread that hears of the end of its connection must not replace the newer one that ended it.
    // It may begin the connections of other clients.
    const auto own = AllReceivers();
    const auto isCaller = [](const auto& thread) { return thread->IsCurrent(); };
    return IsStopping || (std::any_of(own.begin(), own.end(), isCaller) && !own.back()->IsCurrent());
}

bool CNTBaseClient::Connect()
{
    sockaddr_in address{};
    if (!ResolveServer(address)) {
        Close();
        CDebug::AppendDebugMsg("서버 어드레스를 찾을 수 엄다\n"_949);
        return false;
    }
    const SOCKET socket = static_cast<SOCKET>(GetSocket());
    SetBlocking(socket, true);
    if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        const int error = WSAGetLastError();
        Close();
        CDebug::AppendDebugMsg("ConnectToServer() : error %d\n", error);
        return false;
    }
    SetBlocking(socket, false);
    return true;
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

bool CNTBaseClient::RecvFromServer()
{
    const std::shared_ptr<ReceiveThread> thread = AddReceiver();
    if (_beginthread(RecvFromServer_Proc, 0, this) == static_cast<std::uintptr_t>(-1))
        thread->NeverBegan();
    return true;
}

std::shared_ptr<ReceiveThread> CNTBaseClient::AddReceiver()
{
    const auto thread = std::make_shared<ReceiveThread>();
    const Locked publishing(QueueLock);
    std::erase_if(Receivers, [](const auto& old) { return old->WaitForEnd(0); });
    Receivers.push_back(thread);
    return thread;
}

std::shared_ptr<ReceiveThread> CNTBaseClient::BeginReceiver()
{
    for (const auto& thread : AllReceivers())
        if (thread->Begin())
            return thread;
    // The game runs the procedure on a thread of its own.
    const std::shared_ptr<ReceiveThread> thread = AddReceiver();
    thread->Begin();
    return thread;
}

std::shared_ptr<ReceiveThread> CNTBaseClient::NewestReceiver()
{
    const Locked reading(QueueLock);
    return Receivers.empty() ? nullptr : Receivers.back();
}

std::vector<std::shared_ptr<ReceiveThread>> CNTBaseClient::AllReceivers()
{
    const Locked reading(QueueLock);
    return Receivers;
}

void CNTBaseClient::StopReceiving()
{
    IsStopping = true;
    std::vector<std::shared_ptr<ReceiveThread>> stopped;
    // ProcessDisconnection may be connecting again at this moment.
    do {
        stopped = AllReceivers();
        for (const auto& thread : stopped)
            thread->ClaimNotification();
        Close();
        for (const auto& thread : stopped) {
            thread->Retire();
            if (!thread->IsCurrent())
                thread->WaitForEnd(INFINITE);
        }
    } while (stopped != AllReceivers());
}

bool CNTBaseClient::WaitForReceiveThread(unsigned long milliseconds)
{
    const DWORD limit = static_cast<DWORD>(milliseconds);
    const DWORD start = ::GetTickCount();
    const auto timeLeft = [&] {
        return limit == INFINITE ? INFINITE : limit - std::min<DWORD>(limit, ::GetTickCount() - start);
    };
    std::vector<std::shared_ptr<ReceiveThread>> ended;
    while (ended != AllReceivers()) {
        ended = AllReceivers();
        for (const auto& thread : ended)
            if (thread->IsCurrent() || !thread->WaitForEnd(timeLeft()))
                return false;
    }
    return true;
}
