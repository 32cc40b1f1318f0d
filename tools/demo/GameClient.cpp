#include "tools/demo/GameClient.h"

#include <cstring>

namespace
{

void Count(Traffic& traffic, const CNTPacket& packet)
{
    unsigned short number;
    std::memcpy(&number, packet.GetBuf(), sizeof number);
    ++traffic.Packets[number];
    traffic.Bytes += packet.GetBufSize();
}

} // namespace

unsigned Traffic::Total() const
{
    unsigned total = 0;
    for (const auto& [number, count] : Packets)
        total += count;
    return total;
}

GameClient::~GameClient()
{
    StopReceiving(); // first: the receive thread uses this class's own members
}

void GameClient::ProcessDisconnection()
{
    Ended = true;
}

unsigned long GameClient::ProcessPacketFromServer(CNTPacket& packet)
{
    const unsigned long result = CNTMainClient::ProcessPacketFromServer(packet);
    // Counted afterwards: what has been counted has been handled.
    const std::lock_guard lock(Mutex);
    Count(In, packet);
    return result;
}

unsigned long GameClient::SendToServer(CNTPacket& packet)
{
    {
        const std::lock_guard lock(Mutex);
        Count(Out, packet);
    }
    return CNTMainClient::SendToServer(packet);
}

Traffic GameClient::Received() const
{
    const std::lock_guard lock(Mutex);
    return In;
}

Traffic GameClient::Sent() const
{
    const std::lock_guard lock(Mutex);
    return Out;
}
