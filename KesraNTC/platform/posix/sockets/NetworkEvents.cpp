#include "KesraNTC/platform/posix/sockets/NetworkEvents.h"

#include "KesraNTC/platform/posix/sockets/private/SocketErrors.h"
#include "KesraNTC/platform/posix/sockets/private/SocketSlot.h"

using Kesra::EventObject;
using Kesra::FailSocketCall;
using Kesra::SocketPin;

int WSAEventSelect(SOCKET socket, WSAEVENT event, long networkEvents)
{
    const SocketPin pin(socket);
    if (!pin)
        return SOCKET_ERROR;
    if ((networkEvents & ~(FD_CONNECT | FD_CLOSE)) != 0)
        return FailSocketCall(WSAEINVAL);
    EventObject* object = networkEvents != 0 ? Kesra::FromHandle<EventObject>(event) : nullptr;
    if (networkEvents != 0 && object == nullptr)
        return FailSocketCall(WSAEINVAL);
    if (const int error = pin->SetNonBlocking(true); error != 0)
        return FailSocketCall(error);
    const int error = pin->Selection.Select(socket, object, networkEvents);
    return error != 0 ? FailSocketCall(error) : 0;
}

int WSAEnumNetworkEvents(SOCKET socket, WSAEVENT event, WSANETWORKEVENTS* networkEvents)
{
    const SocketPin pin(socket);
    if (!pin)
        return SOCKET_ERROR;
    if (networkEvents == nullptr)
        return FailSocketCall(WSAEFAULT);
    EventObject* object = Kesra::FromHandle<EventObject>(event);
    if (event != nullptr && object == nullptr)
        return FailSocketCall(WSA_INVALID_HANDLE);
    *networkEvents = pin->Selection.Take(object);
    return 0;
}
