#pragma once

#include <atomic>
#include <cstdint>

class CNTBaseClient;

namespace Kesra
{

/// What a proxy knows beside its table.
struct ProxyState {
    static constexpr unsigned long UsualTimeLimit = 20000;

    /// Whom the proxy is attached to; only as long as its Client is the same.
    CNTBaseClient* Owner = nullptr;
    std::atomic<unsigned long> TimeLimit{UsualTimeLimit};

    // Replies of the newest connection, under the proxy's lock; microseconds.
    std::uint64_t RepliesOf = 0; ///< that connection's generation
    std::uint64_t Replies = 0;
    std::uint64_t LastTime = 0;
    std::uint64_t LongestTime = 0;
    std::uint64_t TotalTime = 0;
};

} // namespace Kesra
