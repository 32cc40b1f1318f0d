#include "server/world/Party.h"

#include "server/messages/Notifications.h"
#include "server/world/Character.h"

#include <algorithm>

namespace Kesra
{
namespace
{

constexpr std::size_t MemberLimit = 8;

CNTPacket PartyNotice(Notice notice, Character& about)
{
    return Notification<SC_EVENT18001>(notice, about.Name());
}

void Tell(Party& party, const CNTPacket& packet)
{
    for (Character* member : party.Members)
        member->Send(packet);
}

} // namespace

Result PartyBook::Invite(Character& boss, Character* invited)
{
    if (invited == nullptr || invited == &boss)
        return Result::NoSuchAvatar;
    if (boss.Party != nullptr && !boss.Party->IsBoss(boss))
        return Result::NotAllowed;
    if (invited->Party != nullptr || (boss.Party != nullptr && boss.Party->Members.size() >= MemberLimit))
        return Result::Full;
    invited->InvitedBy = boss.ID();
    invited->Send(PartyNotice(Notice::PartyInvitation, boss));
    return Result::Done;
}

Result PartyBook::Answer(Character& invited, Character* inviter, bool accepted)
{
    if (inviter == nullptr || invited.InvitedBy != inviter->ID())
        return Result::NoSuchAvatar;
    invited.InvitedBy = 0;
    if (!accepted) {
        inviter->Send(PartyNotice(Notice::PartyRefused, invited));
        return Result::Done;
    }
    // Either may have joined another party since the invitation.
    const bool leads = inviter->Party == nullptr || inviter->Party->IsBoss(*inviter);
    const std::size_t members = inviter->Party == nullptr ? 1 : inviter->Party->Members.size();
    if (invited.Party != nullptr || !leads || members >= MemberLimit)
        return Result::Full;
    Join(*inviter, invited);
    return Result::Done;
}

void PartyBook::Join(Character& inviter, Character& invited)
{
    if (inviter.Party == nullptr) {
        Parties.push_back({{&inviter}});
        inviter.Party = &Parties.back();
    }
    invited.Party = inviter.Party;
    invited.Party->Members.push_back(&invited);
    Tell(*invited.Party, PartyNotice(Notice::PartyJoined, invited));
}

Result PartyBook::Leave(Character& member)
{
    if (member.Party == nullptr)
        return Result::NotAllowed;
    Remove(member);
    return Result::Done;
}

Result PartyBook::Expel(Character& boss, Character* member)
{
    if (boss.Party == nullptr || !boss.Party->IsBoss(boss))
        return Result::NotAllowed;
    if (member == nullptr || member == &boss || member->Party != boss.Party)
        return Result::NoSuchAvatar;
    Remove(*member);
    return Result::Done;
}

Result PartyBook::Entrust(Character& boss, Character* member)
{
    if (boss.Party == nullptr || !boss.Party->IsBoss(boss))
        return Result::NotAllowed;
    if (member == nullptr || member == &boss || member->Party != boss.Party)
        return Result::NoSuchAvatar;
    auto& members = boss.Party->Members;
    std::iter_swap(members.begin(), std::find(members.begin(), members.end(), member));
    Tell(*boss.Party, PartyNotice(Notice::PartyBoss, *member));
    return Result::Done;
}

void PartyBook::Remove(Character& member)
{
    Party& party = *member.Party;
    const bool wasBoss = party.IsBoss(member);
    Tell(party, PartyNotice(Notice::PartyLeft, member));
    member.Party = nullptr;
    party.Members.erase(std::find(party.Members.begin(), party.Members.end(), &member));
    if (party.Members.size() > 1) {
        if (wasBoss)
            Tell(party, PartyNotice(Notice::PartyBoss, *party.Members.front()));
        return;
    }
    party.Members.front()->Party = nullptr;
    Parties.remove_if([&](const Party& other) { return &other == &party; });
}

} // namespace Kesra
