#pragma once

#include "tools/demo/GameClient.h"
#include "tools/demo/Narrator.h"

#include "KesraNTC/rpc/CNTProxy_CLToGS.h"
#include "KesraNTC/rpc/CNTStub_Quiet.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

/// A player of the story: its connection, its requests, and what it knows of the world.
///
/// Handlers may run on the receive thread, so each of them only notes what to do; Frame does it. All that a
/// player knows is therefore used on the game's thread alone.
class Player : public CNTStub_Quiet
{
public:
    Player(Narrator& narrator, const std::string& name);

    bool Connect(const std::string& address, unsigned short port);
    /// One frame of the game: takes in what has arrived and moves everybody by so many seconds.
    void Frame(float seconds);

    /// Starts walking in a direction (degrees, 0 is +z, 90 is +x), or stops with speed 0.
    void Walk(float heading, float speed);
    void Turn(float degrees);
    /// Says what this player does.
    void Tell(const std::string& what);
    /// True once per message of that number.
    bool Take(unsigned short number);

    TItem* FindItem(long kind);
    /// Where this player shows another one.
    CNTVector ShownPlace(const Player& other);

    // The handlers of what the story tells.
    void SC_GSList(std::vector<sGS>& servers) override;
    void SC_Event29001(long& ownID) override;
    void SC_Event29002() override;
    void SC_AvatarList(std::vector<TAvatar>& avatars) override;
    void SC_Avatar(TAvatar& avatar) override;
    void SC_Monster(TMonster& monster) override;
    void SC_WorldObjectLists(std::vector<TWorldItem>& items, std::vector<TMonster>& monsters,
                             std::vector<TNPC>& npcs) override;
    void SC_World14011(long& id) override;
    void SC_World14012(std::vector<short>& sessions) override;
    void SC_World14013(long& id, short& zone) override;
    void SC_PrivData(TPrivData& data) override;
    void SC_Chat(short& who, CFixCharString<200>& line) override;
    void SC_Wisper_Chat(unsigned long& who, CFixCharString<200>& line) override;
    void SC_Wisper_Chat_Wide(unsigned long& who, CFixCharString<20>& name,
                             CFixCharString<200>& line) override;
    void SC_AvatarMove(short& who, CDRVector& movement, unsigned short& value, unsigned long& time) override;
    void SC_Event18001(char& kind, CString& about) override;

    void SC_PutonItem(short& who, short& place, long& item) override;
    void SC_TakeoffItem(short& who, short& place) override;
    void SC_Event16006(short& index) override;
    void SC_Event16007(long& gold, short& index, short& count, long& kind) override;
    void SC_Event16008(short& index, long& gold) override;
    void SC_Event16009(long& object, TItem& item) override;
    void SC_Event16010(short& code) override;
    void SC_Event16014(short& weapon) override;
    void SC_Event16025(short& index, long& left) override;
    void SC_Event16026(long& object, long& who) override;
    void SC_Event17003(short& from, short& to) override;
    void SC_Event19001(short& index) override;
    void SC_Event20001(TWorldItem& item, long& from) override;
    void SC_WorldItem(TWorldItem& item) override;
    void SC_Priv13006(long& gold) override;
    void SC_Priv13008(short& index, long left) override;
    void SC_Priv13010(short& index, long price) override;

    void SC_Event16017(long& gold, TSkill& skill) override;
    void SC_Event16018(short& index) override;
    void SC_Event16019(short& index) override;
    void SC_Event16022(TSkill& skill, long& object) override;
    void SC_Event16023(short& index, long& gold) override;

    void SC_IncParameter(char& parameter, short& left) override;
    void SC_Event17002(short& attack, short& defence, short& intellect, long& hp, long& mp,
                       long& sp) override;
    void SC_Event12006(long& target, short& damage, char& outcome) override;
    void SC_Event12007(long& attacker, long& target, short& damage, long& hp) override;
    void SC_Event12009(long& monster) override;
    void SC_Event12012(std::vector<long>& targets, std::vector<short>& damages,
                       std::vector<char>& outcomes) override;
    void SC_Priv13004(short& level, short& points, long& experience, short& bags, long& hp, long& mp,
                      long& sp, long& maxHP, long& maxMP, long& maxSP) override;
    void SC_Priv13005(long& hp, long& mp, long& sp) override;
    void SC_ObjectMove(unsigned long& id, CDRVector& movement, short& zone, long& time) override;

    void SC_Barter50002(long& who, short& answer) override;
    void SC_Barter50003(long& who) override;
    void SC_Barter50004(long& who, short& state) override;
    void SC_Dealing(unsigned long& who, std::vector<TItem>& items, std::vector<TSkill>& skills,
                    long& gold) override;
    void SC_Barter50005(unsigned long& who, std::vector<TItem>& items, std::vector<TSkill>& skills,
                        long& gold) override;

    void SC_GM_Call_Avatar(short& session, CNTVector& position) override;
    void SC_GM_Transparent(long& who, bool& transparent) override;
    void SC_GM21006() override;
    void SC_GM21007(long& seconds) override;
    void SC_GM_Change_Level(TPrivData& data) override;
    void SC_GM_Give_Skill(TSkill& skill) override;
    void SC_GM_Give_Item(TItem& item) override;
    void SC_Event16020(TAvatar& avatar) override;
    void SC_Event16021(TAvatar& avatar, TPrivData& data, std::vector<TItem>& items,
                       std::vector<TSkill>& skills) override;
    void SC_Event60001(short zone, CNTVector& position) override;

    const std::string Name;
    GameClient Connection;
    CNTProxy_CLToGS Proxy;

    short Index = 0;      ///< of the avatar within its account
    unsigned long ID = 0; ///< own object ID
    CDRVector Own;        ///< own movement
    unsigned Reports = 0; ///< movement reports sent
    TPrivData Priv;
    std::vector<TItem> Items;
    std::vector<TSkill> Skills;
    std::map<unsigned long, TAvatar> Avatars; ///< the others
    std::map<unsigned long, TMonster> Monsters;
    std::map<unsigned long, TWorldItem> Ground;
    std::string LastHeard;         ///< the last chat line or whisper, as it came
    unsigned long LastRefusal = 0; ///< why the server last refused a request without a reply; 0 for never

private:
    /// Notes something for the next frame; from any thread.
    void Note(std::function<void()> event);
    std::string NameOf(unsigned long id);
    /// Takes the record of somebody who comes into sight or is somewhere else now.
    void Meet(const TAvatar& avatar);
    /// Puts an item in its place, whatever was there.
    void Put(const TItem& item);
    TItem* ItemAt(short index);
    /// Takes an item away; gives what it was.
    TItem TakeAway(short index);
    void SetCount(short index, long count);

    Narrator& Book;
    std::mutex Mutex;
    std::vector<std::function<void()>> Noted;
    std::map<unsigned short, unsigned> Received; ///< messages by number, all of them taken in
    std::map<unsigned short, unsigned> Taken;    ///< of these, what Take has answered for
    unsigned long Steps = 0;
};
