#pragma once

#include "KesraNTC/base/CFixCharString.h"
#include "KesraNTC/base/COLEDateTime.h"
#include "KesraNTC/base/CString.h"
#include "KesraNTC/net/GS_RESULT.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/rpc/CNTProxy.h"
#include "KesraNTC/world/CDRVector.h"
#include "KesraNTC/world/CNTVector.h"
#include "KesraNTC/world/TAvatar.h"
#include "KesraNTC/world/TItem.h"
#include "KesraNTC/world/TPrivData.h"
#include "KesraNTC/world/TSkill.h"

#include <tuple>
#include <vector>

/// Everything a game can ask of the game server: 65 requests.
///
/// Attach the proxy to a connected client before the first request. Never make a waiting request inside a
/// handler: it blocks its thread for 20 seconds and then disconnects the client.
///
/// A send-only request returns GS_OK at once, whatever became of the send; the server answers, if at all,
/// with pushed messages. A waiting request blocks its thread until the reply with its serial is in, at most
/// 20000 ms. It returns GS_OK with its out-parameters filled, the server's verdict in `result`; or
/// GS_REPLY_ERROR with `result` 3 and the others untouched; `result` stays, too, when there is no memory for
/// the request. A failed send and a missing reply end the connection that the request was made on. A waiting
/// request waits its whole time even when its send failed or the connection ends meanwhile.
///
/// Requests may be made from any thread, the send-only ones inside handlers too. The reply to a waiting one
/// could not be dispatched before the handler has returned; nor is there anybody to dispatch it on the
/// receive thread itself, in ProcessDisconnection, unless ConnectToServer has been called there. Text
/// arguments travel up to their first NUL; a request never exceeds 4096 bytes, what does not fit is left out.
/// A `long` travels as its low 32 bits. Arguments whose meaning only the server knows are named by their
/// place.
class KESRANTC_API CNTProxy_CLToGS : public CNTProxy
{
public:
    CNTProxy_CLToGS();
    ~CNTProxy_CLToGS() override;

    /// Sends through the attached client. False, a line in the log and ProcessProxyError when that fails;
    /// false and a line in the log when no client is attached.
    bool Send(CNTPacket& packet) override;
    /// Disconnects the attached client.
    void ProcessProxyError() override;

    // Account, avatars and play sessions.

    /// Waiting, so never in a handler: logs the account on; brings its avatars, each with its private data.
    GS_RESULT CS_Logon(CString& account, CString& password, unsigned short& value,
                       std::vector<TAvatar>& avatars, std::vector<TPrivData>& privData,
                       unsigned long& result);
    /// Waiting, so never in a handler: creates the account's avatar with this index.
    GS_RESULT CS_CreateAvatar(short avatarIndex, CString& nickname, short avatarTemplateID,
                              unsigned long& result);
    /// Waiting, so never in a handler: marks an avatar for deletion; `when` is the date the server set.
    GS_RESULT CS_DeleteAvatar(short avatarIndex, COLEDateTime& when, unsigned long& result);
    /// Waiting, so never in a handler: takes a deletion back.
    GS_RESULT CS_CancelDeleteAvatar(short avatarIndex, unsigned long& result);
    /// Waiting, so never in a handler: asks to join a play session; brings the avatar's items and skills.
    GS_RESULT CS_TryOnSession(short first, short second, std::vector<TItem>& items,
                              std::vector<TSkill>& skills, unsigned long& result);
    /// Enters the session.
    GS_RESULT CS_EnterSession();
    /// Leaves the session.
    GS_RESULT CS_LeaveSession();
    /// Asks for the avatar to be born again.
    GS_RESULT CS_BearAgain(short value);
    /// Asks for the avatar to be born and to enter.
    GS_RESULT CS_BearAndEnterSession();
    /// Waiting, so never in a handler: warps into a session; `position` receives x and z. The four values are
    /// only read.
    GS_RESULT CS_Warp_SessionIn(short& first, short& second, short& third, short& fourth, CNTVector& position,
                                unsigned long& result);
    /// Warps into a session at a position.
    GS_RESULT CS_Warp_SessionIn_Free(short value, CNTVector& position);
    /// Warps out of the session.
    GS_RESULT CS_Warp_SessionOut();
    /// Waiting, so never in a handler: renames the avatar.
    GS_RESULT CS_Change_AvatarNickName(CFixCharString<20>& nickname, unsigned long& result);
    /// Reports an error text to the server.
    GS_RESULT CS_Error(CString& text);
    /// Asks for the avatar to be loaded again.
    GS_RESULT CS_Avatar_Reload();

    // Chat and movement.

    /// Says something to everyone in the session; at most 200 bytes.
    GS_RESULT CS_Chat(CFixCharString<200>& text);
    /// Whispers to the avatar with this object ID.
    GS_RESULT CS_Wisper_Chat(unsigned long objectID, CFixCharString<200>& text);
    /// Whispers to the avatar with this name, wherever it is.
    GS_RESULT CS_Wisper_Chat_Wide(CFixCharString<20>& nickname, CFixCharString<200>& text);
    /// Reports the own avatar's movement; to be sent whenever CDRVector::Move says so.
    GS_RESULT CS_AvatarMove(CDRVector& movement, unsigned short second, unsigned long third);

    // Items.

    /// Puts an item of the inventory on.
    GS_RESULT CS_PutonItem(short slot, short item);
    /// Takes a worn item off, back into the inventory.
    GS_RESULT CS_TakeoffItem(short slot, short item);
    /// Takes one of the worn weapons in hand.
    GS_RESULT CS_ChooseWeapon(short weapon);
    /// Buys several of an item that is counted.
    GS_RESULT CS_BuyItems(long item, short count);
    /// Buys one item.
    GS_RESULT CS_BuyItem(long item, short second, short third);
    /// Sells the item at this index.
    GS_RESULT CS_SellItem(short item);
    /// Picks up the item lying in the world with this object ID.
    GS_RESULT CS_PickupItem(unsigned long objectID);
    /// Drops the item at this index into the world.
    GS_RESULT CS_DropItem(short item);
    /// Moves an item to another place of the inventory.
    GS_RESULT CS_ReLocateItemInInventory(short from, short to);
    /// Uses up one of the item at this index.
    GS_RESULT CS_Use_Item(short item);
    /// Asks for the jewelry collection to be brought up to date.
    GS_RESULT CS_UpdateJewelryCollection(short value);
    /// Waiting, so never in a handler: upgrades an item with materials.
    GS_RESULT CS_Request_ItemUpgrade(short first, long second, std::vector<short>& materials, short fourth,
                                     short fifth, long& upgraded, unsigned long& result);
    /// Repairs the item at this index.
    GS_RESULT CS_RepairItem(short item);
    /// Lets two items of the inventory change places.
    GS_RESULT CS_ExchangeItemInInventory(short first, short second);

    // Combat and points.

    /// Attacks the monster with this object ID; carries the tick count and the second and millisecond of UTC.
    GS_RESULT CS_Avatar_AttackMonster(unsigned long objectID);
    /// The same with the chosen skill.
    GS_RESULT CS_Avatar_SkillAttackMonster(unsigned long objectID);
    /// Attacks a point; x and z travel.
    GS_RESULT CS_Avatar_AttackArea(CNTVector& point);
    /// Distributes the points of the ki system anew.
    GS_RESULT CS_UI_ResetKiSystem(short first, short second, short third);
    /// Raises a parameter.
    GS_RESULT CS_IncParameter(short parameter);

    // Barter; the number is the other avatar's object ID. docs/trading.md has the steps and a program.

    /// Proposes a barter; the other gets SC_Barter50003, and its answer comes with SC_Barter50002.
    GS_RESULT CS_RequestBarter(unsigned long objectID);
    /// Answers a proposed barter; to the reference server 1 agrees, anything else refuses.
    GS_RESULT CS_ResponseBarter(unsigned long objectID, short answer);
    /// Calls a barter off; the other gets SC_Barter50004.
    GS_RESULT CS_CancelBarter(unsigned long objectID);
    /// Offers items, skills and, last, gold, in place of the offer before; the other gets SC_Dealing.
    GS_RESULT CS_Dealing(unsigned long objectID, std::vector<TItem>& items, std::vector<TSkill>& skills,
                         long last);
    /// Agrees to what both sides offer; the other gets SC_Barter50004, and after the second signature both
    /// get SC_Barter50005.
    GS_RESULT CS_DealSign(unsigned long objectID);

    // Party.

    /// Invites the avatar with this object ID.
    GS_RESULT CS_Request_Make_Party(unsigned long objectID);
    /// Answers the invitation of the avatar with this object ID.
    GS_RESULT CS_Response_Make_Party(unsigned long objectID, bool accept);
    /// Leaves the party.
    GS_RESULT CS_Breakwith_Party();
    /// The boss sends a member away.
    GS_RESULT CS_Boss_Force_PartyMember_To_Breakwith_Party(CString nickname);
    /// The boss makes a member the boss.
    GS_RESULT CS_Boss_Entrust_PartyMember(CString nickname);

    // Skills; the references are only read.

    /// Moves a skill to another place.
    GS_RESULT CS_ReLocateSkill(short& from, short& to);
    /// Chooses the skill that further attacks use.
    GS_RESULT CS_ChooseSkill(short& skill);
    /// Buys a skill.
    GS_RESULT CS_BuySkill(long& skill, short& second, short& third);
    /// Sells the skill at this index.
    GS_RESULT CS_SellSkill(short& skill);
    /// Picks up the skill lying in the world with this object ID.
    GS_RESULT CS_PickupSkill(unsigned long& objectID);
    /// Drops the skill at this index into the world.
    GS_RESULT CS_DropSkill(short& skill);

    // Game masters; whether the sender is one is for the server to decide.

    /// Waiting, so never in a handler: moves the game master to an avatar; brings a value and the place's x
    /// and z.
    GS_RESULT CS_GM_Move_To_Avatar(CString nickname, short& value, CNTVector& position,
                                   unsigned long& result);
    /// Waiting, so never in a handler: moves the game master to a place; x and z travel.
    GS_RESULT CS_GM_Move_To_Position(short first, CNTVector position, unsigned long& result);
    /// Summons an avatar.
    GS_RESULT CS_GM_Call_Avatar(CString nickname);
    /// Becomes invisible or visible again.
    GS_RESULT CS_GM_Transparent(bool invisible);
    /// Forbids an avatar to chat.
    GS_RESULT CS_GM_Prohibit_Avatar_Chatting(CString nickname, int time);
    /// Waiting, so never in a handler: brings an avatar's public and private records.
    GS_RESULT CS_GM_Get_Avatar_Information(CString nickname, TAvatar& avatar, TPrivData& privData,
                                           unsigned long& result);
    /// Throws an avatar out of the game.
    GS_RESULT CS_GM_Purge_Avatar(CString nickname);
    /// Sets an avatar's level.
    GS_RESULT CS_GM_Change_Level(CString nickname, short level);
    /// Gives an avatar a skill.
    GS_RESULT CS_GM_Give_Skill(CString nickname, int second, int third);
    /// Gives an avatar an item.
    GS_RESULT CS_GM_Give_Item(CString nickname, int second, short third);
    /// Waiting, so never in a handler: takes an item from an avatar; brings the item.
    GS_RESULT CS_GM_Steal_Item(CString nickname, short second, TItem& item, unsigned long& result);

private:
    template <class... Fields> GS_RESULT SendOnly(unsigned short number, const Fields&... fields);
    template <class... Fields, class... Targets, class... BeforeSerial>
    GS_RESULT AskAndWait(unsigned short number, const std::tuple<const Fields&...>& sent,
                         const std::tuple<Targets&...>& filled, unsigned long& result,
                         BeforeSerial... beforeSerial);
};
