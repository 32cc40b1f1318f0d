#pragma once

#include <pthread.h>

namespace Kesra
{

/// A pointer of each thread's own and what is to be done with it when the thread ends. A thread-local object
/// with a destructor would end the process when there is no memory to remember it; this says so.
class ThreadKey
{
public:
    explicit ThreadKey(void (*leave)(void* pointer)) : IsMade(pthread_key_create(&Key, leave) == 0) {}
    ThreadKey(const ThreadKey&) = delete;
    ThreadKey& operator=(const ThreadKey&) = delete;
    ~ThreadKey()
    {
        if (IsMade)
            pthread_key_delete(Key);
    }

    /// Null until set. The thread's end calls nothing for null.
    void* Get() const { return IsMade ? pthread_getspecific(Key) : nullptr; }
    bool Set(void* pointer) const { return IsMade && pthread_setspecific(Key, pointer) == 0; }

private:
    pthread_key_t Key{};
    const bool IsMade;
};

} // namespace Kesra
