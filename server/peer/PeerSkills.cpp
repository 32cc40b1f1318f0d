// Learning, choosing and passing on skills.
#include "server/peer/Peer.h"

namespace Kesra
{

void Peer::ReLocateSkill(short from, short to)
{
    if (!CanAct())
        return;
    TSkill* skill = Self->FindSkill(from);
    if (skill == nullptr) {
        Refuse(Result::NoSuchSkill);
        return;
    }
    if (const Result result = Self->CheckFreeSkillIndex(to); result != Result::Done) {
        Refuse(result);
        return;
    }
    Self->MoveSkill(*skill, to);
    Send(Notification<SC_EVENT16018>(to));
}

void Peer::ChooseSkill(short index)
{
    if (!CanAct())
        return;
    const TSkill* skill = Self->FindSkill(index);
    if (skill == nullptr) {
        Refuse(Result::NoSuchSkill);
        return;
    }
    Self->Priv.SetSelectSkillIndex(GroupOfSkill(skill->GetSkillID()), index);
    Send(Notification<SC_EVENT16019>(index));
}

void Peer::BuySkill(long kindID, short index, short)
{
    if (!CanAct())
        return;
    const SkillKind* kind = FindSkillKind(kindID);
    if (kind == nullptr) {
        Refuse(Result::NoSuchSkill);
        return;
    }
    // Index 0 leaves the place to the server.
    if (const Result result = Self->CheckFreeSkillIndex(index); index != 0 && result != Result::Done) {
        Refuse(result);
        return;
    }
    if (kind->Price > Self->Priv.GetGold()) {
        Refuse(Result::NotEnoughGold);
        return;
    }
    const TSkill* skill = Self->AddSkill(kindID, 0, index);
    if (skill == nullptr) {
        Refuse(Result::Full);
        return;
    }
    Self->Pay(kind->Price);
    Send(Notification<SC_EVENT16017>(Self->Priv.GetGold(), *skill));
}

void Peer::SellSkill(short index)
{
    if (!CanAct())
        return;
    const TSkill* skill = Self->FindSkill(index);
    const SkillKind* kind = skill != nullptr ? FindSkillKind(skill->GetSkillID()) : nullptr;
    if (kind == nullptr) {
        Refuse(Result::NoSuchSkill);
        return;
    }
    Self->Earn(kind->Price / 2);
    Self->RemoveSkill(index);
    Send(Notification<SC_EVENT16023>(index, Self->Priv.GetGold()));
}

void Peer::PickupSkill(unsigned long object)
{
    if (!CanAct())
        return;
    const GroundItem* thing = FindOnGround(object);
    if (thing == nullptr || !thing->Skill) {
        Refuse(Result::NoSuchObject);
        return;
    }
    const TSkill* skill = Self->AddSkill(thing->Skill->GetSkillID(), thing->Skill->GetSkillExp());
    if (skill == nullptr) {
        Refuse(Result::Full);
        return;
    }
    Send(Notification<SC_EVENT16022>(*skill, object));
    TakeFromGround(object);
}

void Peer::DropSkill(short index)
{
    if (!CanAct())
        return;
    const TSkill* found = Self->FindSkill(index);
    if (found == nullptr) {
        Refuse(Result::NoSuchSkill);
        return;
    }
    const TSkill skill = *found;
    Self->RemoveSkill(index);
    Game.Drop(*Self, skill);
}

} // namespace Kesra
