// Being in a play session: coming and going, speaking, moving.
#include "server/peer/Peer.h"

#include <algorithm>
#include <cmath>

namespace Kesra
{
namespace
{

constexpr char ScenarioCommand[] = "/scenario";
const std::array Gates{CNTVector(0, 0, 0), CNTVector(200, 0, 0), CNTVector(0, 0, 200), CNTVector(-200, 0, 0)};

bool IsSession(short session)
{
    return session >= 1 && session <= SessionCount;
}

bool IsCoordinate(float value)
{
    return std::isfinite(value) && std::fabs(value) <= PositionLimit;
}

} // namespace

bool IsZone(short zone)
{
    return zone >= 1 && zone <= ZoneCount;
}

bool IsPosition(const CNTVector& position)
{
    return IsCoordinate(position[0]) && IsCoordinate(position[2]);
}

void Peer::EnterSession()
{
    if (Self == nullptr || IsPlaying()) {
        const Result why = Self == nullptr ? Result::NotReady : Result::AlreadyPlaying;
        LogRefusal(why);
        Send(Notification<SC_EVENT29003>(why));
        return;
    }
    Game.Enter(*Self, ChosenSession);
    Settings.PlayerEntered(*Self);
}

void Peer::LeaveSession()
{
    if (!MustPlay())
        return;
    Game.Leave(*Self);
    Send(Notification<SC_EVENT29002>());
}

void Peer::BearAgain(short kind)
{
    if (!MustPlay())
        return;
    if (!Self->Dead) {
        Refuse(Result::BadArgument);
        return;
    }
    BearAtGate();
    Send(Notification<SC_EVENT60002>(kind));
    SendPlace();
    SendPoints(*Self);
    Game.SendToSession(Self->Session(), Notification<SC_AVATAR>(Self->Avatar), Self);
}

void Peer::BearAndEnterSession()
{
    const bool bears = Self != nullptr && !IsPlaying();
    if (bears)
        BearAtGate();
    EnterSession();
    if (bears)
        SendPlace();
}

/// A new life begins at the first gate.
void Peer::BearAtGate()
{
    Self->RestorePoints();
    Self->SetPosition(Gates.front());
}

void Peer::SendPlace()
{
    Send(Notification<SC_EVENT60001>(Self->Avatar.GetCurZoneID(), Self->Position()));
}

void Peer::WarpSessionIn(Serial serial, short session, short zone, short gate, short)
{
    const bool known =
        IsSession(session) && IsZone(zone) && gate >= 0 && gate < static_cast<short>(Gates.size());
    Result result = Result::Done;
    if (Self == nullptr)
        result = Result::NotReady;
    else if (!known)
        result = Result::NoSuchSession;
    else if (Self->Dead)
        result = Result::Dead;
    if (result != Result::Done) {
        Decline<CS_WARP_SESSION_IN>(serial, result);
        return;
    }
    const CNTVector position = Gates[static_cast<std::size_t>(gate)];
    const bool enters = !IsPlaying();
    Reply<CS_WARP_SESSION_IN>(serial, position);
    Warp(*Self, session, zone, position);
    PlaySession& around = Game.SessionOf(*Self);
    Send(Notification<SC_WORLD_ITEM_LIST>(around.ItemList()));
    Send(Notification<SC_MONSTER_LIST>(around.MonsterList()));
    Send(Notification<SC_NPC_LIST>(around.Npcs));
    if (enters)
        Settings.PlayerEntered(*Self);
}

void Peer::WarpSessionInFree(short zone, const CNTVector& position)
{
    if (!CanAct())
        return;
    if (!IsZone(zone) || !IsPosition(position)) {
        Refuse(Result::BadArgument);
        return;
    }
    Warp(*Self, Self->Session(), zone, position);
    SendPlace();
}

void Peer::WarpSessionOut()
{
    const bool left = IsPlaying();
    LeaveSession();
    if (!left)
        return;
    std::vector<short> sessions;
    for (short session = 1; session <= SessionCount; ++session)
        sessions.push_back(session);
    Send(Notification<SC_WORLD14012>(sessions));
}

/// Moves a character to another place: within its session the others learn its zone, otherwise it leaves one
/// session and enters the other.
void Peer::Warp(Character& character, short session, short zone, const CNTVector& position)
{
    character.SetPosition(position);
    character.Avatar.SetLastZoneID(character.Avatar.GetCurZoneID());
    character.Avatar.SetCurZoneID(zone);
    if (character.Session() == session) {
        Game.SendToSession(session, Notification<SC_WORLD14013>(character.ID(), zone), &character);
        Game.SendToSession(session, Notification<SC_AVATAR>(character.Avatar), &character);
        return;
    }
    Game.Leave(character);
    Game.Enter(character, session);
}

void Peer::AvatarReload()
{
    if (Self == nullptr) {
        Refuse(Result::NotReady);
        return;
    }
    Send(Notification<SC_EVENT16021>(Self->Avatar, Self->Priv, Self->Items, Self->Skills));
}

void Peer::Chat(const ChatText& line)
{
    if (!MustPlay())
        return;
    if (line.Value == ScenarioCommand)
        Settings.StartScenario(Self);
    else if (IsSilenced())
        Refuse(Result::Silenced);
    else
        Game.SendToSession(Self->Session(), Notification<SC_CHAT>(Self->ShortID(), line.Value), Self);
}

bool Peer::CanWhisper()
{
    if (!CanAct())
        return false;
    if (IsSilenced()) {
        Refuse(Result::Silenced);
        return false;
    }
    return true;
}

void Peer::WisperChat(unsigned long addressee, const ChatText& message)
{
    if (!CanWhisper())
        return;
    Character* other = Game.FindPlaying(addressee);
    if (other == nullptr) {
        Refuse(Result::NoSuchAvatar);
        return;
    }
    other->Send(Notification<SC_WISPER_CHAT>(Self->ID(), message.Value));
}

void Peer::WisperChatWide(const NameText& addressee, const ChatText& message)
{
    if (!CanWhisper())
        return;
    Character* other = Game.FindCharacter(addressee.Value);
    if (other == nullptr || !other->IsPlaying()) {
        Refuse(Result::NoSuchAvatar);
        return;
    }
    other->Send(Notification<SC_WISPER_CHAT_WIDE>(Self->ID(), Self->Name(), message.Value));
}

void Peer::AvatarMove(const CDRVector& movement, unsigned short value, unsigned long time)
{
    const bool sane =
        IsPosition(movement.GetPos()) && IsCoordinate(movement.GetAY()) && IsCoordinate(movement.GetSpeed());
    if (!CanAct())
        return;
    if (!sane) {
        Refuse(Result::BadArgument);
        return;
    }
    CDRVector copy = movement;
    Self->Avatar.SetDRVector(copy);
    Game.SendToSession(Self->Session(), Notification<SC_AVATAR_MOVE>(Self->ShortID(), movement, value, time),
                       Self);
}

} // namespace Kesra
