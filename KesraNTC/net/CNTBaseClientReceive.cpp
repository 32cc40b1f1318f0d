// The receive thread of a client.

#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/net/CNTBaseClient.h"
#include "KesraNTC/net/ReceiveThread.h"
#include "KesraNTC/rpc/CNTProxy.h"

using namespace Kesra;

const ReceiveThread*& ReceiveThread::Current()
{
    static thread_local const ReceiveThread* current = nullptr;
    return current;
}

void CNTBaseClient::RecvFromServer_Proc(void* argument)
{
    CNTBaseClient& client = *static_cast<CNTBaseClient*>(argument);
    const std::shared_ptr<ReceiveThread> thread = client.BeginReceiver();
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_ABOVE_NORMAL);
    const bool began = client.IssueNetRead();
    if (began)
        client.ReceiveLoop(*thread);
    thread->LetGo();
    if (began && thread->ClaimNotification())
        client.ProcessDisconnection();
    thread->End();
}

void CNTBaseClient::ReceiveLoop(ReceiveThread& thread)
{
    CNTPacket packet{CNTPacket::Unzeroed{}};
    const HANDLE events[] = {OverlappedIN.hEvent, OverlappedOUT.hEvent};
    bool going = true;
    while (going && !thread.IsRetired()) {
        switch (WaitForMultipleObjects(2, events, FALSE, INFINITE)) {
        case WAIT_OBJECT_0:
            going = TakeRead(packet, thread);
            break;
        case WAIT_OBJECT_0 + 1:
            going = TakeSendCompletion();
            break;
        default:
            break;
        }
    }
}

bool CNTBaseClient::TakeRead(CNTPacket& packet, ReceiveThread& thread)
{
    DWORD received = 0;
    DWORD flags = 0;
    if (!WSAGetOverlappedResult(static_cast<SOCKET>(GetSocket()), &OverlappedIN, &received, TRUE, &flags)) {
        CDebug::AppendDebugMsg("error!!! WSAGetOverlappedResult() : error %d\n", WSAGetLastError());
        return false;
    }
    if (received == 0)
        return false;
    const unsigned long collected = CollectPacket(received);
    if (collected == PacketComplete) {
        packet.SetBufSize(0);
        packet.SetBufPoint(0);
        MakeCompletePacket(packet);
    } else if (collected < PacketPartial) {
        CDebug::AppendDebugMsg("error!!! CollectPacket() : error \n");
        return false;
    }
    AddRecvBytes(received);
    const bool reading = IssueNetRead();
    // A dense stream keeps the read event set; the write must not starve behind it.
    if (IsSendPending() && !TakeSendCompletion())
        return false;
    return DispatchHere(thread, collected == PacketComplete) && reading;
}

bool CNTBaseClient::DispatchHere(ReceiveThread& thread, bool isComplete)
{
    const bool isAwaited = Proxy != nullptr && Proxy->GetPendingCount() > 0;
    if (!isAwaited && !(ProcessOnRecvThread && isComplete))
        return true;
    thread.LetGo();
    if (!thread.IsRetired())
        ProcessQueuedMessageFromServer();
    return thread.TakeBack();
}

bool CNTBaseClient::TakeSendCompletion()
{
    DWORD error = 0;
    if (FinishSend(error))
        return true;
    CDebug::AppendDebugMsg("error!!! WSAGetOverlappedResult() : error %d\n", static_cast<int>(error));
    return false;
}
