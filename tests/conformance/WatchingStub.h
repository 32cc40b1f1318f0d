#pragma once

#include "KesraNTC/rpc/CNTStub_GSToCL.h"
#include "KesraNTC/rpc/MessageNumbers.h"

namespace Kesra
{

/// Tells a watcher of every message: Got(number, arguments of the handler...).
template <class Watcher> class WatchingStub : public CNTStub_GSToCL
{
public:
    explicit WatchingStub(Watcher& watcher) : Watch(watcher) {}

    void SC_Event29001(long& v1) override { Got(SC_EVENT29001, v1); }
    void SC_Event29002() override { Got(SC_EVENT29002); }
    void SC_AvatarList(std::vector<TAvatar>& v1) override { Got(SC_AVATAR_LIST, v1); }
    void SC_WorldObjectLists(std::vector<TWorldItem>& v1, std::vector<TMonster>& v2,
                             std::vector<TNPC>& v3) override
    {
        Got(SC_WORLD_OBJECT_LISTS, v1, v2, v3);
    }
    void SC_WorldItemList(std::vector<TWorldItem>& v1) override { Got(SC_WORLD_ITEM_LIST, v1); }
    void SC_MonsterList(std::vector<TMonster>& v1) override { Got(SC_MONSTER_LIST, v1); }
    void SC_NpcList(std::vector<TNPC>& v1) override { Got(SC_NPC_LIST, v1); }
    void SC_Avatar(TAvatar& v1) override { Got(SC_AVATAR, v1); }
    void SC_WorldItem(TWorldItem& v1) override { Got(SC_WORLD_ITEM, v1); }
    void SC_Monster(TMonster& v1) override { Got(SC_MONSTER, v1); }
    void SC_Npc(TNPC& v1) override { Got(SC_NPC, v1); }
    void SC_World14011(long& v1) override { Got(SC_WORLD14011, v1); }
    void SC_World14012(std::vector<short>& v1) override { Got(SC_WORLD14012, v1); }
    void SC_World14013(long& v1, short& v2) override { Got(SC_WORLD14013, v1, v2); }
    void SC_Chat(short& v1, CFixCharString<200>& v2) override { Got(SC_CHAT, v1, v2); }
    void SC_AvatarMove(short& v1, CDRVector& v2, unsigned short& v3, unsigned long& v4) override
    {
        Got(SC_AVATAR_MOVE, v1, v2, v3, v4);
    }
    void SC_PutonItem(short& v1, short& v2, long& v3) override { Got(SC_PUTON_ITEM, v1, v2, v3); }
    void SC_TakeoffItem(short& v1, short& v2) override { Got(SC_TAKEOFF_ITEM, v1, v2); }
    void SC_Event12006(long& v1, short& v2, char& v3) override { Got(SC_EVENT12006, v1, v2, v3); }
    void SC_Event12012(std::vector<long>& v1, std::vector<short>& v2, std::vector<char>& v3) override
    {
        Got(SC_EVENT12012, v1, v2, v3);
    }
    void SC_Event12008(short& v1) override { Got(SC_EVENT12008, v1); }
    void SC_Event12007(long& v1, long& v2, short& v3, long& v4) override
    {
        Got(SC_EVENT12007, v1, v2, v3, v4);
    }
    void SC_Event15003(long& v1, short v2) override { Got(SC_EVENT15003, v1, v2); }
    void SC_Event12009(long& v1) override { Got(SC_EVENT12009, v1); }
    void SC_Reserved1() override { Reserved(); }
    void SC_Event20001(TWorldItem& v1, long& v2) override { Got(SC_EVENT20001, v1, v2); }
    void SC_Wisper_Chat(unsigned long& v1, CFixCharString<200>& v2) override { Got(SC_WISPER_CHAT, v1, v2); }
    void SC_Wisper_Chat_Wide(unsigned long& v1, CFixCharString<20>& v2, CFixCharString<200>& v3) override
    {
        Got(SC_WISPER_CHAT_WIDE, v1, v2, v3);
    }
    void SC_Event29003(char& v1) override { Got(SC_EVENT29003, v1); }
    void SC_PrivData(TPrivData& v1) override { Got(SC_PRIV_DATA, v1); }
    void SC_Priv13006(long& v1) override { Got(SC_PRIV13006, v1); }
    void SC_IncParameter(char& v1, short& v2) override { Got(SC_INC_PARAMETER, v1, v2); }
    void SC_Priv13004(short& v1, short& v2, long& v3, short& v4, long& v5, long& v6, long& v7, long& v8,
                      long& v9, long& v10) override
    {
        Got(SC_PRIV13004, v1, v2, v3, v4, v5, v6, v7, v8, v9, v10);
    }
    void SC_Priv13005(long& v1, long& v2, long& v3) override { Got(SC_PRIV13005, v1, v2, v3); }
    void SC_Priv13008(short& v1, long v2) override { Got(SC_PRIV13008, v1, v2); }
    void SC_Priv13010(short& v1, long v2) override { Got(SC_PRIV13010, v1, v2); }
    void SC_ObjectMove(unsigned long& v1, CDRVector& v2, short& v3, long& v4) override
    {
        Got(SC_OBJECT_MOVE, v1, v2, v3, v4);
    }
    void SC_Event18001(char& v1, CString& v2) override { Got(SC_EVENT18001, v1, v2); }
    void SC_Event19001(short& v1) override { Got(SC_EVENT19001, v1); }
    void SC_Event17002(short& v1, short& v2, short& v3, long& v4, long& v5, long& v6) override
    {
        Got(SC_EVENT17002, v1, v2, v3, v4, v5, v6);
    }
    void SC_Event16007(long& v1, short& v2, short& v3, long& v4) override
    {
        Got(SC_EVENT16007, v1, v2, v3, v4);
    }
    void SC_Event16008(short& v1, long& v2) override { Got(SC_EVENT16008, v1, v2); }
    void SC_Event16009(long& v1, TItem& v2) override { Got(SC_EVENT16009, v1, v2); }
    void SC_Event16026(long& v1, long& v2) override { Got(SC_EVENT16026, v1, v2); }
    void SC_Event16010(short& v1) override { Got(SC_EVENT16010, v1); }
    void SC_Event16014(short& v1) override { Got(SC_EVENT16014, v1); }
    void SC_Event16025(short& v1, long& v2) override { Got(SC_EVENT16025, v1, v2); }
    void SC_Event16017(long& v1, TSkill& v2) override { Got(SC_EVENT16017, v1, v2); }
    void SC_Event16018(short& v1) override { Got(SC_EVENT16018, v1); }
    void SC_Event16022(TSkill& v1, long& v2) override { Got(SC_EVENT16022, v1, v2); }
    void SC_Event16023(short& v1, long& v2) override { Got(SC_EVENT16023, v1, v2); }
    void SC_Event16019(short& v1) override { Got(SC_EVENT16019, v1); }
    void SC_Event17003(short& v1, short& v2) override { Got(SC_EVENT17003, v1, v2); }
    void SC_Priv13007(short& v1, long& v2) override { Got(SC_PRIV13007, v1, v2); }
    void SC_Event16006(short& v1) override { Got(SC_EVENT16006, v1); }
    void SC_Event16013(CNTVector& v1) override { Got(SC_EVENT16013, v1); }
    void SC_GSList(std::vector<sGS>& v1) override { Got(SC_GS_LIST, v1); }
    void SC_Dealing(unsigned long& v1, std::vector<TItem>& v2, std::vector<TSkill>& v3, long& v4) override
    {
        Got(SC_DEALING, v1, v2, v3, v4);
    }
    void SC_Barter50002(long& v1, short& v2) override { Got(SC_BARTER50002, v1, v2); }
    void SC_Barter50003(long& v1) override { Got(SC_BARTER50003, v1); }
    void SC_Barter50004(long& v1, short& v2) override { Got(SC_BARTER50004, v1, v2); }
    void SC_Barter50005(unsigned long& v1, std::vector<TItem>& v2, std::vector<TSkill>& v3, long& v4) override
    {
        Got(SC_BARTER50005, v1, v2, v3, v4);
    }
    void SC_Event60001(short v1, CNTVector& v2) override { Got(SC_EVENT60001, v1, v2); }
    void SC_Event60002(short v1) override { Got(SC_EVENT60002, v1); }
    void SC_Event16020(TAvatar& v1) override { Got(SC_EVENT16020, v1); }
    void SC_Event16021(TAvatar& v1, TPrivData& v2, std::vector<TItem>& v3, std::vector<TSkill>& v4) override
    {
        Got(SC_EVENT16021, v1, v2, v3, v4);
    }
    void SC_GM_Call_Avatar(short& v1, CNTVector& v2) override { Got(SC_GM_CALL_AVATAR, v1, v2); }
    void SC_GM_Transparent(long& v1, bool& v2) override { Got(SC_GM_TRANSPARENT, v1, v2); }
    void SC_GM21006() override { Got(Kesra::SC_GM21006); }
    void SC_GM21007(long& v1) override { Got(Kesra::SC_GM21007, v1); }
    void SC_GM_Change_Level(TPrivData& v1) override { Got(SC_GM_CHANGE_LEVEL, v1); }
    void SC_GM_Give_Skill(TSkill& v1) override { Got(SC_GM_GIVE_SKILL, v1); }
    void SC_GM_Give_Item(TItem& v1) override { Got(SC_GM_GIVE_ITEM, v1); }
    void SC_Reserved2() override { Reserved(); }

private:
    template <class... Values> void Got(MessageNumber number, Values&... values)
    {
        Watch.Got(number, values...);
    }

    /// No message may reach the reserved handlers, and none has the number 0.
    void Reserved() { Got(static_cast<MessageNumber>(0)); }

    Watcher& Watch;
};

} // namespace Kesra
