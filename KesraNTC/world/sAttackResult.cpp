#include "KesraNTC/world/sAttackResult.h"

CNTPacket& operator<<(CNTPacket& packet, const sAttackResult& result)
{
    packet << result.Value1;
    packet << result.Value2;
    packet << result.Value3;
    return packet;
}

CNTPacket& operator>>(CNTPacket& packet, sAttackResult& result)
{
    packet >> result.Value1;
    packet >> result.Value2;
    packet >> result.Value3;
    return packet;
}
