#pragma once

#include <chrono>
#include <cstddef>

namespace Kesra
{

/// What the server grants its clients all together. Reaching a limit goes to the log.
struct ServerLimits {
    /// Connections at a time; whoever comes when all are in use is turned away.
    std::size_t Connections = 1000;

    /// How long a connection may stay without a logon; 0 is for ever.
    std::chrono::milliseconds LogonTime{std::chrono::minutes(5)};

    /// Bytes that wait to be sent to all peers together. Beyond it the peer for which most waits is dropped,
    /// again and again until the rest fits.
    std::size_t QueuedBytes = 64 * 1024 * 1024;

    /// How long a peer may leave bytes unacknowledged or, when idle, the system's probes unanswered before it
    /// counts as dead; 0 is for ever. Whole seconds, at least one.
    std::chrono::milliseconds PeerTimeout{std::chrono::seconds(60)};
};

} // namespace Kesra
