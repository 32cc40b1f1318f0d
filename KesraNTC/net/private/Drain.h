#pragma once

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/net/private/LockRoles.h"

#include <cstddef>
#include <vector>

class CNetClientIO;

namespace Kesra
{

struct Backlog;

/// Takes the queued packets out in their order, one after the other. What is not taken when it ends, an
/// exception of the game's included, stays queued. Under the connection's lock.
class Drain
{
public:
    explicit Drain(CNetClientIO& client) KESRANTC_LOCKING(requires_capability(DispatchRole));
    ~Drain() KESRANTC_LOCKING(requires_capability(DispatchRole));
    Drain(const Drain&) = delete;
    Drain& operator=(const Drain&) = delete;

    /// The next packet, its position at 0; null at the end. It counts as drained.
    CNTPacket* Next() KESRANTC_LOCKING(requires_capability(DispatchRole));

private:
    bool IsAtEnd() const KESRANTC_LOCKING(requires_capability(DispatchRole));
    void ForgetWhole() KESRANTC_LOCKING(requires_capability(DispatchRole));
    void GiveBack() KESRANTC_LOCKING(requires_capability(DispatchRole));
    static void ForgetStorage(std::vector<CNTPacket>& packets);
    void Take() KESRANTC_LOCKING(requires_capability(DispatchRole));
    CNTPacket* NextBehind() KESRANTC_LOCKING(requires_capability(DispatchRole));
    void NoteDrained(std::size_t bytes) KESRANTC_LOCKING(requires_capability(DispatchRole));
    void PutBack() KESRANTC_LOCKING(requires_capability(DispatchRole));
    void MakeRoom();

    CNetClientIO& Client;
    Backlog& Queue;
    bool IsTaken; ///< the queue itself, behind what an earlier drain has left
    std::size_t Drained = 0;
    CNTPacket Packet{CNTPacket::Unzeroed{}}; ///< one of those that lie in compact form
};

} // namespace Kesra
