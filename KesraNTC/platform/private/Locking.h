#pragma once

// What a lock guards and what a function needs, as Clang checks it (-Wthread-safety); nothing to other
// compilers. The attributes are Clang's own: capability("lock"), guarded_by(lock), acquire_capability(lock)
// ...
#if defined(__clang__)
#define KESRANTC_LOCKING(attribute) __attribute__((attribute))
#else
#define KESRANTC_LOCKING(attribute)
#endif

namespace Kesra
{

/// std::lock_guard as Clang can follow it.
template <class Lock> class [[nodiscard]] KESRANTC_LOCKING(scoped_lockable) LockGuard
{
public:
    explicit LockGuard(Lock& lock) KESRANTC_LOCKING(acquire_capability(lock)) : Guarded(lock)
    {
        Guarded.lock();
    }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;
    ~LockGuard() KESRANTC_LOCKING(release_capability()) { Guarded.unlock(); }

private:
    Lock& Guarded;
};

} // namespace Kesra
