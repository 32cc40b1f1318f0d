#include "KesraNTC/platform/posix/sockets/private/SocketErrors.h"
#include "KesraNTC/platform/posix/sockets/private/SocketSlot.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <sys/time.h>

using Kesra::FailSocketCall;
using Kesra::SocketErrorFromErrno;
using Kesra::SocketPin;

namespace
{

template <typename Value> int SetSystemOption(const SocketPin& pin, int level, int option, const Value& value)
{
    if (::setsockopt(pin.Descriptor(), level, option, &value, sizeof value) != 0)
        return FailSocketCall(SocketErrorFromErrno(errno));
    return 0;
}

/// Writes the option's value; SOCKET_ERROR when the system has none.
int GetSystemOption(const SocketPin& pin, int level, int option, int& value)
{
    socklen_t size = sizeof value;
    if (::getsockopt(pin.Descriptor(), level, option, &value, &size) != 0)
        return FailSocketCall(SocketErrorFromErrno(errno));
    return 0;
}

int SetTimeout(const SocketPin& pin, int option, int milliseconds, std::atomic<int>& asSet)
{
    // Negative counts as unsigned on Windows: a time-out that is never reached.
    const timeval time{std::max(milliseconds, 0) / 1000, std::max(milliseconds, 0) % 1000 * 1000L};
    if (SetSystemOption(pin, SOL_SOCKET, option, time) != 0)
        return SOCKET_ERROR;
    asSet.store(milliseconds, std::memory_order_relaxed);
    return 0;
}

int SetBufferSize(const SocketPin& pin, int option, int size, std::atomic<int>& asSet)
{
    if (size < 0)
        return FailSocketCall(WSAEINVAL);
    if (SetSystemOption(pin, SOL_SOCKET, option, size) != 0)
        return SOCKET_ERROR;
    asSet.store(size, std::memory_order_relaxed);
    return 0;
}

/// The system doubles the size for its own needs, raises what is too small and cuts what is above its limit.
/// A buffer of at least the wanted size reads back as it was set.
int GetBufferSize(const SocketPin& pin, int option, int asSet, int& size)
{
    if (GetSystemOption(pin, SOL_SOCKET, option, size) != 0)
        return SOCKET_ERROR;
    size /= 2;
    if (asSet != Kesra::SocketSlot::NeverSet)
        size = std::min(size, asSet);
    return 0;
}

int SetSocketLevelOption(const SocketPin& pin, int option, int value)
{
    switch (option) {
    case SO_RCVTIMEO:
        return SetTimeout(pin, option, value, pin->ReceiveTimeout);
    case SO_SNDTIMEO:
        return SetTimeout(pin, option, value, pin->SendTimeout);
    case SO_RCVBUF:
        return SetBufferSize(pin, option, value, pin->ReceiveBuffer);
    case SO_SNDBUF:
        return SetBufferSize(pin, option, value, pin->SendBuffer);
    case SO_DONTLINGER:
        return SetSystemOption(pin, SOL_SOCKET, SO_LINGER, linger{value == 0, 0});
    case SO_KEEPALIVE:
    case SO_REUSEADDR:
        return SetSystemOption(pin, SOL_SOCKET, option, value);
    default:
        return FailSocketCall(WSAENOPROTOOPT);
    }
}

int GetSocketLevelOption(const SocketPin& pin, int option, int& value)
{
    switch (option) {
    case SO_RCVTIMEO:
        value = pin->ReceiveTimeout.load(std::memory_order_relaxed);
        return 0;
    case SO_SNDTIMEO:
        value = pin->SendTimeout.load(std::memory_order_relaxed);
        return 0;
    case SO_RCVBUF:
        return GetBufferSize(pin, option, pin->ReceiveBuffer.load(std::memory_order_relaxed), value);
    case SO_SNDBUF:
        return GetBufferSize(pin, option, pin->SendBuffer.load(std::memory_order_relaxed), value);
    case SO_DONTLINGER: {
        linger current{};
        socklen_t size = sizeof current;
        if (::getsockopt(pin.Descriptor(), SOL_SOCKET, SO_LINGER, &current, &size) != 0)
            return FailSocketCall(SocketErrorFromErrno(errno));
        value = current.l_onoff == 0;
        return 0;
    }
    case SO_ERROR:
        value = pin->TakeError();
        return 0;
    case SO_KEEPALIVE:
    case SO_REUSEADDR:
        return GetSystemOption(pin, SOL_SOCKET, option, value);
    default:
        return FailSocketCall(WSAENOPROTOOPT);
    }
}

int SetMaxRetransmission(const SocketPin& pin, int seconds)
{
    constexpr int Forever = -1;
    constexpr int MostSeconds = INT_MAX / 1000;
    if (seconds < Forever)
        return FailSocketCall(WSAEINVAL);
    const int milliseconds = seconds == Forever ? INT_MAX : std::min(seconds, MostSeconds) * 1000;
    if (SetSystemOption(pin, IPPROTO_TCP, TCP_USER_TIMEOUT, milliseconds) != 0)
        return SOCKET_ERROR;
    pin->MaxRetransmission.store(seconds, std::memory_order_relaxed);
    return 0;
}

int SetTcpLevelOption(const SocketPin& pin, int option, int value)
{
    switch (option) {
    case TCP_NODELAY:
        return SetSystemOption(pin, IPPROTO_TCP, option, value);
    case TCP_MAXRT:
        return SetMaxRetransmission(pin, value);
    default:
        return FailSocketCall(WSAENOPROTOOPT);
    }
}

int GetTcpLevelOption(const SocketPin& pin, int option, int& value)
{
    switch (option) {
    case TCP_NODELAY:
        return GetSystemOption(pin, IPPROTO_TCP, option, value);
    case TCP_MAXRT:
        value = pin->MaxRetransmission.load(std::memory_order_relaxed);
        return 0;
    default:
        return FailSocketCall(WSAENOPROTOOPT);
    }
}

/// The system counts the times in seconds, of which it takes this many at most.
int ToKeepAliveSeconds(u_long milliseconds)
{
    constexpr u_long MostSeconds = 32767;
    const u_long seconds = milliseconds / 1000 + (milliseconds % 1000 != 0);
    return static_cast<int>(std::clamp<u_long>(seconds, 1, MostSeconds));
}

int SetKeepAlive(const SocketPin& pin, const tcp_keepalive& wanted)
{
    constexpr int Probes = 10;
    if (wanted.onoff == 0)
        return SetSystemOption(pin, SOL_SOCKET, SO_KEEPALIVE, 0);
    const bool isSet =
        SetSystemOption(pin, IPPROTO_TCP, TCP_KEEPIDLE, ToKeepAliveSeconds(wanted.keepalivetime)) == 0 &&
        SetSystemOption(pin, IPPROTO_TCP, TCP_KEEPINTVL, ToKeepAliveSeconds(wanted.keepaliveinterval)) == 0 &&
        SetSystemOption(pin, IPPROTO_TCP, TCP_KEEPCNT, Probes) == 0 &&
        SetSystemOption(pin, SOL_SOCKET, SO_KEEPALIVE, 1) == 0;
    return isSet ? 0 : SOCKET_ERROR;
}

} // namespace

int Kesra::SetSocketOption(SOCKET socket, int level, int option, const char* value, int size)
{
    const SocketPin pin(socket);
    if (!pin)
        return SOCKET_ERROR;
    if (value == nullptr || size < static_cast<int>(sizeof(int)))
        return FailSocketCall(WSAEFAULT);
    int number = 0;
    std::memcpy(&number, value, sizeof number);
    if (level == SOL_SOCKET)
        return SetSocketLevelOption(pin, option, number);
    if (level == IPPROTO_TCP)
        return SetTcpLevelOption(pin, option, number);
    return FailSocketCall(WSAENOPROTOOPT);
}

int getsockopt(SOCKET socket, int level, int option, char* value, int* size)
{
    const SocketPin pin(socket);
    if (!pin)
        return SOCKET_ERROR;
    if (value == nullptr || size == nullptr || *size < static_cast<int>(sizeof(int)))
        return FailSocketCall(WSAEFAULT);
    int number = 0;
    int result = SOCKET_ERROR;
    if (level == SOL_SOCKET)
        result = GetSocketLevelOption(pin, option, number);
    else if (level == IPPROTO_TCP)
        result = GetTcpLevelOption(pin, option, number);
    else
        FailSocketCall(WSAENOPROTOOPT);
    if (result != 0)
        return SOCKET_ERROR;
    std::memcpy(value, &number, sizeof number);
    *size = sizeof number;
    return 0;
}

int ioctlsocket(SOCKET socket, long command, u_long* argument)
{
    const SocketPin pin(socket);
    if (!pin)
        return SOCKET_ERROR;
    if (command != static_cast<long>(FIONBIO))
        return FailSocketCall(WSAEOPNOTSUPP);
    if (argument == nullptr)
        return FailSocketCall(WSAEFAULT);
    const bool nonBlocking = *argument != 0;
    // A socket that tells an event of its state stays non-blocking.
    if (!nonBlocking && pin->Selection.IsActive())
        return FailSocketCall(WSAEINVAL);
    const int error = pin->SetNonBlocking(nonBlocking);
    return error != 0 ? FailSocketCall(error) : 0;
}

int WSAIoctl(SOCKET socket, DWORD code, LPVOID input, DWORD inputSize, LPVOID, DWORD, DWORD* returned,
             OVERLAPPED* overlapped, LPWSAOVERLAPPED_COMPLETION_ROUTINE routine)
{
    const SocketPin pin(socket);
    if (!pin)
        return SOCKET_ERROR;
    if (code != SIO_KEEPALIVE_VALS || overlapped != nullptr || routine != nullptr)
        return FailSocketCall(WSAEOPNOTSUPP);
    tcp_keepalive wanted;
    if (input == nullptr || inputSize < sizeof wanted || returned == nullptr)
        return FailSocketCall(WSAEFAULT);
    std::memcpy(&wanted, input, sizeof wanted);
    *returned = 0;
    return SetKeepAlive(pin, wanted);
}
