#pragma once

#include "KesraNTC/base/CLock.h"
#include "KesraNTC/platform/private/Locking.h"

namespace Kesra
{

/// A CLock of the library's own, which members and functions can name as what guards them.
class KESRANTC_LOCKING(capability("lock")) GuardLock : public CLock
{
};

/// Stands for a kind of lock where the lock itself cannot be named: one of a public class, or of another
/// object.
struct KESRANTC_LOCKING(capability("role")) LockRole {
};

/// Holds a lock, and the role that it stands for, for as long as it lives.
class [[nodiscard]] KESRANTC_LOCKING(scoped_lockable) Held : private Locked
{
public:
    explicit Held(GuardLock& lock) KESRANTC_LOCKING(acquire_capability(lock)) : Locked(lock) {}
    Held(CLock& lock, const LockRole& role) KESRANTC_LOCKING(acquire_capability(role)) : Locked(lock)
    {
        static_cast<void>(role);
    }
    ~Held() KESRANTC_LOCKING(release_capability()) {}
};

} // namespace Kesra
