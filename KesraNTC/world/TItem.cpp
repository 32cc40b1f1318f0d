#include "KesraNTC/world/TItem.h"

TItem::~TItem() = default;

void TItem::Init()
{
    AvatarIndex = 0;
    ItemUUID.Empty();
    ItemIndex = 0;
    ItemID = 0;
    ItemOptionID = 0;
    ItemCount = 0;
}

short TItem::GetItemSlotIndex() const
{
    return static_cast<short>(ItemIndex / 1000);
}

CNTPacket& operator<<(CNTPacket& packet, const TItem& item)
{
    packet << item.AvatarIndex;
    packet << item.ItemIndex;
    packet << item.ItemID;
    packet << item.ItemOptionID;
    packet << item.TempUUID;
    packet << item.ItemCount;
    return packet;
}

CNTPacket& operator>>(CNTPacket& packet, TItem& item)
{
    packet >> item.AvatarIndex;
    packet >> item.ItemIndex;
    packet >> item.ItemID;
    packet >> item.ItemOptionID;
    packet >> item.TempUUID;
    packet >> item.ItemCount;
    return packet;
}
