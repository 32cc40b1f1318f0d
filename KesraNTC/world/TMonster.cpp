#include "KesraNTC/world/TMonster.h"

TMonster::TMonster() : TObject(TypeMonster) {}

TMonster::TMonster(const TMonster& other) : TObject(TypeMonster)
{
    *this = other;
}

TMonster& TMonster::operator=(const TMonster& other)
{
    DR = other.DR;
    MonHP = other.MonHP;
    MonsterTemplateID = other.MonsterTemplateID;
    AniID = other.AniID;
    ID = other.ID;
    CurZoneID = other.CurZoneID;
    return *this;
}

TMonster::~TMonster() = default;

void TMonster::Init()
{
    TObject::Init();
    Type = TypeMonster;
    MonsterTemplateID = 0;
    MonHP = 0;
    AniID = 0;
}

CNTPacket& operator>>(CNTPacket& packet, TMonster& monster)
{
    packet >> monster.ID;
    packet >> monster.CurZoneID;
    packet >> monster.MonsterTemplateID;
    packet >> monster.DR;
    packet >> monster.AniID;
    packet >> monster.MonHP;
    return packet;
}
