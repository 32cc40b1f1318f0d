#include "KesraNTC/net/CNetClientIO.h"

using Kesra::Locked;

CNetClientIO::CNetClientIO()
{
    PacketQueue.reserve(InitialQueue);
}

CNetClientIO::~CNetClientIO() = default;

CNetClientIO::CNetClientIO(const CNetClientIO& other) = default;

CNetClientIO& CNetClientIO::operator=(const CNetClientIO& other) = default;

bool CNetClientIO::MakeCompletePacket(CNTPacket& packet)
{
    packet.Write(Buf, static_cast<unsigned short>(PacketSize));
    packet.SetBufPoint(0);
    {
        const Locked queueing(QueueLock);
        if (Flood.empty() && PacketQueue.size() < InitialQueue)
            PacketQueue.push_back(packet);
        else
            Flood.insert(Flood.end(), packet.GetBuf(), packet.GetBuf() + packet.GetBufSize());
    }
    std::memset(Buf, 0, PacketSize);
    RecvStage = PacketSize = RecvSize = 0;
    RemainSize = CNTPacket::HeaderSize;
    return true;
}

void CNetClientIO::TakeQueue(Kesra::ReceivedPackets& taken)
{
    const Locked taking(QueueLock);
    PacketQueue.swap(taken.Whole);
    Flood.swap(taken.Flood);
}
