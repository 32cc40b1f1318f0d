#pragma once

#include "KesraNTC/platform/posix/waiting/private/Futex.h"

#include <atomic>
#include <mutex>
#include <pthread.h>

namespace Kesra
{

/// A pointer of each thread's own and what is to be done with it when the thread ends. A thread-local object
/// with a destructor would end the process when there is no memory to remember it; this says so, and tries
/// again the next time.
class ThreadKey
{
public:
    explicit ThreadKey(void (*leave)(void* pointer)) : Leave(leave) {}
    ThreadKey(const ThreadKey&) = delete;
    ThreadKey& operator=(const ThreadKey&) = delete;
    ~ThreadKey()
    {
        if (IsMade)
            pthread_key_delete(Key);
    }

    /// Null until set. The thread's end calls nothing for null.
    void* Get() const { return IsMade ? pthread_getspecific(Key) : nullptr; }
    bool Set(void* pointer) { return (IsMade || Make()) && pthread_setspecific(Key, pointer) == 0; }

private:
    bool Make()
    {
        const std::lock_guard guard(Lock);
        if (!IsMade)
            IsMade = pthread_key_create(&Key, Leave) == 0;
        return IsMade;
    }

    void (*const Leave)(void* pointer);
    FutexLock Lock;
    pthread_key_t Key{};
    std::atomic<bool> IsMade{false};
};

} // namespace Kesra
