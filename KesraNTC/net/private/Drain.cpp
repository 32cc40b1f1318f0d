#include "KesraNTC/net/private/Drain.h"

#include "KesraNTC/net/CNetClientIO.h"
#include "KesraNTC/net/private/Backlog.h"
#include "KesraNTC/net/private/IoState.h"
#include "KesraNTC/platform/private/Pages.h"

#include <algorithm>
#include <utility>

namespace Kesra
{

Drain::Drain(CNetClientIO& client) : Client(client), Queue(*client.Received)
{
    // What an earlier drain has left comes first.
    IsTaken = IsAtEnd();
    if (IsTaken)
        Take();
}

Drain::~Drain()
{
    if (IsAtEnd())
        ForgetWhole();
    else
        PutBack();
    GiveBack();
    // In one order with IsPaused: a reader that pauses at this moment says so first and then looks at the
    // count.
    Queue.TakenBytes.store(Queue.TakenBytes.load());
    MakeRoom();
}

bool Drain::IsAtEnd() const
{
    return Queue.NextWhole == Queue.TakenWhole.size() && Queue.TakenBehind.Count == 0;
}

void Drain::ForgetWhole()
{
    Queue.TakenWhole.clear();
    Queue.NextWhole = 0;
}

/// What a flood needed goes back with it; a dense stream, flood upon flood, keeps its last block and its
/// queue.
void Drain::GiveBack()
{
    const bool isFlood = Drained > CNetClientIO::InitialQueue;
    const bool wasFlood = std::exchange(Queue.LastDrained, Drained) > CNetClientIO::InitialQueue;
    if (isFlood && wasFlood)
        return;
    Queue.TakenBehind.Bytes.ReleaseSpare();
    if (isFlood == wasFlood)
        return;
    ForgetStorage(Queue.TakenWhole);
    const Held looking(Queue.QueueLock);
    ForgetStorage(Client.PacketQueue);
    Queue.Behind.Bytes.ReleaseSpare();
}

void Drain::ForgetStorage(std::vector<CNTPacket>& packets)
{
    if (packets.empty())
        ForgetPages(packets.data(), packets.capacity() * sizeof(CNTPacket));
}

void Drain::Take()
{
    const Held taking(Queue.QueueLock);
    if (Client.PacketQueue.empty() && Queue.Behind.Count == 0)
        return;
    Client.PacketQueue.swap(Queue.TakenWhole);
    Queue.Behind.Swap(Queue.TakenBehind);
    Queue.TakenPackets.store(Queue.TakenWhole.size() + Queue.TakenBehind.Count, std::memory_order_relaxed);
    Queue.TakenBytes.store(Queue.WholeBytes + Queue.TakenBehind.Bytes.GetSize(), std::memory_order_relaxed);
    Queue.WholeBytes = 0;
}

CNTPacket* Drain::Next()
{
    if (IsAtEnd() && !IsTaken) {
        IsTaken = true;
        ForgetWhole();
        Take();
    }
    if (Queue.NextWhole != Queue.TakenWhole.size()) {
        CNTPacket& packet = Queue.TakenWhole[Queue.NextWhole++];
        NoteDrained(packet.GetBufSize());
        return &packet;
    }
    return Queue.TakenBehind.Count != 0 ? NextBehind() : nullptr;
}

CNTPacket* Drain::NextBehind()
{
    Queue.TakenBehind.PopInto(Packet);
    NoteDrained(Packet.GetBufSize());
    return &Packet;
}

void Drain::NoteDrained(std::size_t bytes)
{
    ++Drained;
    Queue.TakenPackets.store(Queue.TakenPackets.load(std::memory_order_relaxed) - 1,
                             std::memory_order_relaxed);
    const std::size_t left = Queue.TakenBytes.load(std::memory_order_relaxed);
    Queue.TakenBytes.store(left - std::min(left, bytes), std::memory_order_relaxed);
    if (Queue.IsPaused.load(std::memory_order_relaxed) && Drained % CNetClientIO::InitialQueue == 0)
        MakeRoom();
}

/// A reader that has paused goes on at half the limit.
void Drain::MakeRoom()
{
    if (Queue.IsPaused && Client.GetQueuedBytes() <= Queue.Limit / 2)
        Client.Io->Wake.Set();
}

void Drain::PutBack()
{
    const Held putting(Queue.QueueLock);
    // Packets that came meanwhile stay behind those that are left here; they are taken by the next drain.
    if (!Client.PacketQueue.empty() || Queue.Behind.Count != 0)
        return;
    Queue.TakenWhole.erase(Queue.TakenWhole.begin(),
                           Queue.TakenWhole.begin() + static_cast<std::ptrdiff_t>(Queue.NextWhole));
    Queue.NextWhole = 0;
    Client.PacketQueue.swap(Queue.TakenWhole);
    Queue.Behind.Swap(Queue.TakenBehind);
    Queue.WholeBytes = Queue.TakenBytes - std::min(Queue.TakenBytes.load(), Queue.Behind.Bytes.GetSize());
    Queue.TakenPackets = 0;
    Queue.TakenBytes = 0;
}

} // namespace Kesra
