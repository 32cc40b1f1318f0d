#pragma once

#include "KesraNTC/base/CString.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/world/TObject.h"

#include <utility>

/// An item lying in the world.
class KESRANTC_API TWorldItem : public TObject
{
public:
    /// As Init leaves it, of type TypeWorldItem.
    TWorldItem();
    /// An item of a default record that takes what assignment takes.
    TWorldItem(const TWorldItem& other);
    /// Takes everything over, so that an item stays what it is when its list grows.
    TWorldItem(TWorldItem&& other) noexcept = default;
    /// Copies identifier, current zone, movement (but the dead-reckoning state) and the item's own fields.
    /// Session, type, last zone and dead-reckoning state stay, also when the other is a temporary. Inside a
    /// list these therefore belong to the place: erase, insert and sorting assign, and move the rest of an
    /// item without them.
    TWorldItem& operator=(const TWorldItem& other);
    ~TWorldItem() override;

    /// Restores the defaults: numbers 0, zones -1, no UUID. The movement stays.
    void Init();

    /// Which item it is.
    int GetWorldItemID() const { return WorldItemID; }
    void SetWorldItemID(int id) { WorldItemID = id; }
    /// Experience and count, 32-bit values, are one field.
    long GetWorldItemExp() const { return WorldItemExp; }
    void SetWorldItemExp(long exp) { WorldItemExp = exp; }
    long GetWorldItemCount() const { return WorldItemExp; }
    void SetWorldItemCount(long count) { WorldItemExp = count; }
    CString GetWorldItemUUID() const { return WorldItemUUID; }
    void SetWorldItemUUID(CString uuid) { WorldItemUUID = std::move(uuid); }
    short GetWorldItemOptionID() const { return WorldItemOptionID; }
    void SetWorldItemOptionID(short& id) { WorldItemOptionID = id; }

private:
    friend KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, TWorldItem& item);

    CString WorldItemUUID;
    int WorldItemID = 0;
    long WorldItemExp = 0;
    short WorldItemOptionID = 0;
};

/// Reads an item, 32 bytes. Session, type, last zone, UUID and the movement beyond the ground position,
/// heading and speed do not travel and stay.
KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, TWorldItem& item);
