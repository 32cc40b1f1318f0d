#pragma once

#include "KesraNTC/platform/private/Locking.h"

#include <condition_variable>
#include <mutex>

namespace Kesra
{

/// A std::mutex, which is there before any constructor runs, for what it guards to name it.
class KESRANTC_LOCKING(capability("mutex")) Mutex
{
public:
    void lock() KESRANTC_LOCKING(acquire_capability()) { Native.lock(); }
    void unlock() KESRANTC_LOCKING(release_capability()) { Native.unlock(); }
    /// Lets go of it until notified; may return for no reason.
    void Wait(std::condition_variable& change) KESRANTC_LOCKING(requires_capability(this))
    {
        std::unique_lock<std::mutex> lock(Native, std::adopt_lock);
        change.wait(lock);
        lock.release();
    }

private:
    std::mutex Native;
};

} // namespace Kesra
