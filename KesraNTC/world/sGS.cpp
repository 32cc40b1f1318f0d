#include "KesraNTC/world/sGS.h"

CNTPacket& operator<<(CNTPacket& packet, const sGS& entry)
{
    packet << entry.Value1;
    packet << entry.Value2;
    return packet;
}

CNTPacket& operator>>(CNTPacket& packet, sGS& entry)
{
    packet >> entry.Value1;
    packet >> entry.Value2;
    return packet;
}
