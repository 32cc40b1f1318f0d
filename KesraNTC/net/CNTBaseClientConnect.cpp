// How connections of a client begin and how they are replaced or given up.

#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/base/Korean.h"
#include "KesraNTC/net/CNTBaseClient.h"
#include "KesraNTC/net/ReceiveThread.h"

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
    if (IsConnectingRefused()) {
        return false;
    }
    Close();
    if (const std::shared_ptr<ReceiveThread> previous = NewestReceiver()) {
        previous->Retire();
    }
    BeginConnection();
    if (CreateSocket() == static_cast<unsigned int>(INVALID_SOCKET) || !Connect()) {
        return false;
    }
    CDebug::AppendDebugMsg("ConnectToServer() : Success\n");
    ConnectTime = TrafficTime = COLEDateTime::GetTickCount();
    return RecvFromServer();
}

bool CNTBaseClient::IsConnectingRefused()
{
    // A thread that hears of the end of its connection must not replace the newer one that ended it.
    const ReceiveThread* caller = ReceiveThread::OnThisThread();
    return IsStopping || (caller != nullptr && caller->IsRetired() && caller != NewestReceiver().get());
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
    if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        const int error = WSAGetLastError();
        Close();
        CDebug::AppendDebugMsg("ConnectToServer() : error %d\n", error);
        return false;
    }
    // Sends try what the socket takes at once and never block; overlapped operations are not affected.
    unsigned long on = 1;
    ioctlsocket(socket, FIONBIO, &on);
    return true;
}

bool CNTBaseClient::ResolveServer(sockaddr_in& address)
{
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<unsigned short>(ServerPort));
    address.sin_addr.s_addr = inet_addr(ServerAddr);
    if (address.sin_addr.s_addr != INADDR_NONE) {
        return true;
    }
    const hostent* host = gethostbyname(ServerAddr);
    if (host == nullptr || host->h_addr_list[0] == nullptr) {
        return false;
    }
    std::memcpy(&address.sin_addr, host->h_addr_list[0], sizeof address.sin_addr);
    return true;
}

bool CNTBaseClient::RecvFromServer()
{
    const auto thread = std::make_shared<ReceiveThread>();
    {
        const Locked publishing(QueueLock);
        Receiver = thread;
    }
    if (_beginthread(RecvFromServer_Proc, 0, this) == static_cast<std::uintptr_t>(-1)) {
        thread->NeverBegan();
    }
    return true;
}

std::shared_ptr<ReceiveThread> CNTBaseClient::NewestReceiver()
{
    const Locked reading(QueueLock);
    return Receiver;
}

void CNTBaseClient::StopReceiving()
{
    IsStopping = true;
    std::shared_ptr<ReceiveThread> thread;
    // ProcessDisconnection may be connecting again at this moment.
    while (thread != NewestReceiver()) {
        thread = NewestReceiver();
        thread->ClaimNotification();
        Close();
        thread->Retire();
        if (!thread->IsCurrent()) {
            thread->WaitForEnd(INFINITE);
        }
    }
}

bool CNTBaseClient::WaitForReceiveThread(unsigned long milliseconds)
{
    std::shared_ptr<ReceiveThread> thread;
    while (thread != NewestReceiver()) {
        thread = NewestReceiver();
        if (thread->IsCurrent() || !thread->WaitForEnd(static_cast<DWORD>(milliseconds))) {
            return false;
        }
    }
    return true;
}
