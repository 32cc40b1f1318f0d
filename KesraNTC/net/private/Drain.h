#pragma once

#include "KesraNTC/net/CNTPacket.h"

#include <cstddef>

class CNetClientIO;

namespace Kesra
{

struct Backlog;

/// Takes the queued packets out in their order, one after the other. What is not taken when it ends, an
/// exception of the game's included, stays queued. Under the connection's lock.
class Drain
{
public:
    explicit Drain(CNetClientIO& client);
    ~Drain();
    Drain(const Drain&) = delete;
    Drain& operator=(const Drain&) = delete;

    /// The next packet, its position at 0; null at the end. It counts as drained.
    CNTPacket* Next();

private:
    bool IsAtEnd() const;
    void ForgetWhole();
    void Take();
    CNTPacket* NextBehind();
    void NoteDrained(std::size_t bytes);
    void PutBack();
    void MakeRoom();

    CNetClientIO& Client;
    Backlog& Queue;
    bool IsTaken; ///< the queue itself, behind what an earlier drain has left
    std::size_t Drained = 0;
    CNTPacket Packet{CNTPacket::Unzeroed{}}; ///< one of those that lie in compact form
};

} // namespace Kesra
