#pragma once

#include "KesraNTC/net/CNetIO.h"

#include <vector>

namespace Kesra
{
/// Packets in their order: the first ones whole and in place, those of a flood behind them as bare bytes,
/// since whole ones take a memory page each.
struct ReceivedPackets {
    std::vector<CNTPacket> Whole;
    std::vector<unsigned char> Flood;
};
} // namespace Kesra

/// Adds the queue of complete received packets: the receive thread appends, any thread may take.
class KESRANTC_API CNetClientIO : public CNetIO
{
public:
    /// Packets that are queued whole; room is reserved for them.
    static constexpr std::size_t InitialQueue = 30;

    /// Reserves room for 30 packets.
    CNetClientIO();
    ~CNetClientIO() override;
    CNetClientIO(const CNetClientIO&);
    CNetClientIO& operator=(const CNetClientIO&);

    /// Moves the collected packet into the given empty one, appends a copy to the queue and starts collecting
    /// the next header. Always true. Receive thread.
    bool MakeCompletePacket(CNTPacket& packet);

    std::vector<CNTPacket> PacketQueue; ///< complete packets, oldest first; guarded by QueueLock
    std::vector<unsigned char> Flood;   ///< the bytes of what came after InitialQueue others; same lock

protected:
    /// Exchanges the queued packets with empty lists that have room. Any thread.
    void TakeQueue(Kesra::ReceivedPackets& taken);

    /// Guards the queue and what CNTBaseClient says is under it, for moments only; taken inside Lock, never
    /// around it.
    CLock QueueLock;
};
