// What a player does with the messages of the server: remember, and say what they mean.
#include "tools/demo/Player.h"

#include "server/ResultCodes.h"
#include "server/Texts.h"

namespace
{

std::string Show(const TItem& item)
{
    return Words(item.GetItemCount(), " x item ", item.GetItemID(), " at ", item.GetItemIndex());
}

std::string Show(TWorldItem& item)
{
    const CNTVector position = item.GetDRVector()->GetPos();
    return Words("item ", item.GetWorldItemID(), " as object ", item.GetID(), " at (", position[0], ", ",
                 position[2], ")");
}

std::string Show(const char* text)
{
    return "\"" + Kesra::Utf8Text(text) + "\"";
}

std::string NoticeText(char kind, const std::string& about)
{
    switch (static_cast<Kesra::Notice>(kind)) {
    case Kesra::Notice::PartyInvitation:
        return about + " asks to make a party";
    case Kesra::Notice::PartyJoined:
        return about + " has joined the party";
    case Kesra::Notice::PartyRefused:
        return about + " does not want to join";
    case Kesra::Notice::PartyLeft:
        return about + " has left the party";
    case Kesra::Notice::PartyBoss:
        return about + " leads the party now";
    default:
        return about;
    }
}

} // namespace

// Coming and going.

void Player::SC_GSList(std::vector<sGS>& servers)
{
    Note([this, count = servers.size()] { Tell(Words("is told of ", count, " game server")); });
}

void Player::SC_Event29001(long& ownID)
{
    Note([this, ownID] {
        ID = static_cast<unsigned long>(ownID);
        Tell(Words("is in the session as object ", ownID));
    });
}

void Player::SC_Event29002()
{
    Note([this] {
        Avatars.clear();
        Tell("has left the session");
    });
}

void Player::SC_AvatarList(std::vector<TAvatar>& avatars)
{
    Note([this, avatars] {
        for (const TAvatar& avatar : avatars) {
            Meet(avatar);
            Tell("finds " + NameOf(avatar.GetID()) + " there");
        }
    });
}

void Player::SC_Avatar(TAvatar& avatar)
{
    Note([this, avatar] {
        const bool fresh = Avatars.count(avatar.GetID()) == 0;
        Meet(avatar);
        if (fresh)
            Tell("sees " + NameOf(avatar.GetID()) + " arrive");
    });
}

void Player::SC_WorldObjectLists(std::vector<TWorldItem>& items, std::vector<TMonster>& monsters,
                                 std::vector<TNPC>& npcs)
{
    Note([this, items, monsters, npcs = npcs.size()] {
        for (const TMonster& monster : monsters)
            Monsters.emplace(monster.GetID(), monster);
        for (const TWorldItem& item : items)
            Ground.emplace(item.GetID(), item);
        Tell(Words("sees ", items.size(), " item on the ground, ", monsters.size(), " monsters and ", npcs,
                   " villagers"));
    });
}

void Player::SC_World14011(long& id)
{
    Note([this, id = static_cast<unsigned long>(id)] {
        Tell("sees " + NameOf(id) + " vanish");
        Avatars.erase(id);
        Ground.erase(id);
    });
}

void Player::SC_World14012(std::vector<short>& sessions)
{
    Note([this, count = sessions.size()] { Tell(Words("may choose among ", count, " sessions")); });
}

void Player::SC_World14013(long& id, short& zone)
{
    Note([this, id, zone] {
        Tell(Words("sees ", NameOf(static_cast<unsigned long>(id)), " go to zone ", zone));
    });
}

void Player::SC_Event60001(short zone, CNTVector& position)
{
    Note([this, zone, position]() mutable {
        Own.SetPos(position);
        Tell(Words("stands in zone ", zone, " at (", position[0], ", ", position[2], ")"));
    });
}

// Talking.

void Player::SC_Chat(short& who, CFixCharString<200>& line)
{
    Note([this, who, line] {
        LastHeard = line;
        Tell("hears " + NameOf(static_cast<unsigned long>(who)) + " say " + Show(line));
    });
}

void Player::SC_Wisper_Chat(unsigned long& who, CFixCharString<200>& line)
{
    Note([this, who, line] {
        LastHeard = line;
        Tell("hears " + NameOf(who) + " whisper " + Show(line));
    });
}

void Player::SC_Wisper_Chat_Wide(unsigned long&, CFixCharString<20>& name, CFixCharString<200>& line)
{
    Note([this, name, line] {
        LastHeard = line;
        Tell(Words("hears ", name, " whisper from afar ", Show(line)));
    });
}

void Player::SC_Event18001(char& kind, CString& about)
{
    Note([this, kind, about = std::string(about)] { Tell("learns: " + NoticeText(kind, about)); });
}

// Items.

void Player::SC_PutonItem(short& who, short& place, long& item)
{
    Note([this, who, place, item] {
        Tell(Words("sees ", NameOf(static_cast<unsigned long>(who)), " wear item ", item, " at place ",
                   place));
    });
}

void Player::SC_TakeoffItem(short& who, short& place)
{
    Note([this, who, place] {
        Tell(Words("sees ", NameOf(static_cast<unsigned long>(who)), " bare place ", place));
    });
}

void Player::SC_Event16006(short& index)
{
    Note([this, index] { Tell(Words("has dropped what was at ", index)); });
}

void Player::SC_Event16007(long& gold, short& index, short& count, long& kind)
{
    Note([this, gold, index, count, kind] {
        TItem item;
        item.SetItemIndex(index);
        item.SetItemID(kind);
        item.SetItemCount(count);
        Items.push_back(item);
        Tell(Words("has bought ", Show(item), ", ", gold, " gold left"));
    });
}

void Player::SC_Event16008(short& index, long& gold)
{
    Note([this, index, gold] { Tell(Words("has sold what was at ", index, ", ", gold, " gold now")); });
}

void Player::SC_Event16009(long&, TItem& item)
{
    Note([this, item] {
        Items.push_back(item);
        Tell("has picked up " + Show(item));
    });
}

void Player::SC_Event16010(short& code)
{
    Note([this, code] { Tell(Words("is refused, code ", code)); });
}

void Player::SC_Event16014(short& weapon)
{
    Note([this, weapon] { Tell(Words("uses weapon ", weapon)); });
}

void Player::SC_Event16025(short& index, long& left)
{
    Note([this, index, left] { Tell(Words("has used one of ", index, ", ", left, " left")); });
}

void Player::SC_Event16026(long& object, long& who)
{
    Note([this, object, who] {
        Ground.erase(static_cast<unsigned long>(object));
        Tell(Words("sees ", NameOf(static_cast<unsigned long>(who)), " take object ", object));
    });
}

void Player::SC_Event17003(short& from, short& to)
{
    Note([this, from, to] { Tell(Words("has moved an item from ", from, " to ", to)); });
}

void Player::SC_Event19001(short& index)
{
    Note([this, index] { Tell(Words("has added the jewel at ", index, " to the collection")); });
}

void Player::SC_Event20001(TWorldItem& item, long& from)
{
    Note([this, item, from]() mutable {
        Ground.emplace(item.GetID(), item);
        Tell("sees " + NameOf(static_cast<unsigned long>(from)) + " drop " + Show(item));
    });
}

void Player::SC_WorldItem(TWorldItem& item)
{
    Note([this, item]() mutable {
        Ground.emplace(item.GetID(), item);
        Tell("sees on the ground " + Show(item));
    });
}

void Player::SC_Priv13006(long& gold)
{
    Note([this, gold] { Tell(Words("has ", gold, " gold")); });
}

void Player::SC_Priv13008(short& index, long left)
{
    Note([this, index, left] { Tell(Words("has ", left, " left at ", index)); });
}

void Player::SC_Priv13010(short& index, long price)
{
    Note([this, index, price] { Tell(Words("has had ", index, " repaired for ", price, " gold")); });
}

// Skills and statistics.

void Player::SC_Event16017(long& gold, TSkill& skill)
{
    Note([this, gold, skill] {
        Skills.push_back(skill);
        Tell(Words("has learnt skill ", skill.GetSkillID(), " at ", skill.GetSkillIndex(), ", ", gold,
                   " gold left"));
    });
}

void Player::SC_Event16018(short& index)
{
    Note([this, index] { Tell(Words("keeps the skill at ", index, " now")); });
}

void Player::SC_Event16019(short& index)
{
    Note([this, index] { Tell(Words("is ready to use the skill at ", index)); });
}

void Player::SC_Event16022(TSkill& skill, long&)
{
    Note([this, skill] { Tell(Words("has picked up skill ", skill.GetSkillID())); });
}

void Player::SC_Event16023(short& index, long& gold)
{
    Note([this, index, gold] { Tell(Words("has sold the skill at ", index, ", ", gold, " gold now")); });
}

void Player::SC_PrivData(TPrivData& data)
{
    Note([this, data] {
        Priv = data;
        Priv.UpdateMaxHP();
        Tell(Words("has level ", Priv.GetLevel(), ", ", Priv.GetHP(), " of ", Priv.MaxHP, " HP, ",
                   Priv.GetGold(), " gold"));
    });
}

void Player::SC_IncParameter(char& parameter, short& left)
{
    Note([this, parameter = static_cast<int>(parameter), left] {
        Tell(Words("has raised parameter ", parameter, ", ", left, " points left"));
    });
}

void Player::SC_Event17002(short& attack, short& defence, short& intellect, long& hp, long& mp, long& sp)
{
    Note([=, this] {
        Tell(Words("divides ki ", attack, "/", defence, "/", intellect, ", maxima ", hp, " HP, ", mp, " MP, ",
                   sp, " SP"));
    });
}

void Player::SC_Priv13004(short& level, short& points, long& experience, short&, long& hp, long&, long&,
                          long& maxHP, long&, long&)
{
    Note([=, this] {
        Tell(Words("has level ", level, ", ", experience, " experience, ", points, " points, ", hp, " of ",
                   maxHP, " HP"));
    });
}

void Player::SC_Priv13005(long& hp, long& mp, long& sp)
{
    Note([=, this] { Tell(Words("has ", hp, " HP, ", mp, " MP, ", sp, " SP")); });
}

// Fighting.

void Player::SC_Event12006(long& target, short& damage, char& outcome)
{
    const bool killed = outcome == static_cast<char>(Kesra::Outcome::Killed);
    Note([this, target, damage, killed] {
        if (killed)
            Monsters.erase(static_cast<unsigned long>(target));
        Tell(Words("sees monster ", target, " take ", damage, killed ? ", its last" : ""));
    });
}

void Player::SC_Event12007(long& attacker, long& target, short& damage, long& hp)
{
    Note([=, this] {
        Tell(Words("sees monster ", attacker, " hit ", NameOf(static_cast<unsigned long>(target)), " for ",
                   damage, ", ", hp, " HP left"));
    });
}

void Player::SC_Event12009(long& monster)
{
    Note([this, monster] {
        Monsters.erase(static_cast<unsigned long>(monster));
        Tell(Words("sees monster ", monster, " die"));
    });
}

void Player::SC_Event12012(std::vector<long>& targets, std::vector<short>&, std::vector<char>&)
{
    Note([this, count = targets.size()] { Tell(Words("sees a blow that hits ", count, " monsters")); });
}

void Player::SC_ObjectMove(unsigned long& id, CDRVector& movement, short&, long&)
{
    Note([this, id, position = movement.GetPos()] {
        Tell(Words("sees monster ", id, " come to (", position[0], ", ", position[2], ")"));
    });
}

// Trading.

void Player::SC_Barter50002(long& who, short& answer)
{
    Note([this, who, answer] {
        Tell(NameOf(static_cast<unsigned long>(who)) +
             (answer == 1 ? " agrees to trade" : " does not want to trade"));
    });
}

void Player::SC_Barter50003(long& who)
{
    Note([this, who] { Tell("is asked to trade by " + NameOf(static_cast<unsigned long>(who))); });
}

void Player::SC_Barter50004(long& who, short& state)
{
    Note([this, who, state] {
        const bool isSigned = state == static_cast<short>(Kesra::DealState::Signed);
        Tell(NameOf(static_cast<unsigned long>(who)) + (isSigned ? " has signed" : " is out of the trade"));
    });
}

void Player::SC_Dealing(unsigned long& who, std::vector<TItem>& items, std::vector<TSkill>& skills,
                        long& gold)
{
    Note([this, who, items = items.size(), skills = skills.size(), gold] {
        Tell(Words("is offered ", items, " item, ", skills, " skill and ", gold, " gold by ", NameOf(who)));
    });
}

void Player::SC_Barter50005(unsigned long& who, std::vector<TItem>& items, std::vector<TSkill>& skills,
                            long& gold)
{
    Note([this, who, items = items.size(), skills = skills.size(), gold] {
        Tell(Words("receives ", items, " item, ", skills, " skill and ", gold, " gold from ", NameOf(who)));
    });
}

// Game masters.

void Player::SC_GM_Call_Avatar(short& session, CNTVector& position)
{
    Note([this, session, position]() mutable {
        Own.SetPos(position);
        Tell(Words("is called to session ", session, " at (", position[0], ", ", position[2], ")"));
    });
}

void Player::SC_GM_Transparent(long& who, bool& transparent)
{
    Note([this, who, transparent] {
        Tell(Words("sees ", NameOf(static_cast<unsigned long>(who)), transparent ? " fade" : " appear"));
    });
}

void Player::SC_GM21006()
{
    Note([this] { Tell("is sent away by a game master"); });
}

void Player::SC_GM21007(long& seconds)
{
    Note([this, seconds] { Tell(Words("may not chat for ", seconds, " seconds")); });
}

void Player::SC_GM_Change_Level(TPrivData& data)
{
    Note([this, data] {
        Priv = data;
        Tell(Words("has level ", Priv.GetLevel(), " by the grace of a game master"));
    });
}

void Player::SC_GM_Give_Skill(TSkill& skill)
{
    Note([this, skill] { Tell(Words("is given skill ", skill.GetSkillID())); });
}

void Player::SC_GM_Give_Item(TItem& item)
{
    Note([this, item] {
        Items.push_back(item);
        Tell("is given " + Show(item));
    });
}

void Player::SC_Event16020(TAvatar& avatar)
{
    Note([this, avatar]() mutable {
        Meet(avatar);
        Tell(Words("sees that ", avatar.GetNickname(), " has changed"));
    });
}

void Player::SC_Event16021(TAvatar&, TPrivData& data, std::vector<TItem>& items, std::vector<TSkill>& skills)
{
    Note([this, data, items, skills] {
        Priv = data;
        Items = items;
        Skills = skills;
        Tell(Words("owns ", items.size(), " items and ", skills.size(), " skills"));
    });
}
