#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/posix/Handles.h"

#include <arpa/inet.h>
#include <asm/ioctls.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>

#include <sys/socket.h>
#include <type_traits>
#include <utility>

// Addresses, htons and inet_addr are those of the system; its `connect`, `shutdown` and the like have
// overloads here. What tells them apart is the socket: SOCKET is unsigned, a descriptor of the system is an
// int. The two are different things, and neither kind of call takes the other's.

/// A socket of the functions below; 0 is none. A handle that was closed is not given out again for a long
/// time.
using SOCKET = unsigned int;

constexpr SOCKET INVALID_SOCKET = ~SOCKET{0};
constexpr int SOCKET_ERROR = -1;

using GROUP = unsigned int;
using ULONG_PTR = std::uintptr_t;
using SOCKADDR = sockaddr;
using LPSOCKADDR = sockaddr*;
using SOCKADDR_IN = sockaddr_in;
using IN_ADDR = in_addr;
using HOSTENT = hostent;
using LPHOSTENT = hostent*;
using PHOSTENT = hostent*;

constexpr DWORD WSA_FLAG_OVERLAPPED = 0x01;
constexpr int SD_RECEIVE = 0;
constexpr int SD_SEND = 1;
constexpr int SD_BOTH = 2;
constexpr int SO_DONTLINGER = ~SO_LINGER;
constexpr int TCP_MAXRT = TCP_USER_TIMEOUT;
constexpr DWORD SIO_KEEPALIVE_VALS = 0x98000004;

constexpr int WSA_INVALID_HANDLE = 6;
constexpr int WSA_NOT_ENOUGH_MEMORY = 8;
constexpr int WSA_INVALID_PARAMETER = 87;
constexpr int WSA_OPERATION_ABORTED = 995;
constexpr int WSA_IO_INCOMPLETE = 996;
constexpr int WSA_IO_PENDING = 997;
constexpr int WSAEINTR = 10004;
constexpr int WSAEBADF = 10009;
constexpr int WSAEACCES = 10013;
constexpr int WSAEFAULT = 10014;
constexpr int WSAEINVAL = 10022;
constexpr int WSAEMFILE = 10024;
constexpr int WSAEWOULDBLOCK = 10035;
constexpr int WSAEINPROGRESS = 10036;
constexpr int WSAEALREADY = 10037;
constexpr int WSAENOTSOCK = 10038;
constexpr int WSAEDESTADDRREQ = 10039;
constexpr int WSAEMSGSIZE = 10040;
constexpr int WSAEPROTOTYPE = 10041;
constexpr int WSAENOPROTOOPT = 10042;
constexpr int WSAEPROTONOSUPPORT = 10043;
constexpr int WSAESOCKTNOSUPPORT = 10044;
constexpr int WSAEOPNOTSUPP = 10045;
constexpr int WSAEAFNOSUPPORT = 10047;
constexpr int WSAEADDRINUSE = 10048;
constexpr int WSAEADDRNOTAVAIL = 10049;
constexpr int WSAENETDOWN = 10050;
constexpr int WSAENETUNREACH = 10051;
constexpr int WSAENETRESET = 10052;
constexpr int WSAECONNABORTED = 10053;
constexpr int WSAECONNRESET = 10054;
constexpr int WSAENOBUFS = 10055;
constexpr int WSAEISCONN = 10056;
constexpr int WSAENOTCONN = 10057;
constexpr int WSAESHUTDOWN = 10058;
constexpr int WSAETIMEDOUT = 10060;
constexpr int WSAECONNREFUSED = 10061;
constexpr int WSAEHOSTDOWN = 10064;
constexpr int WSAEHOSTUNREACH = 10065;
constexpr int WSAVERNOTSUPPORTED = 10092;
constexpr int WSANOTINITIALISED = 10093;
constexpr int WSAHOST_NOT_FOUND = 11001;
constexpr int WSATRY_AGAIN = 11002;
constexpr int WSANO_RECOVERY = 11003;
constexpr int WSANO_DATA = 11004;

struct WSADATA {
    WORD wVersion;
    WORD wHighVersion;
    USHORT iMaxSockets;
    USHORT iMaxUdpDg;
    char* lpVendorInfo;
    char szDescription[257];
    char szSystemStatus[129];
};
using LPWSADATA = WSADATA*;

struct WSABUF {
    ULONG len;
    char* buf;
};
using LPWSABUF = WSABUF*;

/// State of one overlapped operation. The caller keeps it and the data in place until the operation
/// completes, which sets the event. Clear it before its first use.
struct OVERLAPPED {
    ULONG_PTR Internal;
    ULONG_PTR InternalHigh;
    DWORD Offset;
    DWORD OffsetHigh;
    HANDLE hEvent;
};
using LPOVERLAPPED = OVERLAPPED*;
using WSAOVERLAPPED = OVERLAPPED;
using LPWSAOVERLAPPED = OVERLAPPED*;

/// Completion routines are not offered: pass null.
using LPWSAOVERLAPPED_COMPLETION_ROUTINE = void (*)(DWORD error, DWORD transferred, OVERLAPPED* overlapped,
                                                    DWORD flags);

/// Of SIO_KEEPALIVE_VALS: whether an idle connection is probed, after how many milliseconds of silence, and
/// how many there are between two probes. After 10 probes without an answer the connection fails.
struct tcp_keepalive {
    u_long onoff;
    u_long keepalivetime;
    u_long keepaliveinterval;
};

struct WSAPROTOCOL_INFOA;
using LPWSAPROTOCOL_INFOA = WSAPROTOCOL_INFOA*;

namespace Kesra
{

// What a call's first argument is rather: a socket or a descriptor. Declared only.
std::true_type IsSocket(SOCKET);
std::false_type IsSocket(int);
template <typename Socket>
using IfSocket = std::enable_if_t<decltype(IsSocket(std::declval<const Socket&>()))::value, bool>;

KESRANTC_API int SetSocketOption(SOCKET socket, int level, int option, const char* value, int size);
KESRANTC_API int ReceiveFromSocket(SOCKET socket, char* data, int size, int flags);
KESRANTC_API int SendToSocket(SOCKET socket, const char* data, int size, int flags);

} // namespace Kesra

/// Returns 0 or the error code. Sockets can be made until as many WSACleanup calls were made.
KESRANTC_API int WSAStartup(WORD version, WSADATA* data);
KESRANTC_API int WSACleanup();

/// The thread's last error, the one of GetLastError. Sockets report Winsock numbers.
KESRANTC_API int WSAGetLastError();
KESRANTC_API void WSASetLastError(int code);

KESRANTC_API SOCKET WSASocketA(int family, int type, int protocol, WSAPROTOCOL_INFOA* protocolInfo,
                               GROUP group, DWORD flags);

/// Operations still pending complete with WSA_OPERATION_ABORTED, and calls of other threads end. What was
/// sent is still delivered.
KESRANTC_API int closesocket(SOCKET socket);

/// On a non-blocking socket WSAEWOULDBLOCK says that the attempt is under way; FD_CONNECT tells its end.
KESRANTC_API int connect(SOCKET socket, const sockaddr* address, int size);
KESRANTC_API int bind(SOCKET socket, const sockaddr* address, int size);
KESRANTC_API int listen(SOCKET socket, int backlog);
KESRANTC_API SOCKET accept(SOCKET socket, sockaddr* address, int* size);
KESRANTC_API int getsockname(SOCKET socket, sockaddr* address, int* size);

/// Receiving may not go on after SD_RECEIVE or SD_BOTH: what is pending completes with WSA_OPERATION_ABORTED.
KESRANTC_API int shutdown(SOCKET socket, int how);

/// FIONBIO alone: whether calls without an OVERLAPPED return WSAEWOULDBLOCK instead of waiting.
KESRANTC_API int ioctlsocket(SOCKET socket, long command, u_long* argument);

/// SIO_KEEPALIVE_VALS alone, with a tcp_keepalive to read; its times are rounded up to whole seconds, 1 at
/// least and 32767 at most. Nothing is written to `output`; `overlapped` is null.
KESRANTC_API int WSAIoctl(SOCKET socket, DWORD code, LPVOID input, DWORD inputSize, LPVOID output,
                          DWORD outputSize, DWORD* returned, OVERLAPPED* overlapped,
                          LPWSAOVERLAPPED_COMPLETION_ROUTINE routine);

/// Values are ints: SO_RCVTIMEO and SO_SNDTIMEO in milliseconds, SO_RCVBUF and SO_SNDBUF in bytes,
/// SO_DONTLINGER, SO_ERROR, SO_KEEPALIVE, SO_REUSEADDR; at level IPPROTO_TCP TCP_NODELAY, and TCP_MAXRT:
/// after how many seconds without an acknowledgement of what was sent, or without an answer to keep-alive
/// probes, the connection fails (0: as the system has it, -1: never). A value that took effect reads back as
/// set.
template <typename Socket, Kesra::IfSocket<Socket> = true>
int setsockopt(const Socket& socket, int level, int option, const char* value, int size)
{
    return Kesra::SetSocketOption(socket, level, option, value, size);
}
KESRANTC_API int getsockopt(SOCKET socket, int level, int option, char* value, int* size);

/// Return the number of bytes or SOCKET_ERROR; `recv` returns 0 when the peer has closed. Flags are 0.
template <typename Socket, typename Size, Kesra::IfSocket<Socket> = true>
int recv(const Socket& socket, char* data, Size size, int flags)
{
    return Kesra::ReceiveFromSocket(socket, data, static_cast<int>(size), flags);
}
template <typename Socket, typename Size, Kesra::IfSocket<Socket> = true>
int send(const Socket& socket, const char* data, Size size, int flags)
{
    return Kesra::SendToSocket(socket, data, static_cast<int>(size), flags);
}

/// Both take one buffer and flags 0; return 0 when done at once, else SOCKET_ERROR, with WSA_IO_PENDING when
/// the event of `overlapped` will tell. One read and one write may be pending at a time. Threads that wait
/// for the event carry the operation on. A read of a connection that has ended is accepted and fails by its
/// completion; one that was never made fails it at once with WSAENOTCONN. Without `overlapped` they are
/// `recv` and `send`.
KESRANTC_API int WSARecv(SOCKET socket, WSABUF* buffers, DWORD bufferCount, DWORD* received, DWORD* flags,
                         OVERLAPPED* overlapped, LPWSAOVERLAPPED_COMPLETION_ROUTINE routine);
KESRANTC_API int WSASend(SOCKET socket, WSABUF* buffers, DWORD bufferCount, DWORD* sent, DWORD flags,
                         OVERLAPPED* overlapped, LPWSAOVERLAPPED_COMPLETION_ROUTINE routine);

/// TRUE with the number of bytes when the operation succeeded. FALSE with its error; with WSA_IO_INCOMPLETE
/// while it is pending, unless `wait` is TRUE, which waits for the operation's event.
KESRANTC_API BOOL WSAGetOverlappedResult(SOCKET socket, OVERLAPPED* overlapped, DWORD* transferred, BOOL wait,
                                         DWORD* flags);

/// Whether the operation has ended, well or not; asks the memory of the block alone.
KESRANTC_API bool HasOverlappedIoCompleted(OVERLAPPED* overlapped);
