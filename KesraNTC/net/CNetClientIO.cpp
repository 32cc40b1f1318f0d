#include "KesraNTC/net/CNetClientIO.h"

#include "KesraNTC/net/private/Backlog.h"
#include "KesraNTC/net/private/Drain.h"
#include "KesraNTC/net/private/IoState.h"
#include "KesraNTC/net/private/OutOfMemory.h"

using namespace Kesra;

CNetClientIO::CNetClientIO() : Received(std::make_unique<Backlog>())
{
    PacketQueue.reserve(InitialQueue);
}

CNetClientIO::~CNetClientIO() = default;

CNetClientIO::CNetClientIO(const CNetClientIO& other) : CNetIO(other), Received(std::make_unique<Backlog>())
{
    CopyQueue(other);
}

CNetClientIO& CNetClientIO::operator=(const CNetClientIO& other)
{
    if (this != &other) {
        CNetIO::operator=(other);
        CopyQueue(other);
    }
    return *this;
}

void CNetClientIO::CopyQueue(const CNetClientIO& other)
{
    std::vector<CNTPacket> whole;
    whole.reserve(InitialQueue);
    CompactPackets behind;
    std::size_t wholeBytes = 0;
    {
        const Held reading(other.Received->QueueLock);
        whole = other.PacketQueue;
        behind = other.Received->Behind;
        wholeBytes = other.Received->WholeBytes;
    }
    const Held writing(Received->QueueLock);
    PacketQueue.swap(whole);
    Received->Behind.Swap(behind);
    Received->WholeBytes = wholeBytes;
    Received->Limit = other.Received->Limit.load();
}

bool CNetClientIO::MakeCompletePacket(CNTPacket& packet)
{
    packet.Write(Buf, static_cast<unsigned short>(PacketSize));
    packet.SetBufPoint(0);
    QueuePackets(Buf, PacketSize, 1);
    std::memset(Buf, 0, PacketSize);
    RecvStage = PacketSize = RecvSize = 0;
    RemainSize = CNTPacket::HeaderSize;
    return true;
}

void CNetClientIO::QueuePackets(const char* packets, std::size_t bytes, std::size_t count)
{
    const Held queueing(Received->QueueLock);
    const char* const end = packets + bytes;
    ReserveQueue();
    while (packets != end && Received->Behind.Count == 0 && PacketQueue.size() < InitialQueue) {
        const std::size_t size = SizeOfPacket(packets);
        CNTPacket& whole = PacketQueue.emplace_back(CNTPacket::Unzeroed{});
        whole.Write(packets, static_cast<unsigned short>(size));
        whole.SetBufPoint(0);
        Received->WholeBytes += size;
        packets += size;
        --count;
    }
    if (count != 0)
        Received->Behind.Append(packets, static_cast<std::size_t>(end - packets), count);
}

/// A drain may have left a queue that never held anything.
void CNetClientIO::ReserveQueue()
try {
    PacketQueue.reserve(InitialQueue);
} catch (const std::bad_alloc&) {
    throw OutOfMemory();
}

unsigned long CNetClientIO::GetQueuedPackets()
{
    const Held counting(Received->QueueLock);
    return static_cast<unsigned long>(PacketQueue.size() + Received->Behind.Count + Received->TakenPackets);
}

unsigned long CNetClientIO::GetQueuedBytes()
{
    const Held counting(Received->QueueLock);
    return static_cast<unsigned long>(Received->WholeBytes + Received->Behind.Bytes.GetSize() +
                                      Received->TakenBytes);
}

void CNetClientIO::SetBacklogLimit(unsigned long bytes)
{
    Received->Limit = bytes;
    if (Io != nullptr)
        Io->Wake.Set();
}

bool CNetClientIO::IsOverfull()
{
    return GetQueuedBytes() > Received->Limit;
}
