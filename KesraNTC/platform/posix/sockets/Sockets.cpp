#include "KesraNTC/platform/posix/sockets/Sockets.h"

#include "KesraNTC/platform/posix/sockets/private/SocketErrors.h"
#include "KesraNTC/platform/posix/sockets/private/SocketSlot.h"
#include "KesraNTC/platform/posix/waiting/Events.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <unistd.h>

using Kesra::EventObject;
using Kesra::FailSocketCall;
using Kesra::OverlappedState;
using Kesra::SocketErrorFromErrno;
using Kesra::SocketPin;
using Kesra::SocketSlot;
using Kesra::TransferResult;

namespace
{

constexpr WORD WinsockVersion = 0x0202;

std::atomic<int> StartupCount{0};

/// Reports errno; a call that gave up waiting says so by EAGAIN, as one that must not wait does.
int FailSystemCall(const SocketPin& pin)
{
    if (errno != EAGAIN)
        return FailSocketCall(SocketErrorFromErrno(errno));
    return FailSocketCall(pin->IsNonBlocking.load(std::memory_order_relaxed) ? WSAEWOULDBLOCK : WSAETIMEDOUT);
}

/// The same for a call that may have waited: closing the socket ends it, and a reset is kept for later calls.
int FailWaitingCall(const SocketPin& pin, SOCKET socket)
{
    if (!pin->IsOpen(socket))
        return FailSocketCall(WSAEINTR);
    return errno == EAGAIN ? FailSystemCall(pin) : FailSocketCall(pin->NoteError(errno));
}

/// A connection attempt that a signal interrupted goes on by itself: waits for its end and returns its errno.
int FinishConnecting(int descriptor)
{
    pollfd state{descriptor, POLLOUT, 0};
    while (poll(&state, 1, -1) < 0)
        if (errno != EINTR)
            return errno;
    int error = 0;
    socklen_t size = sizeof error;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

/// The event of an OVERLAPPED, null for none. False, with the error set, when it is no event.
bool FindOverlappedEvent(const OVERLAPPED* overlapped, EventObject*& event)
{
    event = Kesra::FromHandle<EventObject>(overlapped->hEvent);
    if (event != nullptr || overlapped->hEvent == nullptr)
        return true;
    FailSocketCall(WSA_INVALID_HANDLE);
    return false;
}

bool CheckBuffers(const WSABUF* buffers, DWORD count)
{
    if (buffers != nullptr && count == 1)
        return true;
    FailSocketCall(buffers == nullptr ? WSAEFAULT : WSAEINVAL);
    return false;
}

int ReturnCount(int count, DWORD* transferred)
{
    if (count == SOCKET_ERROR)
        return SOCKET_ERROR;
    if (transferred != nullptr)
        *transferred = static_cast<DWORD>(count);
    return 0;
}

} // namespace

int WSAStartup(WORD version, WSADATA* data)
{
    if (data == nullptr)
        return WSAEFAULT;
    const int major = version & 0xFF;
    if (major == 0)
        return WSAVERNOTSUPPORTED;
    *data = WSADATA{};
    data->wVersion = major < 2 ? version : WinsockVersion;
    data->wHighVersion = WinsockVersion;
    ++StartupCount;
    return 0;
}

int WSACleanup()
{
    int count = StartupCount.load();
    do {
        if (count == 0)
            return FailSocketCall(WSANOTINITIALISED);
    } while (!StartupCount.compare_exchange_weak(count, count - 1));
    return 0;
}

int WSAGetLastError()
{
    return static_cast<int>(GetLastError());
}

void WSASetLastError(int code)
{
    SetLastError(static_cast<DWORD>(code));
}

SOCKET WSASocketA(int family, int type, int protocol, WSAPROTOCOL_INFOA* protocolInfo, GROUP, DWORD)
{
    if (StartupCount.load() == 0 || protocolInfo != nullptr) {
        FailSocketCall(protocolInfo != nullptr ? WSAEINVAL : WSANOTINITIALISED);
        return INVALID_SOCKET;
    }
    const int descriptor = ::socket(family, type | SOCK_CLOEXEC, protocol);
    if (descriptor < 0) {
        FailSocketCall(SocketErrorFromErrno(errno));
        return INVALID_SOCKET;
    }
    return SocketSlot::Open(descriptor);
}

int closesocket(SOCKET socket)
{
    SocketSlot* slot = SocketSlot::Find(socket);
    return slot != nullptr && slot->Close(socket) ? 0 : FailSocketCall(WSAENOTSOCK);
}

int connect(SOCKET socket, const sockaddr* address, int size)
{
    const SocketPin pin(socket);
    if (!pin)
        return SOCKET_ERROR;
    int error = ::connect(pin.Descriptor(), address, static_cast<socklen_t>(size)) == 0 ? 0 : errno;
    if (error == EINTR)
        error = FinishConnecting(pin.Descriptor());
    const bool nonBlocking = pin->IsNonBlocking.load(std::memory_order_relaxed);
    // The system tells the success of an attempt that it did not wait for once more.
    if (error == 0 && nonBlocking && pin->Selection.HasBegun())
        return FailSocketCall(WSAEISCONN);
    if (error == EINPROGRESS || (error == 0 && nonBlocking)) {
        pin->Selection.BeginConnecting();
        return FailSocketCall(nonBlocking ? WSAEWOULDBLOCK : WSAETIMEDOUT);
    }
    // EAGAIN must not be taken for an attempt that is under way.
    if (error != 0)
        return FailSocketCall(error == EAGAIN ? WSAENOBUFS : SocketErrorFromErrno(error));
    pin->Selection.SetConnected();
    return 0;
}

int bind(SOCKET socket, const sockaddr* address, int size)
{
    const SocketPin pin(socket);
    if (!pin)
        return SOCKET_ERROR;
    const int result = ::bind(pin.Descriptor(), address, static_cast<socklen_t>(size));
    return result == 0 ? 0 : FailSystemCall(pin);
}

int listen(SOCKET socket, int backlog)
{
    const SocketPin pin(socket);
    if (!pin)
        return SOCKET_ERROR;
    return ::listen(pin.Descriptor(), backlog) == 0 ? 0 : FailSystemCall(pin);
}

SOCKET accept(SOCKET socket, sockaddr* address, int* size)
{
    const SocketPin pin(socket);
    if (!pin)
        return INVALID_SOCKET;
    socklen_t length = size != nullptr ? static_cast<socklen_t>(*size) : 0;
    socklen_t* lengthOut = size != nullptr ? &length : nullptr;
    int descriptor = -1;
    do {
        descriptor = ::accept4(pin.Descriptor(), address, lengthOut, SOCK_CLOEXEC);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0) {
        FailWaitingCall(pin, socket);
        return INVALID_SOCKET;
    }
    if (size != nullptr)
        *size = static_cast<int>(length);
    const SOCKET accepted = SocketSlot::Open(descriptor);
    if (accepted != INVALID_SOCKET)
        SocketSlot::Find(accepted)->Selection.SetConnected();
    return accepted;
}

int getsockname(SOCKET socket, sockaddr* address, int* size)
{
    const SocketPin pin(socket);
    if (!pin)
        return SOCKET_ERROR;
    auto length = static_cast<socklen_t>(*size);
    if (::getsockname(pin.Descriptor(), address, &length) != 0)
        return FailSystemCall(pin);
    *size = static_cast<int>(length);
    return 0;
}

int shutdown(SOCKET socket, int how)
{
    const SocketPin pin(socket);
    if (!pin)
        return SOCKET_ERROR;
    if (how != SD_RECEIVE && how != SD_SEND && how != SD_BOTH)
        return FailSocketCall(WSAEINVAL);
    // Refused, it leaves the socket as it is: a connection may still be made.
    if (!pin->HadPeer.load(std::memory_order_relaxed))
        return FailSocketCall(WSAENOTCONN);
    // The reader must not take our own end for the peer's: its operation ends before the system hears of
    // this.
    if (how != SD_SEND)
        pin->Read.Shut(WSA_OPERATION_ABORTED);
    if (how != SD_RECEIVE)
        pin->Write.Shut(WSA_OPERATION_ABORTED);
    return ::shutdown(pin.Descriptor(), how) == 0 ? 0 : FailSystemCall(pin);
}

int Kesra::ReceiveFromSocket(SOCKET socket, char* data, int size, int flags)
{
    const SocketPin pin(socket);
    if (!pin)
        return SOCKET_ERROR;
    if (flags != 0 || size < 0)
        return FailSocketCall(flags != 0 ? WSAEOPNOTSUPP : WSAEFAULT);
    const TransferResult ready = pin->Read.ReceiveNow(socket, data, static_cast<DWORD>(size));
    if (ready.Error == 0)
        return static_cast<int>(ready.Bytes);
    if (ready.Error != WSA_IO_PENDING)
        return FailSocketCall(ready.Error);
    ssize_t count = -1;
    do {
        count = ::recv(pin.Descriptor(), data, static_cast<std::size_t>(size), 0);
    } while (count < 0 && errno == EINTR);
    if (count < 0)
        return FailWaitingCall(pin, socket);
    if (count == 0 && size != 0) {
        // The end of the stream is our own when the socket was closed meanwhile.
        const int error = pin->IsOpen(socket) ? pin->GetErrorAtEnd() : WSAEINTR;
        return error != 0 ? FailSocketCall(error) : 0;
    }
    return static_cast<int>(count);
}

int Kesra::SendToSocket(SOCKET socket, const char* data, int size, int flags)
{
    const SocketPin pin(socket);
    if (!pin)
        return SOCKET_ERROR;
    if (flags != 0 || size < 0)
        return FailSocketCall(flags != 0 ? WSAEOPNOTSUPP : WSAEFAULT);
    const TransferResult taken = pin->Write.SendNow(socket, data, static_cast<DWORD>(size));
    if (taken.Error != 0 && taken.Error != WSA_IO_PENDING)
        return FailSocketCall(taken.Error);
    int done = static_cast<int>(taken.Bytes);
    if (pin->IsNonBlocking.load(std::memory_order_relaxed))
        return done != 0 || size == 0 ? done : FailSocketCall(WSAEWOULDBLOCK);
    while (done != size) {
        const auto left = static_cast<std::size_t>(size - done);
        const ssize_t count = ::send(pin.Descriptor(), data + done, left, MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR)
            return FailWaitingCall(pin, socket);
        done += static_cast<int>(std::max<ssize_t>(count, 0));
    }
    return done;
}

int WSARecv(SOCKET socket, WSABUF* buffers, DWORD bufferCount, DWORD* received, DWORD* flags,
            OVERLAPPED* overlapped, LPWSAOVERLAPPED_COMPLETION_ROUTINE routine)
{
    if (!CheckBuffers(buffers, bufferCount))
        return SOCKET_ERROR;
    if (routine != nullptr || (flags != nullptr && *flags != 0))
        return FailSocketCall(WSAEOPNOTSUPP);
    if (overlapped == nullptr)
        return ReturnCount(recv(socket, buffers->buf, static_cast<int>(buffers->len), 0), received);
    EventObject* event = nullptr;
    if (!FindOverlappedEvent(overlapped, event))
        return SOCKET_ERROR;
    SocketSlot* slot = SocketSlot::Find(socket);
    if (slot == nullptr)
        return FailSocketCall(WSAENOTSOCK);
    return slot->Read.Receive(socket, *buffers, received, overlapped, event);
}

DWORD Kesra::ConsumeReadAhead(SOCKET socket, ReadAheadTaker take, void* context)
{
    SocketSlot* slot = SocketSlot::Find(socket);
    return slot != nullptr ? slot->Read.Consume(socket, take, context) : 0;
}

int WSASend(SOCKET socket, WSABUF* buffers, DWORD bufferCount, DWORD* sent, DWORD flags,
            OVERLAPPED* overlapped, LPWSAOVERLAPPED_COMPLETION_ROUTINE routine)
{
    if (!CheckBuffers(buffers, bufferCount))
        return SOCKET_ERROR;
    if (routine != nullptr || flags != 0)
        return FailSocketCall(WSAEOPNOTSUPP);
    if (overlapped == nullptr)
        return ReturnCount(send(socket, buffers->buf, static_cast<int>(buffers->len), 0), sent);
    EventObject* event = nullptr;
    if (!FindOverlappedEvent(overlapped, event))
        return SOCKET_ERROR;
    SocketSlot* slot = SocketSlot::Find(socket);
    if (slot == nullptr)
        return FailSocketCall(WSAENOTSOCK);
    return slot->Write.Send(socket, *buffers, sent, overlapped, event);
}

BOOL WSAGetOverlappedResult(SOCKET socket, OVERLAPPED* overlapped, DWORD* transferred, BOOL wait,
                            DWORD* flags)
{
    if (overlapped == nullptr || transferred == nullptr) {
        FailSocketCall(WSAEFAULT);
        return FALSE;
    }
    const OverlappedState state(overlapped);
    if (state.IsPending() && wait == FALSE) {
        SocketSlot* slot = SocketSlot::Find(socket);
        if (slot != nullptr) {
            slot->Read.AdvanceIf(overlapped);
            slot->Write.AdvanceIf(overlapped);
        }
    } else if (state.IsPending() && WaitForSingleObject(overlapped->hEvent, INFINITE) == WAIT_FAILED) {
        FailSocketCall(WSA_INVALID_HANDLE);
        return FALSE;
    }
    if (state.IsPending()) {
        FailSocketCall(WSA_IO_INCOMPLETE);
        return FALSE;
    }
    const TransferResult result = state.Result();
    *transferred = result.Bytes;
    if (flags != nullptr)
        *flags = 0;
    if (result.Error == 0)
        return TRUE;
    FailSocketCall(result.Error);
    return FALSE;
}

bool HasOverlappedIoCompleted(OVERLAPPED* overlapped)
{
    return !OverlappedState(overlapped).IsPending();
}
