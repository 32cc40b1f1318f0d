#pragma once

#include "KesraNTC/base/CString.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"

#include <utility>

/// An item in an avatar's possession. A plain value that checks nothing; one thread at a time.
class KESRANTC_API TItem
{
public:
    /// Everything 0 or empty.
    TItem() = default;
    TItem(const TItem&) = default;
    TItem& operator=(const TItem&) = default;
    virtual ~TItem();

    /// Everything 0 or empty but the user index and the temporary identifier, which stay.
    void Init();

    /// The user who owns the item, a 32-bit value.
    long GetUserIndex() const { return UserIndex; }
    void SetUserIndex(long index) { UserIndex = index; }
    /// The owning avatar's index among its user's avatars.
    short GetAvatarIndex() const { return AvatarIndex; }
    void SetAvatarIndex(short index) { AvatarIndex = index; }
    CString GetItemUUID() const { return ItemUUID; }
    void SetItemUUID(CString uuid) { ItemUUID = std::move(uuid); }
    /// The temporary identifier, which travels in place of the UUID.
    short GetTempUUID() const { return TempUUID; }
    void SetTempUUID(short uuid) { TempUUID = uuid; }
    /// The item's place among the avatar's items; its thousands, with their sign, are the slot.
    short GetItemIndex() const { return ItemIndex; }
    void SetItemIndex(short index) { ItemIndex = index; }
    short GetItemSlotIndex() const;
    /// Which item it is, a 32-bit value.
    long GetItemID() const { return ItemID; }
    void SetItemID(long id) { ItemID = id; }
    short GetItemOptionID() const { return ItemOptionID; }
    void SetItemOptionID(short id) { ItemOptionID = id; }
    /// How many, a 32-bit value.
    long GetItemCount() const { return ItemCount; }
    void SetItemCount(long count) { ItemCount = count; }

private:
    friend KESRANTC_API CNTPacket& operator<<(CNTPacket& packet, const TItem& item);
    friend KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, TItem& item);

    long UserIndex = 0;
    short AvatarIndex = 0;
    CString ItemUUID;
    short TempUUID = 0;
    short ItemIndex = 0;
    long ItemID = 0;
    short ItemOptionID = 0;
    long ItemCount = 0;
};

/// The wire form, 16 bytes; user index and UUID do not travel and stay.
KESRANTC_API CNTPacket& operator<<(CNTPacket& packet, const TItem& item);
KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, TItem& item);
