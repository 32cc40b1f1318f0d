#include "KesraNTC/net/private/SocketErrors.h"

#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/platform/Platform.h"

namespace
{

struct SocketErrorText {
    int Code;
    const char* Text;
};

constexpr SocketErrorText SocketErrorTexts[] = {
    {WSAECONNABORTED, "The virtual circuit was terminated due to a time-out or other failure."},
    {WSAENOBUFS, "The Windows Sockets provider reports a buffer deadlock."},
    {WSAESHUTDOWN,
     "The socket has been shut down; it is not possible to WSASend on a socket after shutdown has "
     "been invoked with how set to SD_SEND or SD_BOTH."},
    {WSAENETRESET,
     "The connection has been broken due to 'keep-alive' activity detecting a failure while the "
     "operation was in progress."},
    {WSA_OPERATION_ABORTED,
     "The overlapped operation has been canceled due to the closure of the socket, or the "
     "execution of the SIO_FLUSH command in WSAIoctl."},
    {WSAEWOULDBLOCK,
     "Overlapped sockets: There are too many outstanding overlapped I/O requests. Nonoverlapped "
     "sockets: The socket is marked as nonblocking and the send operation cannot be completed "
     "immediately."},
    {WSAENETDOWN, "The network subsystem has failed."},
};

} // namespace

void Kesra::LogSocketError(const char* prefix, int error)
{
    for (const SocketErrorText& known : SocketErrorTexts)
        if (known.Code == error)
            CDebug::AppendDebugMsg("%s%s\n", prefix, known.Text);
}
