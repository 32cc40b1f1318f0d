#pragma once

#include "server/messages/Replies.h"
#include "server/peer/RequestReader.h"
#include "server/scenario/Recorder.h"
#include "server/world/World.h"

#include <chrono>
#include <functional>
#include <string>

namespace Kesra
{

struct RequestRow;

/// What a peer needs from the server it belongs to.
struct PeerSettings {
    bool OpenAccounts = true; ///< an unknown account is made when it logs on
    std::vector<sGS> GameServers;
    std::function<void(Character* starter)> StartScenario;
    std::function<void(Character& player)> PlayerEntered;
};

/// The conversation with one client: takes its requests, carries them out in the world and answers. A
/// request that cannot be carried out changes nothing. Used on the server's thread only.
class Peer final : public AccountUser
{
public:
    Peer(Link& connection, World& world, Recorder& recorder, const PeerSettings& settings);
    /// Logs off.
    ~Peer();
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    /// Decodes a request and carries it out; a number or payload that is none is logged and ignored, but a
    /// request that waits is told so if its serial can be read.
    void Handle(CNTPacket& packet);

    /// Sends the clock message, if an account is logged on.
    void SendClock();
    void Send(CNTPacket packet) { Connection.Send(packet.GetBuf(), packet.GetBufSize()); }

    void GiveUp(const std::string& successor) override;

    /// Answers a waiting request that was not carried out: all fields of the reply are empty.
    template <MessageNumber Request> void Decline(Serial serial, Result why, const std::string& about = {})
    {
        LogRefusal(why, about);
        SendReply(ReplyTo<Request>(serial.Value, {}, why));
    }

    // The requests, one method each, named like the client's. The parameters are the payload in its order:
    // the request table deduces the decoding from them.

    // PeerAccount.cpp
    void Logon(Serial serial, const LongText& account, const LongText& password);
    void CreateAvatar(Serial serial, short index, const LongText& nickname, short avatarTemplate);
    void DeleteAvatar(Serial serial, short index);
    void CancelDeleteAvatar(Serial serial, short index);
    void TryOnSession(Serial serial, short index, short session);
    void ChangeAvatarNickName(char one, Serial serial, const NameText& nickname);
    void Error(const LongText& text);
    void EchoProperties(const CPropCollection& properties);
    void ResponseNetTime(unsigned long serverTime);

    // PeerSession.cpp
    void EnterSession();
    void LeaveSession();
    void BearAgain(short kind);
    void BearAndEnterSession();
    void WarpSessionIn(Serial serial, short session, short zone, short gate, short direction);
    void WarpSessionInFree(short zone, const CNTVector& position);
    void WarpSessionOut();
    void AvatarReload();
    void Chat(const ChatText& line);
    void WisperChat(unsigned long addressee, const ChatText& message);
    void WisperChatWide(const NameText& addressee, const ChatText& message);
    void AvatarMove(const CDRVector& movement, unsigned short value, unsigned long time);

    // PeerItems.cpp
    void PutonItem(short place, short index);
    void TakeoffItem(short place, short to);
    void ChooseWeapon(short weapon);
    void BuyItems(long kind, short count);
    void BuyItem(long kind, short index, short count);
    void SellItem(short index);
    void PickupItem(unsigned long object);
    void DropItem(short index);
    void ReLocateItemInInventory(short from, short to);
    void ExchangeItemInInventory(short one, short other);
    void UseItem(short index);
    void RepairItem(short index);
    void UpdateJewelryCollection(short index);
    void RequestItemUpgrade(Serial serial, short index, long kind, const std::vector<short>& materials,
                            short tool, short mode);

    // PeerCombat.cpp
    void AttackMonster(unsigned long monster, unsigned long time, unsigned short second,
                       unsigned short millisecond);
    void SkillAttackMonster(unsigned long monster, unsigned long time, unsigned short second,
                            unsigned short millisecond);
    void AttackArea(const CNTVector& position);
    void ResetKiSystem(short attack, short defence, short intellect);
    void IncParameter(short parameter);

    // PeerTrade.cpp
    void RequestBarter(unsigned long other);
    void ResponseBarter(unsigned long other, short answer);
    void CancelBarter(unsigned long other);
    void Dealing(unsigned long other, const std::vector<TItem>& items, const std::vector<TSkill>& skills,
                 long gold);
    void DealSign(unsigned long other);
    void RequestMakeParty(unsigned long other);
    void ResponseMakeParty(unsigned long other, bool accepted);
    void BreakwithParty();
    void ForcePartyMemberToBreakwithParty(const LongText& name);
    void EntrustPartyMember(const LongText& name);

    // PeerSkills.cpp
    void ReLocateSkill(short from, short to);
    void ChooseSkill(short index);
    void BuySkill(long kind, short index, short count);
    void SellSkill(short index);
    void PickupSkill(unsigned long object);
    void DropSkill(short index);

    // PeerMaster.cpp
    void MoveToAvatar(Serial serial, const LongText& name);
    void MoveToPosition(Serial serial, short zone, const CNTVector& position);
    void CallAvatar(const LongText& name);
    void Transparent(bool transparent);
    void ProhibitChatting(const LongText& name, int seconds);
    void GetAvatarInformation(Serial serial, const LongText& name);
    void PurgeAvatar(const LongText& name);
    void ChangeLevel(const LongText& name, short level);
    void GiveSkill(const LongText& name, int kind, int experience);
    void GiveItem(const LongText& name, int kind, short count);
    void StealItem(Serial serial, const LongText& name, short index);

private:
    using Clock = std::chrono::steady_clock;

    /// Answers a waiting request that was carried out.
    template <MessageNumber Request, class... Fields> void Reply(Serial serial, const Fields&... fields)
    {
        SendReply(ReplyTo<Request>(serial.Value, typename ReplyOf<Request>::Values(fields...), Result::Done));
    }
    /// Answers a waiting request whose reply is the result alone.
    template <MessageNumber Request> void Answer(Serial serial, Result result)
    {
        if (result == Result::Done)
            Reply<Request>(serial);
        else
            Decline<Request>(serial, result);
    }
    void SendReply(CNTPacket packet) { Connection.SendReply(packet.GetBuf(), packet.GetBufSize()); }
    void Ignore(unsigned short number, const std::string& why);
    void LogRefusal(Result why, const std::string& about = {});
    /// Logs what the client did wrong; of a flood only so many lines a second.
    void Complain(const std::string& what);
    void LogUntold();
    /// Tells the player that a request without a reply was not carried out.
    void Refuse(Result why);
    /// The same, and only if there is something to tell.
    void Report(Result result);

    bool IsPlaying() const { return Self != nullptr && Self->IsPlaying(); }
    // True when the player plays, plays and lives, or may whisper; otherwise the request has been refused.
    bool MustPlay();
    bool CanAct();
    bool CanWhisper();
    bool IsSilenced() const { return Clock::now() < Self->SilencedUntil; }
    Result CheckLogon(const std::string& name, const std::string& password);
    /// Null when the account has no such avatar, with the reason.
    Character* ChosenAvatar(short index, Result& result) const;
    void LogOff();
    /// The chosen avatar goes back to its account.
    void LetGo();
    void Warp(Character& character, short session, short zone, const CNTVector& position);
    void BearAtGate();
    /// Tells the player where its avatar stands.
    void SendPlace();
    void SendPoints(Character& character);
    void Fight(Monster& monster, short damage);
    static Outcome Hurt(Monster& monster, short damage);
    void StrikeBack(Monster& monster);
    void Defeat(Monster& monster);
    /// Something in a bag; null when nothing is there, which the player has then been told.
    TItem* FindInBag(short index);
    /// Done when something may be put at an index of a bag, or why not.
    Result CheckFreePlace(short index);
    GroundItem* FindOnGround(unsigned long object);
    void TakeFromGround(unsigned long object);
    bool IsMaster() const { return Owner != nullptr && Owner->Master; }
    /// Done when the player is a game master and the avatar is played, or why not.
    Result CheckTarget(const Character* target) const;
    Character* FindTarget(const LongText& name);

    Link& Connection;
    World& Game;
    Recorder& Record;
    const PeerSettings& Settings;
    Account* Owner = nullptr;
    Character* Self = nullptr;
    short ChosenSession = 0; ///< where CS_EnterSession leads
    Clock::time_point ClockSent{};
    unsigned long Latency = 0;           ///< milliseconds one way, as the last clock exchange showed
    const RequestRow* Current = nullptr; ///< the request that is being carried out
    Clock::time_point ComplaintsSince{};
    unsigned Complaints = 0; ///< since then, those that got no line included
};

bool IsZone(short zone);
/// True for a place that lies in the world: finite, and not too far out.
bool IsPosition(const CNTVector& position);

} // namespace Kesra
