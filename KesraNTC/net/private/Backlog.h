#pragma once

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/net/private/CompactPackets.h"
#include "KesraNTC/net/private/LockRoles.h"

#include <atomic>
#include <vector>

namespace Kesra
{

/// The queue of a client behind its first packets, and the packets that the drain in progress has taken out.
struct Backlog {
    static constexpr std::size_t UsualLimit = std::size_t{32} * 1024 * 1024;

    /// Guards PacketQueue and the members below it, for moments only; taken inside the connection's lock,
    /// never around it.
    GuardLock QueueLock;
    CompactPackets Behind KESRANTC_LOCKING(guarded_by(QueueLock));      ///< what came behind PacketQueue
    std::size_t WholeBytes KESRANTC_LOCKING(guarded_by(QueueLock)) = 0; ///< of PacketQueue

    // The drain in progress: changed by the thread that holds the connection's lock, counted for everybody.
    std::vector<CNTPacket> TakenWhole KESRANTC_LOCKING(guarded_by(DispatchRole));
    std::size_t NextWhole KESRANTC_LOCKING(guarded_by(DispatchRole)) = 0;
    CompactPackets TakenBehind KESRANTC_LOCKING(guarded_by(DispatchRole));
    std::atomic<std::size_t> TakenPackets{0};
    std::atomic<std::size_t> TakenBytes{0};
    std::size_t LastDrained KESRANTC_LOCKING(guarded_by(DispatchRole)) = 0; ///< packets of the drain before

    std::atomic<std::size_t> Limit{UsualLimit};
    std::atomic<bool> IsPaused{false}; ///< the receive thread waits for room
};

} // namespace Kesra
