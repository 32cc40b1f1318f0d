// What an avatar owns: wearing, buying, selling, moving, using and upgrading.
#include "server/peer/Peer.h"

#include <algorithm>
#include <set>

namespace Kesra
{
namespace
{

/// True when an item of this kind may be worn at the place.
bool FitsPlace(const TItem& item, short place)
{
    const ItemKind* kind = FindItemKind(item.GetItemID());
    if (kind == nullptr || place < 1 || place > WornPlaces)
        return false;
    return place == WeaponPlace ? kind->Use == ItemUse::Weapon : kind->Use == ItemUse::Clothes;
}

/// True when the item may stand at the index: anything in a bag, fitting things where they are worn.
bool FitsIndex(const Character& owner, const TItem& item, short index)
{
    return owner.IsPlace(index) && (index > WornPlaces || FitsPlace(item, index));
}

} // namespace

TItem* Peer::FindInBag(short index)
{
    TItem* item = Self->FindItem(index);
    if (item != nullptr && item->GetItemSlotIndex() > 0)
        return item;
    Refuse(Result::NoSuchItem);
    return nullptr;
}

Result Peer::CheckFreePlace(short index)
{
    if (index < BagSize || !Self->IsPlace(index))
        return Result::BadArgument;
    return Self->FindItem(index) != nullptr ? Result::PlaceTaken : Result::Done;
}

void Peer::PutonItem(short place, short index)
{
    if (!CanAct())
        return;
    TItem* item = FindInBag(index);
    if (item == nullptr)
        return;
    if (!FitsPlace(*item, place)) {
        Refuse(Result::BadArgument);
        return;
    }
    if (Self->FindItem(place) != nullptr) {
        Refuse(Result::PlaceTaken);
        return;
    }
    Self->MoveItem(*item, place);
    Game.SendToSession(Self->Session(),
                       Notification<SC_PUTON_ITEM>(Self->ShortID(), place, item->GetItemID()));
}

void Peer::TakeoffItem(short place, short to)
{
    if (!CanAct())
        return;
    TItem* item = Self->FindItem(place);
    if (item == nullptr || item->GetItemSlotIndex() != 0) {
        Refuse(Result::NoSuchItem);
        return;
    }
    if (const Result result = CheckFreePlace(to); result != Result::Done) {
        Refuse(result);
        return;
    }
    Self->MoveItem(*item, to);
    Game.SendToSession(Self->Session(), Notification<SC_TAKEOFF_ITEM>(Self->ShortID(), place));
}

void Peer::ChooseWeapon(short weapon)
{
    if (!CanAct())
        return;
    // The last digit is the skill group of the weapon.
    if (weapon < 11 || weapon > 44 || weapon % 10 < 1 || weapon % 10 > 4) {
        Refuse(Result::BadArgument);
        return;
    }
    Self->Priv.SetUseWeaponIndex(weapon);
    Send(Notification<SC_EVENT16014>(weapon));
}

void Peer::BuyItems(long kind, short count)
{
    BuyItem(kind, 0, count);
}

void Peer::BuyItem(long kindID, short index, short count)
{
    if (!CanAct())
        return;
    const ItemKind* kind = FindItemKind(kindID);
    if (kind == nullptr || count < 1 || count > StackLimit) {
        Refuse(kind == nullptr ? Result::NoSuchItem : Result::BadArgument);
        return;
    }
    // Index 0 leaves the place to the server.
    if (const Result result = CheckFreePlace(index); index != 0 && result != Result::Done) {
        Refuse(result);
        return;
    }
    if (!Self->HasRoomFor(1)) {
        Refuse(Result::Full);
        return;
    }
    if (!Self->Pay(kind->Price * count)) {
        Refuse(Result::NotEnoughGold);
        return;
    }
    TItem* item = Self->AddItem(kindID, 0, count);
    if (index != 0 && item->GetItemCount() == count)
        Self->MoveItem(*item, index);
    Send(Notification<SC_EVENT16007>(Self->Priv.GetGold(), item->GetItemIndex(), item->GetItemCount(),
                                     kindID));
}

void Peer::SellItem(short index)
{
    if (!CanAct())
        return;
    const TItem* item = FindInBag(index);
    if (item == nullptr)
        return;
    Self->Earn(FindItemKind(item->GetItemID())->Price / 2 * item->GetItemCount());
    Self->RemoveItem(index, item->GetItemCount());
    Send(Notification<SC_EVENT16008>(index, Self->Priv.GetGold()));
}

GroundItem* Peer::FindOnGround(unsigned long object)
{
    auto& items = Game.SessionOf(*Self).Items;
    const auto found = items.find(object);
    return found == items.end() ? nullptr : &found->second;
}

void Peer::TakeFromGround(unsigned long object)
{
    Game.SessionOf(*Self).Items.erase(object);
    Game.SendToSession(Self->Session(), Notification<SC_EVENT16026>(object, Self->ID()), Self);
}

void Peer::PickupItem(unsigned long object)
{
    if (!CanAct())
        return;
    const GroundItem* thing = FindOnGround(object);
    if (thing == nullptr || thing->Skill) {
        Refuse(Result::NoSuchObject);
        return;
    }
    const TWorldItem& record = thing->Record;
    const TItem* item =
        Self->AddItem(record.GetWorldItemID(), record.GetWorldItemOptionID(), record.GetWorldItemCount());
    if (item == nullptr) {
        Refuse(Result::Full);
        return;
    }
    Send(Notification<SC_EVENT16009>(object, *item));
    TakeFromGround(object);
}

void Peer::DropItem(short index)
{
    if (!CanAct())
        return;
    const TItem* found = FindInBag(index);
    if (found == nullptr)
        return;
    const TItem item = *found;
    Self->RemoveItem(index, item.GetItemCount());
    Send(Notification<SC_EVENT16006>(index));
    Game.Drop(*Self, item, item.GetItemCount());
}

void Peer::ReLocateItemInInventory(short from, short to)
{
    if (!CanAct())
        return;
    TItem* item = FindInBag(from);
    if (item == nullptr)
        return;
    if (const Result result = CheckFreePlace(to); result != Result::Done) {
        Refuse(result);
        return;
    }
    Self->MoveItem(*item, to);
    Send(Notification<SC_EVENT17003>(from, to));
}

void Peer::ExchangeItemInInventory(short one, short other)
{
    if (!CanAct())
        return;
    TItem* first = Self->FindItem(one);
    TItem* second = Self->FindItem(other);
    if (first == nullptr || second == nullptr || first == second) {
        Refuse(Result::NoSuchItem);
        return;
    }
    if (!FitsIndex(*Self, *first, other) || !FitsIndex(*Self, *second, one)) {
        Refuse(Result::BadArgument);
        return;
    }
    Self->MoveItem(*first, other);
    Self->MoveItem(*second, one);
    Send(Notification<SC_EVENT17003>(one, other));
    for (const TItem* item : {first, second}) {
        if (item->GetItemSlotIndex() == 0) {
            Game.SendToSession(
                Self->Session(),
                Notification<SC_PUTON_ITEM>(Self->ShortID(), item->GetItemIndex(), item->GetItemID()));
        }
    }
}

void Peer::UseItem(short index)
{
    if (!CanAct())
        return;
    const TItem* item = Self->FindItem(index);
    const ItemKind* kind = item != nullptr ? FindItemKind(item->GetItemID()) : nullptr;
    if (kind == nullptr || kind->Use != ItemUse::Potion) {
        Refuse(Result::NoSuchItem);
        return;
    }
    const auto left = item->GetItemCount() - 1;
    Self->RemoveItem(index, 1);
    TPrivData& priv = Self->Priv;
    priv.SetHP(std::min(static_cast<float>(priv.MaxHP), priv.GetHP() + kind->Strength));
    priv.SetMP(std::min(static_cast<float>(priv.MaxMP), priv.GetMP() + kind->Strength));
    Send(Notification<SC_EVENT16025>(index, left));
    SendPoints(*Self);
}

void Peer::RepairItem(short index)
{
    if (!CanAct())
        return;
    if (Self->FindItem(index) == nullptr) {
        Refuse(Result::NoSuchItem);
    } else if (!Self->Pay(RepairPrice)) {
        Refuse(Result::NotEnoughGold);
    } else {
        Send(Notification<SC_PRIV13010>(index, RepairPrice));
        Send(Notification<SC_PRIV13006>(Self->Priv.GetGold()));
    }
}

void Peer::UpdateJewelryCollection(short index)
{
    if (!CanAct())
        return;
    const TItem* item = Self->FindItem(index);
    const ItemKind* kind = item != nullptr ? FindItemKind(item->GetItemID()) : nullptr;
    if (kind == nullptr || kind->Use != ItemUse::Jewel) {
        Refuse(Result::NoSuchItem);
        return;
    }
    const float factor = 1.0F + static_cast<float>(kind->Strength) / 100.0F;
    Self->RemoveItem(index, 1);
    Self->Priv.UpdateParamByJewelry(1, 1, 1, factor, factor);
    Self->UpdateDerived();
    Send(Notification<SC_EVENT19001>(index));
    Send(Notification<SC_PRIV_DATA>(Self->Priv));
}

void Peer::RequestItemUpgrade(Serial serial, short index, long kind, const std::vector<short>& materials,
                              short, short)
{
    TItem* item = Self != nullptr ? Self->FindItem(index) : nullptr;
    Result result = Result::Done;
    if (Self == nullptr)
        result = Result::NotReady;
    else if (item == nullptr || item->GetItemID() != kind)
        result = Result::NoSuchItem;
    else if (materials.empty() ||
             materials.size() > static_cast<std::size_t>(OptionLimit - item->GetItemOptionID()))
        result = Result::BadArgument;
    std::set<short> used;
    for (const short material : materials) {
        const TItem* stone = result == Result::Done ? Self->FindItem(material) : nullptr;
        const ItemKind* stoneKind = stone != nullptr ? FindItemKind(stone->GetItemID()) : nullptr;
        const bool usable = stoneKind != nullptr && stoneKind->Use == ItemUse::Stone;
        if (result == Result::Done && (!usable || material == index || !used.insert(material).second))
            result = Result::NoSuchItem;
    }
    if (result != Result::Done) {
        Decline<CS_REQUEST_ITEM_UPGRADE>(serial, result);
        return;
    }
    const int upgraded = item->GetItemOptionID() + static_cast<int>(materials.size());
    item->SetItemOptionID(static_cast<short>(upgraded));
    for (const short material : used) {
        const long left = Self->FindItem(material)->GetItemCount() - 1;
        Self->RemoveItem(material, 1);
        Send(Notification<SC_PRIV13008>(material, left));
    }
    Reply<CS_REQUEST_ITEM_UPGRADE>(serial, static_cast<long>(upgraded));
}

} // namespace Kesra
