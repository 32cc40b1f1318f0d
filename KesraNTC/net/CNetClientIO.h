#pragma once

#include "KesraNTC/net/CNetIO.h"

#include <memory>
#include <vector>

namespace Kesra
{
struct Backlog;
class Drain;
} // namespace Kesra

/// Adds the queue of complete received packets: the receive thread appends, any thread may take.
///
/// The oldest 30 lie whole in PacketQueue, what comes behind them in compact form. When more than a limit
/// waits, the receive thread stops reading, so that TCP holds the server back, and goes on when half of it
/// has been drained.
class KESRANTC_API CNetClientIO : public CNetIO
{
public:
    /// Packets that are queued whole; room is reserved for them.
    static constexpr std::size_t InitialQueue = 30;

    /// Reserves room for 30 packets.
    CNetClientIO();
    ~CNetClientIO() override;
    // A copy holds the packets that are queued.
    CNetClientIO(const CNetClientIO&);
    CNetClientIO& operator=(const CNetClientIO&);

    /// Moves the collected packet into the given empty one, appends a copy to the queue and starts collecting
    /// the next header. Always true. Receive thread.
    bool MakeCompletePacket(CNTPacket& packet);

    /// Packets that have been received and not yet handed to ProcessPacketFromServer. Any thread.
    unsigned long GetQueuedPackets();
    /// Their bytes, headers included. Any thread.
    unsigned long GetQueuedBytes();
    /// With more bytes than this in the queue reading stops: 32 MiB unless set. While a waiting request
    /// waits, reading goes on all the same. Any thread; acts at once.
    void SetBacklogLimit(unsigned long bytes);

    std::vector<CNTPacket> PacketQueue; ///< the oldest complete packets; touch it only while nothing receives

protected:
    /// Queues whole packets that lie one behind the other. Throws std::bad_alloc; some may be queued then.
    void QueuePackets(const char* packets, std::size_t bytes, std::size_t count);
    void ReserveQueue();
    /// True when reading has to stop until some of the queue has been drained.
    bool IsOverfull();

    std::unique_ptr<Kesra::Backlog>
        Received; ///< what is queued behind PacketQueue, and what is being drained

private:
    friend class Kesra::Drain;

    void CopyQueue(const CNetClientIO& other);
};
