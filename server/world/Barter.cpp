#include "server/world/Barter.h"

#include "server/messages/Notifications.h"
#include "server/world/Character.h"

#include <algorithm>
#include <set>

namespace Kesra
{
namespace
{

constexpr short Agreed = 1;
constexpr std::size_t OfferLimit = 60;

/// Finds what the owner really has of an offered item; false when it cannot be given away.
bool Owns(Character& owner, const TItem& offered)
{
    const TItem* item = owner.FindItem(offered.GetItemIndex());
    return item != nullptr && item->GetItemSlotIndex() > 0 && item->GetItemID() == offered.GetItemID() &&
           item->GetItemOptionID() == offered.GetItemOptionID() &&
           item->GetTempUUID() == offered.GetTempUUID() && offered.GetItemCount() >= 1 &&
           offered.GetItemCount() <= item->GetItemCount();
}

bool Owns(Character& owner, const TSkill& offered)
{
    const TSkill* skill = owner.FindSkill(offered.GetSkillIndex());
    return skill != nullptr && skill->GetSkillID() == offered.GetSkillID() &&
           skill->GetSkillExp() == offered.GetSkillExp() && skill->GetTempUUID() == offered.GetTempUUID();
}

bool Owns(Character& owner, const Offer& offer)
{
    std::set<int> places;
    for (const TItem& item : offer.Items)
        if (!places.insert(item.GetItemIndex()).second || !Owns(owner, item))
            return false;
    places.clear();
    for (const TSkill& skill : offer.Skills)
        if (!places.insert(skill.GetSkillIndex()).second || !Owns(owner, skill))
            return false;
    return offer.Gold >= 0 && offer.Gold <= owner.Priv.GetGold();
}

} // namespace

BarterBook::Trade* BarterBook::FindAny(const Character& one)
{
    const auto has = [&](const Trade& trade) {
        return trade.Sides[0].Who == &one || trade.Sides[1].Who == &one;
    };
    const auto found = std::find_if(Trades.begin(), Trades.end(), has);
    return found == Trades.end() ? nullptr : &*found;
}

BarterBook::Trade* BarterBook::Find(const Character& one, const Character* other)
{
    Trade* trade = FindAny(one);
    return trade != nullptr && OtherSide(*trade, one).Who == other ? trade : nullptr;
}

void BarterBook::Remove(const Trade& trade)
{
    Trades.remove_if([&](const Trade& other) { return &other == &trade; });
}

BarterBook::Side& BarterBook::SideOf(Trade& trade, const Character& who)
{
    return trade.Sides[0].Who == &who ? trade.Sides[0] : trade.Sides[1];
}

BarterBook::Side& BarterBook::OtherSide(Trade& trade, const Character& who)
{
    return trade.Sides[0].Who == &who ? trade.Sides[1] : trade.Sides[0];
}

Result BarterBook::Ask(Character& from, Character* to)
{
    if (to == nullptr || to == &from || to->Session() != from.Session())
        return Result::NoSuchAvatar;
    if (FindAny(from) != nullptr || FindAny(*to) != nullptr)
        return Result::Full;
    Trade& trade = Trades.emplace_back();
    trade.Sides[0].Who = &from;
    trade.Sides[1].Who = to;
    to->Send(Notification<SC_BARTER50003>(from.ID()));
    return Result::Done;
}

Result BarterBook::Answer(Character& from, Character* to, short answer)
{
    Trade* trade = Find(from, to);
    if (trade == nullptr || trade->Open || trade->Sides[1].Who != &from)
        return Result::NotTrading;
    to->Send(Notification<SC_BARTER50002>(from.ID(), answer));
    if (answer == Agreed)
        trade->Open = true;
    else
        Remove(*trade);
    return Result::Done;
}

Result BarterBook::Cancel(Character& from, Character* to)
{
    if (Find(from, to) == nullptr)
        return Result::NotTrading;
    Cancel(from);
    return Result::Done;
}

void BarterBook::Cancel(Character& character)
{
    if (Trade* trade = FindAny(character)) {
        OtherSide(*trade, character)
            .Who->Send(Notification<SC_BARTER50004>(character.ID(), DealState::Cancelled));
        Remove(*trade);
    }
}

Result BarterBook::Deal(Character& from, Character* to, const Offer& offer)
{
    Trade* trade = Find(from, to);
    if (trade == nullptr || !trade->Open)
        return Result::NotTrading;
    if (offer.Items.size() > OfferLimit || offer.Skills.size() > OfferLimit || !Owns(from, offer))
        return Result::NoSuchItem;
    SideOf(*trade, from).Offer = offer;
    // A signature stands under what both saw when it was given.
    for (Side& side : trade->Sides)
        side.Signed = false;
    to->Send(Notification<SC_DEALING>(from.ID(), offer.Items, offer.Skills, offer.Gold));
    return Result::Done;
}

Result BarterBook::Sign(Character& from, Character* to)
{
    Trade* trade = Find(from, to);
    if (trade == nullptr || !trade->Open)
        return Result::NotTrading;
    SideOf(*trade, from).Signed = true;
    to->Send(Notification<SC_BARTER50004>(from.ID(), DealState::Signed));
    if (trade->Sides[0].Signed && trade->Sides[1].Signed) {
        Conclude(*trade);
        Remove(*trade);
    }
    return Result::Done;
}

bool BarterBook::CanKeep(const Side& from, const Side& to)
{
    return Owns(*from.Who, from.Offer) && to.Who->HasRoomFor(from.Offer.Items.size()) &&
           to.Who->HasRoomForSkills(from.Offer.Skills.size()) &&
           from.Offer.Gold <= GoldLimit - to.Who->Priv.GetGold();
}

void BarterBook::HandOver(const Side& from, const Side& to)
{
    for (const TItem& item : from.Offer.Items) {
        from.Who->RemoveItem(item.GetItemIndex(), item.GetItemCount());
        to.Who->AddItem(item.GetItemID(), item.GetItemOptionID(), item.GetItemCount());
    }
    for (const TSkill& skill : from.Offer.Skills) {
        from.Who->RemoveSkill(skill.GetSkillIndex());
        to.Who->AddSkill(skill.GetSkillID(), skill.GetSkillExp());
    }
    from.Who->Pay(from.Offer.Gold);
    to.Who->Earn(from.Offer.Gold);
}

void BarterBook::Conclude(Trade& trade)
{
    const auto& [one, other] = trade.Sides;
    if (!CanKeep(one, other) || !CanKeep(other, one)) {
        one.Who->Send(Notification<SC_BARTER50004>(other.Who->ID(), DealState::Failed));
        other.Who->Send(Notification<SC_BARTER50004>(one.Who->ID(), DealState::Failed));
        return;
    }
    HandOver(one, other);
    HandOver(other, one);
    for (const Side& side : trade.Sides) {
        const Side& partner = OtherSide(trade, *side.Who);
        const Offer& got = partner.Offer;
        side.Who->Send(Notification<SC_BARTER50005>(partner.Who->ID(), got.Items, got.Skills, got.Gold));
    }
}

} // namespace Kesra
