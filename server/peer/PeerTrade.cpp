// Trading with another avatar, and parties.
#include "server/peer/Peer.h"

namespace Kesra
{

void Peer::RequestBarter(unsigned long other)
{
    if (CanAct())
        Report(Game.Trades.Ask(*Self, Game.FindPlaying(other)));
}

void Peer::ResponseBarter(unsigned long other, short answer)
{
    if (CanAct())
        Report(Game.Trades.Answer(*Self, Game.FindPlaying(other), answer));
}

void Peer::CancelBarter(unsigned long other)
{
    if (CanAct())
        Report(Game.Trades.Cancel(*Self, Game.FindPlaying(other)));
}

void Peer::Dealing(unsigned long other, const std::vector<TItem>& items, const std::vector<TSkill>& skills,
                   long gold)
{
    if (CanAct())
        Report(Game.Trades.Deal(*Self, Game.FindPlaying(other), {items, skills, gold}));
}

void Peer::DealSign(unsigned long other)
{
    if (CanAct())
        Report(Game.Trades.Sign(*Self, Game.FindPlaying(other)));
}

void Peer::RequestMakeParty(unsigned long other)
{
    if (CanAct())
        Report(Game.Parties.Invite(*Self, Game.FindPlaying(other)));
}

void Peer::ResponseMakeParty(unsigned long other, bool accepted)
{
    if (CanAct())
        Report(Game.Parties.Answer(*Self, Game.FindPlaying(other), accepted));
}

void Peer::BreakwithParty()
{
    if (CanAct())
        Report(Game.Parties.Leave(*Self));
}

void Peer::ForcePartyMemberToBreakwithParty(const LongText& name)
{
    if (CanAct())
        Report(Game.Parties.Expel(*Self, Game.FindCharacter(name.Value)));
}

void Peer::EntrustPartyMember(const LongText& name)
{
    if (CanAct())
        Report(Game.Parties.Entrust(*Self, Game.FindCharacter(name.Value)));
}

} // namespace Kesra
