// What game masters may do.
#include "server/peer/Peer.h"

#include <algorithm>

namespace Kesra
{
namespace
{

constexpr int SilenceLimit = 365 * 24 * 3600;

} // namespace

Result Peer::CheckTarget(const Character* target) const
{
    if (!IsMaster())
        return Result::NotAllowed;
    return target == nullptr || !target->IsPlaying() ? Result::NoSuchAvatar : Result::Done;
}

/// The playing avatar of a command without a reply; null when there is none or the player is no game
/// master, which has then been told.
Character* Peer::FindTarget(const LongText& name)
{
    Character* target = Game.FindCharacter(name.Value);
    const Result result = CheckTarget(target);
    Report(result);
    return result == Result::Done ? target : nullptr;
}

void Peer::MoveToAvatar(Serial serial, const LongText& name)
{
    Character* target = Game.FindCharacter(name.Value);
    Result result = CheckTarget(target);
    if (result == Result::Done && !IsPlaying())
        result = Result::NotPlaying;
    if (result != Result::Done) {
        Decline<CS_GM_MOVE_TO_AVATAR>(serial, result);
        return;
    }
    Reply<CS_GM_MOVE_TO_AVATAR>(serial, target->Session(), target->Position());
    Warp(*Self, target->Session(), target->Avatar.GetCurZoneID(), target->Position());
}

void Peer::MoveToPosition(Serial serial, short zone, const CNTVector& position)
{
    Result result = Result::Done;
    if (!IsMaster())
        result = Result::NotAllowed;
    else if (!IsPlaying())
        result = Result::NotPlaying;
    else if (!IsZone(zone) || !IsPosition(position))
        result = Result::BadArgument;
    Answer<CS_GM_MOVE_TO_POSITION>(serial, result);
    if (result == Result::Done)
        Warp(*Self, Self->Session(), zone, position);
}

void Peer::CallAvatar(const LongText& name)
{
    Character* target = FindTarget(name);
    if (target == nullptr || !MustPlay())
        return;
    target->Send(Notification<SC_GM_CALL_AVATAR>(Self->Session(), Self->Position()));
    Warp(*target, Self->Session(), Self->Avatar.GetCurZoneID(), Self->Position());
}

void Peer::Transparent(bool transparent)
{
    if (!IsMaster()) {
        Refuse(Result::NotAllowed);
        return;
    }
    if (!MustPlay())
        return;
    Self->Avatar.SetTransparentFlag(transparent);
    Game.SendToSession(Self->Session(), Notification<SC_GM_TRANSPARENT>(Self->ID(), transparent));
}

void Peer::ProhibitChatting(const LongText& name, int seconds)
{
    Character* target = FindTarget(name);
    if (target == nullptr)
        return;
    if (seconds < 0 || seconds > SilenceLimit) {
        Refuse(Result::BadArgument);
        return;
    }
    target->Priv.SetChattingProhibitTime(seconds);
    target->SilencedUntil = Clock::now() + std::chrono::seconds(seconds);
    target->Send(Notification<SC_GM21007>(seconds));
}

void Peer::GetAvatarInformation(Serial serial, const LongText& name)
{
    Character* target = Game.FindCharacter(name.Value);
    if (!IsMaster() || target == nullptr) {
        Decline<CS_GM_GET_AVATAR_INFORMATION>(serial, IsMaster() ? Result::NoSuchAvatar : Result::NotAllowed);
        return;
    }
    Reply<CS_GM_GET_AVATAR_INFORMATION>(serial, target->Avatar, target->Priv);
}

void Peer::PurgeAvatar(const LongText& name)
{
    if (Character* target = FindTarget(name)) {
        target->Send(Notification<SC_GM21006>());
        target->Player->CloseWhenSent("purged by a game master");
    }
}

void Peer::ChangeLevel(const LongText& name, short level)
{
    Character* target = FindTarget(name);
    if (target == nullptr)
        return;
    if (level < 1 || level > LevelLimit) {
        Refuse(Result::BadArgument);
        return;
    }
    target->SetLevel(level);
    target->Send(Notification<SC_GM_CHANGE_LEVEL>(target->Priv));
    Game.SendToSession(target->Session(), Notification<SC_EVENT16020>(target->Avatar), target);
}

void Peer::GiveSkill(const LongText& name, int kind, int experience)
{
    Character* target = FindTarget(name);
    if (target == nullptr)
        return;
    if (FindSkillKind(kind) == nullptr || experience < 0) {
        Refuse(experience < 0 ? Result::BadArgument : Result::NoSuchSkill);
        return;
    }
    const TSkill* skill = target->AddSkill(kind, experience);
    if (skill == nullptr) {
        Refuse(Result::Full);
        return;
    }
    target->Send(Notification<SC_GM_GIVE_SKILL>(*skill));
}

void Peer::GiveItem(const LongText& name, int kind, short count)
{
    Character* target = FindTarget(name);
    if (target == nullptr)
        return;
    if (FindItemKind(kind) == nullptr || count < 1 || count > StackLimit) {
        Refuse(FindItemKind(kind) == nullptr ? Result::NoSuchItem : Result::BadArgument);
        return;
    }
    const TItem* item = target->AddItem(kind, 0, count);
    if (item == nullptr) {
        Refuse(Result::Full);
        return;
    }
    target->Send(Notification<SC_GM_GIVE_ITEM>(*item));
}

void Peer::StealItem(Serial serial, const LongText& name, short index)
{
    Character* target = Game.FindCharacter(name.Value);
    const TItem* found = target != nullptr ? target->FindItem(index) : nullptr;
    Result result = Result::Done;
    if (!IsMaster())
        result = Result::NotAllowed;
    else if (Self == nullptr)
        result = Result::NotReady;
    else if (target == nullptr || target == Self)
        result = Result::NoSuchAvatar;
    else if (found == nullptr)
        result = Result::NoSuchItem;
    else if (!Self->HasRoomFor(1))
        result = Result::Full;
    if (result != Result::Done) {
        Decline<CS_GM_STEAL_ITEM>(serial, result);
        return;
    }
    const TItem stolen = *found;
    target->RemoveItem(index, stolen.GetItemCount());
    target->Send(Notification<SC_PRIV13008>(index, 0L));
    if (stolen.GetItemSlotIndex() == 0 && target->IsPlaying())
        Game.SendToSession(target->Session(), Notification<SC_TAKEOFF_ITEM>(target->ShortID(), index));
    const TItem* item = Self->AddItem(stolen.GetItemID(), stolen.GetItemOptionID(), stolen.GetItemCount());
    Reply<CS_GM_STEAL_ITEM>(serial, *item);
}

} // namespace Kesra
