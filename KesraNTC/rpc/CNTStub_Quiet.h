#pragma once

#include "KesraNTC/rpc/CNTStub_GSToCL.h"

/// A stub whose 74 handlers do nothing: bots, tools and small programs derive from it and override what they
/// care about. A game derives from CNTStub_GSToCL instead, so that the compiler names every handler it
/// forgot.
class CNTStub_Quiet : public CNTStub_GSToCL
{
public:
    void SC_Event29001(long&) override {}
    void SC_Event29002() override {}
    void SC_AvatarList(std::vector<TAvatar>&) override {}
    void SC_WorldObjectLists(std::vector<TWorldItem>&, std::vector<TMonster>&, std::vector<TNPC>&) override {}
    void SC_WorldItemList(std::vector<TWorldItem>&) override {}
    void SC_MonsterList(std::vector<TMonster>&) override {}
    void SC_NpcList(std::vector<TNPC>&) override {}
    void SC_Avatar(TAvatar&) override {}
    void SC_WorldItem(TWorldItem&) override {}
    void SC_Monster(TMonster&) override {}
    void SC_Npc(TNPC&) override {}
    void SC_World14011(long&) override {}
    void SC_World14012(std::vector<short>&) override {}
    void SC_World14013(long&, short&) override {}
    void SC_Chat(short&, CFixCharString<200>&) override {}
    void SC_AvatarMove(short&, CDRVector&, unsigned short&, unsigned long&) override {}
    void SC_PutonItem(short&, short&, long&) override {}
    void SC_TakeoffItem(short&, short&) override {}
    void SC_Event12006(long&, short&, char&) override {}
    void SC_Event12012(std::vector<long>&, std::vector<short>&, std::vector<char>&) override {}
    void SC_Event12008(short&) override {}
    void SC_Event12007(long&, long&, short&, long&) override {}
    void SC_Event15003(long&, short) override {}
    void SC_Event12009(long&) override {}
    void SC_Reserved1() override {}
    void SC_Event20001(TWorldItem&, long&) override {}
    void SC_Wisper_Chat(unsigned long&, CFixCharString<200>&) override {}
    void SC_Wisper_Chat_Wide(unsigned long&, CFixCharString<20>&, CFixCharString<200>&) override {}
    void SC_Event29003(char&) override {}
    void SC_PrivData(TPrivData&) override {}
    void SC_Priv13006(long&) override {}
    void SC_IncParameter(char&, short&) override {}
    void SC_Priv13004(short&, short&, long&, short&, long&, long&, long&, long&, long&, long&) override {}
    void SC_Priv13005(long&, long&, long&) override {}
    void SC_Priv13008(short&, long) override {}
    void SC_Priv13010(short&, long) override {}
    void SC_ObjectMove(unsigned long&, CDRVector&, short&, long&) override {}
    void SC_Event18001(char&, CString&) override {}
    void SC_Event19001(short&) override {}
    void SC_Event17002(short&, short&, short&, long&, long&, long&) override {}
    void SC_Event16007(long&, short&, short&, long&) override {}
    void SC_Event16008(short&, long&) override {}
    void SC_Event16009(long&, TItem&) override {}
    void SC_Event16026(long&, long&) override {}
    void SC_Event16010(short&) override {}
    void SC_Event16014(short&) override {}
    void SC_Event16025(short&, long&) override {}
    void SC_Event16017(long&, TSkill&) override {}
    void SC_Event16018(short&) override {}
    void SC_Event16022(TSkill&, long&) override {}
    void SC_Event16023(short&, long&) override {}
    void SC_Event16019(short&) override {}
    void SC_Event17003(short&, short&) override {}
    void SC_Priv13007(short&, long&) override {}
    void SC_Event16006(short&) override {}
    void SC_Event16013(CNTVector&) override {}
    void SC_GSList(std::vector<sGS>&) override {}
    void SC_Dealing(unsigned long&, std::vector<TItem>&, std::vector<TSkill>&, long&) override {}
    void SC_Barter50002(long&, short&) override {}
    void SC_Barter50003(long&) override {}
    void SC_Barter50004(long&, short&) override {}
    void SC_Barter50005(unsigned long&, std::vector<TItem>&, std::vector<TSkill>&, long&) override {}
    void SC_Event60001(short, CNTVector&) override {}
    void SC_Event60002(short) override {}
    void SC_Event16020(TAvatar&) override {}
    void SC_Event16021(TAvatar&, TPrivData&, std::vector<TItem>&, std::vector<TSkill>&) override {}
    void SC_GM_Call_Avatar(short&, CNTVector&) override {}
    void SC_GM_Transparent(long&, bool&) override {}
    void SC_GM21006() override {}
    void SC_GM21007(long&) override {}
    void SC_GM_Change_Level(TPrivData&) override {}
    void SC_GM_Give_Skill(TSkill&) override {}
    void SC_GM_Give_Item(TItem&) override {}
    void SC_Reserved2() override {}
};
