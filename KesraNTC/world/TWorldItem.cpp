#include "KesraNTC/world/TWorldItem.h"

TWorldItem::TWorldItem() : TObject(TypeWorldItem) {}

TWorldItem::TWorldItem(const TWorldItem& other) : TObject(TypeWorldItem)
{
    *this = other;
}

TWorldItem& TWorldItem::operator=(const TWorldItem& other)
{
    ID = other.ID;
    CurZoneID = other.CurZoneID;
    DR = other.DR;
    WorldItemID = other.WorldItemID;
    WorldItemExp = other.WorldItemExp;
    WorldItemUUID = other.WorldItemUUID;
    WorldItemOptionID = other.WorldItemOptionID;
    return *this;
}

TWorldItem::~TWorldItem() = default;

void TWorldItem::Init()
{
    TObject::Init();
    Type = TypeWorldItem;
    WorldItemID = 0;
    WorldItemExp = 0;
    WorldItemUUID.Empty();
    WorldItemOptionID = 0;
}

CNTPacket& operator>>(CNTPacket& packet, TWorldItem& item)
{
    packet >> item.ID;
    packet >> item.CurZoneID;
    packet >> item.DR;
    packet >> item.WorldItemID;
    packet >> item.WorldItemExp;
    packet >> item.WorldItemOptionID;
    return packet;
}
