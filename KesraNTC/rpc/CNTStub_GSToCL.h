#pragma once

#include "KesraNTC/base/CFixCharString.h"
#include "KesraNTC/base/CString.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/rpc/CNTStub.h"
#include "KesraNTC/world/CDRVector.h"
#include "KesraNTC/world/TItem.h"
#include "KesraNTC/world/TPrivData.h"
#include "KesraNTC/world/TSkill.h"
#include "KesraNTC/world/WorldObjects.h"
#include "KesraNTC/world/sGS.h"

#include <vector>

/// What the server pushes, one handler per message number. The game derives from this class, implements all
/// 74 and attaches one object of it with CNTBaseClient::Attach.
///
/// A handler's parameters are the message's payload in order: references to temporaries that die when the
/// handler returns, so copy what is kept. A `long` comes from 32 bits. What the packet did not hold is 0,
/// empty or as constructed.
/// Handlers run one at a time, with the connection's lock held, on the thread that drains the queue: the
/// game's, or the receive thread while a request waits for its reply. They must not throw. A waiting request
/// made from one can only run into its 20 seconds, which end in a disconnection; send-only ones are welcome.
/// The number in front of each line is its message; what the values mean is between the game and its server;
/// docs/server.md says what they mean to the reference server.
class KESRANTC_API CNTStub_GSToCL : public CNTStub
{
public:
    /// 29001: one value.
    virtual void SC_Event29001(long&) = 0;
    /// 29002: no payload.
    virtual void SC_Event29002() = 0;
    /// 14002: the avatars around the player.
    virtual void SC_AvatarList(std::vector<TAvatar>&) = 0;
    /// 14003: items, monsters and non-player characters around the player.
    virtual void SC_WorldObjectLists(std::vector<TWorldItem>&, std::vector<TMonster>&,
                                     std::vector<TNPC>&) = 0;
    /// 14004: items lying in the world.
    virtual void SC_WorldItemList(std::vector<TWorldItem>&) = 0;
    /// 14005: monsters.
    virtual void SC_MonsterList(std::vector<TMonster>&) = 0;
    /// 14006: non-player characters; only their number travels.
    virtual void SC_NpcList(std::vector<TNPC>&) = 0;
    /// 14007: one avatar.
    virtual void SC_Avatar(TAvatar&) = 0;
    /// 14008: one item lying in the world.
    virtual void SC_WorldItem(TWorldItem&) = 0;
    /// 14009: one monster.
    virtual void SC_Monster(TMonster&) = 0;
    /// 14010: one non-player character, in its default state.
    virtual void SC_Npc(TNPC&) = 0;
    /// 14011: one value.
    virtual void SC_World14011(long&) = 0;
    /// 14012: a list of values.
    virtual void SC_World14012(std::vector<short>&) = 0;
    /// 14013: two values.
    virtual void SC_World14013(long&, short&) = 0;
    /// 12002: a chat line, at most 200 bytes.
    virtual void SC_Chat(short&, CFixCharString<200>&) = 0;
    /// 12003: an avatar's movement report: who, then the three values of CS_AvatarMove.
    virtual void SC_AvatarMove(short&, CDRVector&, unsigned short&, unsigned long&) = 0;
    /// 12004: an item put on: the two values of CS_PutonItem and a third.
    virtual void SC_PutonItem(short&, short&, long&) = 0;
    /// 12005: an item taken off: the two values of CS_TakeoffItem.
    virtual void SC_TakeoffItem(short&, short&) = 0;
    /// 12006: one attack result.
    virtual void SC_Event12006(long&, short&, char&) = 0;
    /// 12012: attack results, one list per field.
    virtual void SC_Event12012(std::vector<long>&, std::vector<short>&, std::vector<char>&) = 0;
    /// 12008: one value.
    virtual void SC_Event12008(short&) = 0;
    /// 12007: four values.
    virtual void SC_Event12007(long&, long&, short&, long&) = 0;
    /// 15003: two values.
    virtual void SC_Event15003(long&, short) = 0;
    /// 12009: one value.
    virtual void SC_Event12009(long&) = 0;
    /// No message reaches this handler; it keeps the slots after it in their places.
    virtual void SC_Reserved1() = 0;
    /// 20001: an item in the world.
    virtual void SC_Event20001(TWorldItem&, long&) = 0;
    /// 16015: a whisper: an object ID and the message.
    virtual void SC_Wisper_Chat(unsigned long&, CFixCharString<200>&) = 0;
    /// 16016: a whisper from afar: a value, an avatar name (at most 20 bytes) and the message.
    virtual void SC_Wisper_Chat_Wide(unsigned long&, CFixCharString<20>&, CFixCharString<200>&) = 0;
    /// 29003: one value.
    virtual void SC_Event29003(char&) = 0;
    /// 13002: the player's private data.
    virtual void SC_PrivData(TPrivData&) = 0;
    /// 13006: one value.
    virtual void SC_Priv13006(long&) = 0;
    /// 13003: a parameter raised.
    virtual void SC_IncParameter(char&, short&) = 0;
    /// 13004: ten values.
    virtual void SC_Priv13004(short&, short&, long&, short&, long&, long&, long&, long&, long&, long&) = 0;
    /// 13005: three values.
    virtual void SC_Priv13005(long&, long&, long&) = 0;
    /// 13008: the last value comes by value.
    virtual void SC_Priv13008(short&, long) = 0;
    /// 13010: the last value comes by value.
    virtual void SC_Priv13010(short&, long) = 0;
    /// 15002: an object's movement: its ID, the movement block and two values.
    virtual void SC_ObjectMove(unsigned long&, CDRVector&, short&, long&) = 0;
    /// 18001: a text of any length.
    virtual void SC_Event18001(char&, CString&) = 0;
    /// 19001: one value.
    virtual void SC_Event19001(short&) = 0;
    /// 17002: six values.
    virtual void SC_Event17002(short&, short&, short&, long&, long&, long&) = 0;
    /// 16007: four values.
    virtual void SC_Event16007(long&, short&, short&, long&) = 0;
    /// 16008: two values.
    virtual void SC_Event16008(short&, long&) = 0;
    /// 16009: an item.
    virtual void SC_Event16009(long&, TItem&) = 0;
    /// 16026: two values.
    virtual void SC_Event16026(long&, long&) = 0;
    /// 16010: one value.
    virtual void SC_Event16010(short&) = 0;
    /// 16014: one value.
    virtual void SC_Event16014(short&) = 0;
    /// 16025: two values.
    virtual void SC_Event16025(short&, long&) = 0;
    /// 16017: a skill.
    virtual void SC_Event16017(long&, TSkill&) = 0;
    /// 16018: one value.
    virtual void SC_Event16018(short&) = 0;
    /// 16022: a skill.
    virtual void SC_Event16022(TSkill&, long&) = 0;
    /// 16023: two values.
    virtual void SC_Event16023(short&, long&) = 0;
    /// 16019: one value.
    virtual void SC_Event16019(short&) = 0;
    /// 17003: two values.
    virtual void SC_Event17003(short&, short&) = 0;
    /// 13007: two values.
    virtual void SC_Priv13007(short&, long&) = 0;
    /// 16006: one value.
    virtual void SC_Event16006(short&) = 0;
    /// 16013: a place; y is 0.
    virtual void SC_Event16013(CNTVector&) = 0;
    /// 508: the list of game servers.
    virtual void SC_GSList(std::vector<sGS>&) = 0;
    /// 50001: an offer, the four values of CS_Dealing: who offers, items, skills, gold.
    virtual void SC_Dealing(unsigned long&, std::vector<TItem>&, std::vector<TSkill>&, long&) = 0;
    /// 50002: the answer to a proposed barter: who answers, and 1 when it agrees.
    virtual void SC_Barter50002(long&, short&) = 0;
    /// 50003: a barter is proposed: by whom.
    virtual void SC_Barter50003(long&) = 0;
    /// 50004: a barter changes: the partner, and 0 called off, 1 signed, 2 an offer could not be kept.
    virtual void SC_Barter50004(long&, short&) = 0;
    /// 50005: a barter is done: the partner and what was received, as in CS_Dealing.
    virtual void SC_Barter50005(unsigned long&, std::vector<TItem>&, std::vector<TSkill>&, long&) = 0;
    /// 60001: a place; y is 0.
    virtual void SC_Event60001(short, CNTVector&) = 0;
    /// 60002: one value.
    virtual void SC_Event60002(short) = 0;
    /// 16020: an avatar.
    virtual void SC_Event16020(TAvatar&) = 0;
    /// 16021: an avatar whole: record, private data, items and skills.
    virtual void SC_Event16021(TAvatar&, TPrivData&, std::vector<TItem>&, std::vector<TSkill>&) = 0;
    /// 21003: summoned by a game master: a value and the place; y is 0.
    virtual void SC_GM_Call_Avatar(short&, CNTVector&) = 0;
    /// 21004: a game master turns invisible or visible.
    virtual void SC_GM_Transparent(long&, bool&) = 0;
    /// 21006: no payload.
    virtual void SC_GM21006() = 0;
    /// 21007: one value.
    virtual void SC_GM21007(long&) = 0;
    /// 21008: the private data after a change of level.
    virtual void SC_GM_Change_Level(TPrivData&) = 0;
    /// 21009: a skill given by a game master.
    virtual void SC_GM_Give_Skill(TSkill&) = 0;
    /// 21010: an item given by a game master.
    virtual void SC_GM_Give_Item(TItem&) = 0;
    /// No message reaches this handler; it keeps the slots after it in their places.
    virtual void SC_Reserved2() = 0;
};
