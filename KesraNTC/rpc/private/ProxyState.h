#pragma once

#include "KesraNTC/base/private/Held.h"
#include "KesraNTC/rpc/CNTProxy.h"

#include <atomic>
#include <cstdint>

class CNTBaseClient;

namespace Kesra
{

inline constexpr LockRole ProxyRole{}; ///< CNTProxy::Lock

/// What a proxy knows beside its table.
struct ProxyState {
    static constexpr unsigned long UsualTimeLimit = 20000;

    /// Whom the proxy is attached to; only as long as its Client is the same.
    CNTBaseClient* Owner = nullptr;
    std::atomic<unsigned long> TimeLimit{UsualTimeLimit};

    /// The table of a proxy.
    static std::map<short, CNestedReply*>& TableOf(CNTProxy& proxy)
        KESRANTC_LOCKING(requires_capability(ProxyRole))
    {
        return proxy.Pending;
    }

    // Replies of the newest connection; microseconds.
    std::uint64_t RepliesOf KESRANTC_LOCKING(guarded_by(ProxyRole)) = 0; ///< that connection's generation
    std::uint64_t Replies KESRANTC_LOCKING(guarded_by(ProxyRole)) = 0;
    std::uint64_t LastTime KESRANTC_LOCKING(guarded_by(ProxyRole)) = 0;
    std::uint64_t LongestTime KESRANTC_LOCKING(guarded_by(ProxyRole)) = 0;
    std::uint64_t TotalTime KESRANTC_LOCKING(guarded_by(ProxyRole)) = 0;
};

} // namespace Kesra
