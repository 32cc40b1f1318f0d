#include "KesraNTC/platform/posix/sockets/private/SocketErrors.h"

#include <cerrno>

namespace Kesra
{
namespace
{

struct ErrorPair {
    int System;
    int Socket;
};

constexpr ErrorPair ErrorTable[] = {
    {EAGAIN, WSAEWOULDBLOCK},
    {EINTR, WSAEINTR},
    {EBADF, WSAENOTSOCK},
    {EACCES, WSAEACCES},
    {EPERM, WSAEACCES},
    {EFAULT, WSAEFAULT},
    {EINVAL, WSAEINVAL},
    {EMFILE, WSAEMFILE},
    {ENFILE, WSAEMFILE},
    {EINPROGRESS, WSAEINPROGRESS},
    {EALREADY, WSAEALREADY},
    {ENOTSOCK, WSAENOTSOCK},
    {EDESTADDRREQ, WSAEDESTADDRREQ},
    {EMSGSIZE, WSAEMSGSIZE},
    {EPROTOTYPE, WSAEPROTOTYPE},
    {ENOPROTOOPT, WSAENOPROTOOPT},
    {EPROTONOSUPPORT, WSAEPROTONOSUPPORT},
    {ESOCKTNOSUPPORT, WSAESOCKTNOSUPPORT},
    {EOPNOTSUPP, WSAEOPNOTSUPP},
    {EAFNOSUPPORT, WSAEAFNOSUPPORT},
    {EADDRINUSE, WSAEADDRINUSE},
    {EADDRNOTAVAIL, WSAEADDRNOTAVAIL},
    {ENETDOWN, WSAENETDOWN},
    {ENETUNREACH, WSAENETUNREACH},
    {ENETRESET, WSAENETRESET},
    {ECONNABORTED, WSAECONNABORTED},
    {ECONNRESET, WSAECONNRESET},
    // Writing to a connection whose reset was reported before.
    {EPIPE, WSAECONNRESET},
    {ENOBUFS, WSAENOBUFS},
    {ENOMEM, WSAENOBUFS},
    {EISCONN, WSAEISCONN},
    {ENOTCONN, WSAENOTCONN},
    {ESHUTDOWN, WSAESHUTDOWN},
    {ETIMEDOUT, WSAETIMEDOUT},
    {ECONNREFUSED, WSAECONNREFUSED},
    {EHOSTDOWN, WSAEHOSTDOWN},
    {EHOSTUNREACH, WSAEHOSTUNREACH},
};

} // namespace

int SocketErrorFromErrno(int code)
{
    for (const ErrorPair& pair : ErrorTable)
        if (pair.System == code)
            return pair.Socket;
    return WSAENETDOWN;
}

int FailSocketCall(int socketError)
{
    SetLastError(static_cast<DWORD>(socketError));
    return SOCKET_ERROR;
}

} // namespace Kesra
