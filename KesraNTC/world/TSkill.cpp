#include "KesraNTC/world/TSkill.h"

TSkill::~TSkill() = default;

void TSkill::Init()
{
    UserIndex = 0;
    AvatarIndex = 0;
    SkillUUID.Empty();
    SkillIndex = 0;
    SkillID = 0;
    SkillExp = 0;
}

CNTPacket& operator<<(CNTPacket& packet, const TSkill& skill)
{
    packet << skill.SkillIndex;
    packet << skill.SkillID;
    packet << skill.SkillExp;
    packet << skill.TempUUID;
    return packet;
}

CNTPacket& operator>>(CNTPacket& packet, TSkill& skill)
{
    packet >> skill.SkillIndex;
    packet >> skill.SkillID;
    packet >> skill.SkillExp;
    packet >> skill.TempUUID;
    return packet;
}
