#include "KesraNTC/world/CPartyMember.h"

CPartyMember::CPartyMember() = default;
CPartyMember::CPartyMember(const CPartyMember&) = default;
CPartyMember& CPartyMember::operator=(const CPartyMember&) = default;
CPartyMember::~CPartyMember() = default;

CNTPacket& operator<<(CNTPacket& packet, const CPartyMember& member)
{
    packet << member.Value1;
    packet.WriteString(member.Text1);
    packet.WriteString(member.Text2);
    packet << member.Value3;
    packet << member.Value4;
    return packet;
}

CNTPacket& operator>>(CNTPacket& packet, CPartyMember& member)
{
    packet >> member.Value1;
    packet >> member.Text1;
    packet >> member.Text2;
    packet >> member.Value3;
    packet >> member.Value4;
    return packet;
}
