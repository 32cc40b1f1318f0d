#include "KesraNTC/platform/posix/waiting/Threads.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <memory>
#include <new>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

namespace
{

constexpr std::uintptr_t BeginThreadFailed = ~std::uintptr_t{0};
constexpr std::intptr_t CurrentThreadPseudoHandle = -2;

struct ThreadStart {
    void (*Procedure)(void*);
    void* Argument;
};

void* RunThread(void* parameter)
{
    const ThreadStart start = *std::unique_ptr<ThreadStart>(static_cast<ThreadStart*>(parameter));
    start.Procedure(start.Argument);
    return nullptr;
}

/// Returns 0 or the error. The new thread frees the parameter.
int StartDetached(pthread_t& thread, std::size_t stackSize, ThreadStart* parameter)
{
    pthread_attr_t attributes;
    if (const int error = pthread_attr_init(&attributes); error != 0)
        return error;
    int error = pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    if (error == 0 && stackSize != 0)
        error = pthread_attr_setstacksize(&attributes,
                                          std::max(stackSize, static_cast<std::size_t>(PTHREAD_STACK_MIN)));
    if (error == 0)
        error = pthread_create(&thread, &attributes, RunThread, parameter);
    pthread_attr_destroy(&attributes);
    return error;
}

} // namespace

std::uintptr_t _beginthread(void (*start)(void*), unsigned stackSize, void* argument)
{
    std::unique_ptr<ThreadStart> parameter(new (std::nothrow) ThreadStart{start, argument});
    pthread_t thread{};
    const int error = parameter ? StartDetached(thread, stackSize, parameter.get()) : ENOMEM;
    if (error != 0) {
        errno = error;
        return BeginThreadFailed;
    }
    static_cast<void>(parameter.release()); // the new thread owns it
    return static_cast<std::uintptr_t>(thread);
}

HANDLE GetCurrentThread()
{
    return reinterpret_cast<HANDLE>(CurrentThreadPseudoHandle);
}

DWORD GetCurrentThreadId()
{
    static thread_local const auto id = static_cast<DWORD>(gettid());
    return id;
}

BOOL SetThreadPriority(HANDLE thread, int priority)
{
    if (thread != GetCurrentThread()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    // Nice values are per thread here. One step away from the process's own makes the thread come first
    // without starving the others.
    const int usual = getpriority(PRIO_PROCESS, static_cast<id_t>(getpid()));
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), usual - priority);
    return TRUE;
}
