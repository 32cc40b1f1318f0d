#include "tests/support/posix/FailingCalls.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <netdb.h>
#include <new>
#include <poll.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/socket.h>

// The program's own functions of these names take the place of the system's, for the library linked into it.

std::atomic<int> WaitingPolls{0};
std::atomic<int> BlockingReceives{0};
std::atomic<long> MappedBytes{0};

namespace
{

struct Plan {
    int Error;
    int Left;
};

thread_local constinit std::array<Plan, static_cast<std::size_t>(SystemCall::Count)> Plans{};
thread_local constinit bool IsConnectInterrupted = false;

Plan& PlanOf(SystemCall call)
{
    return Plans[static_cast<std::size_t>(call)];
}

/// 0 when the call is to do its work, else the error it fails with.
int FailureOf(SystemCall call)
{
    Plan& plan = PlanOf(call);
    if (plan.Left == 0)
        return 0;
    --plan.Left;
    return plan.Error;
}

bool FailsWithErrno(SystemCall call)
{
    const int error = FailureOf(call);
    if (error != 0)
        errno = error;
    return error != 0;
}

template <typename Function> Function* Next(Function*, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

Failing::Failing(SystemCall call, int error, int times) : Call(call), Times(times)
{
    PlanOf(call) = {error, times};
}

Failing::~Failing()
{
    PlanOf(Call) = {};
}

int Failing::GetFailures() const
{
    return Times - PlanOf(Call).Left;
}

InterruptedConnect::InterruptedConnect()
{
    IsConnectInterrupted = true;
}

InterruptedConnect::~InterruptedConnect()
{
    IsConnectInterrupted = false;
}

extern "C" {

int connect(int socket, const sockaddr* address, socklen_t size)
{
    static const auto next = Next(static_cast<int (*)(int, const sockaddr*, socklen_t)>(nullptr), "connect");
    if (FailsWithErrno(SystemCall::Connect))
        return -1;
    const int result = next(socket, address, size);
    if (result != 0 || !IsConnectInterrupted)
        return result;
    errno = EINTR;
    return -1;
}

ssize_t recv(int socket, void* data, size_t size, int flags)
{
    static const auto next = Next(static_cast<ssize_t (*)(int, void*, size_t, int)>(nullptr), "recv");
    if ((flags & MSG_DONTWAIT) == 0)
        ++BlockingReceives;
    return next(socket, data, size, flags);
}

int poll(pollfd* descriptors, nfds_t count, int timeout)
{
    static const auto next = Next(static_cast<int (*)(pollfd*, nfds_t, int)>(nullptr), "poll");
    return FailsWithErrno(SystemCall::Poll) ? -1 : next(descriptors, count, timeout);
}

int ppoll(pollfd* descriptors, nfds_t count, const timespec* timeout, const sigset_t* signals)
{
    static const auto next =
        Next(static_cast<int (*)(pollfd*, nfds_t, const timespec*, const sigset_t*)>(nullptr), "ppoll");
    ++WaitingPolls;
    return FailsWithErrno(SystemCall::WaitingPoll) ? -1 : next(descriptors, count, timeout, signals);
}

int getsockopt(int socket, int level, int option, void* value, socklen_t* size) noexcept
{
    static const auto next =
        Next(static_cast<int (*)(int, int, int, void*, socklen_t*)>(nullptr), "getsockopt");
    return FailsWithErrno(SystemCall::GetSocketOption) ? -1 : next(socket, level, option, value, size);
}

int gethostbyname_r(const char* name, hostent* entry, char* storage, size_t size, hostent** found, int* error)
{
    static const auto next =
        Next(static_cast<int (*)(const char*, hostent*, char*, size_t, hostent**, int*)>(nullptr),
             "gethostbyname_r");
    const int failure = FailureOf(SystemCall::ResolveName);
    if (failure == 0)
        return next(name, entry, storage, size, found, error);
    *found = nullptr;
    *error = NETDB_INTERNAL;
    return failure;
}

void* mmap(void* address, size_t size, int protection, int flags, int file, off_t offset) noexcept
{
    static const auto next =
        Next(static_cast<void* (*)(void*, size_t, int, int, int, off_t)>(nullptr), "mmap");
    if (FailsWithErrno(SystemCall::MapMemory))
        return MAP_FAILED;
    void* const pages = next(address, size, protection, flags, file, offset);
    MappedBytes += pages != MAP_FAILED ? static_cast<long>(size) : 0;
    return pages;
}

int munmap(void* address, size_t size) noexcept
{
    static const auto next = Next(static_cast<int (*)(void*, size_t)>(nullptr), "munmap");
    const int result = next(address, size);
    MappedBytes -= result == 0 ? static_cast<long>(size) : 0;
    return result;
}

int pthread_attr_setdetachstate(pthread_attr_t* attributes, int state) noexcept
{
    static const auto next =
        Next(static_cast<int (*)(pthread_attr_t*, int)>(nullptr), "pthread_attr_setdetachstate");
    const int error = FailureOf(SystemCall::SetDetached);
    return error != 0 ? error : next(attributes, state);
}

int pthread_attr_setstacksize(pthread_attr_t* attributes, size_t size) noexcept
{
    static const auto next =
        Next(static_cast<int (*)(pthread_attr_t*, size_t)>(nullptr), "pthread_attr_setstacksize");
    const int error = FailureOf(SystemCall::SetStackSize);
    return error != 0 ? error : next(attributes, size);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                   void* argument) noexcept
{
    using Create = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto next = Next(static_cast<Create*>(nullptr), "pthread_create");
    const int error = FailureOf(SystemCall::CreateThread);
    return error != 0 ? error : next(thread, attributes, start, argument);
}
}

void* operator new(std::size_t size)
{
    void* memory = FailureOf(SystemCall::New) == 0 ? std::malloc(size != 0 ? size : 1) : nullptr;
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return FailureOf(SystemCall::NewWithoutThrow) == 0 ? std::malloc(size != 0 ? size : 1) : nullptr;
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}
