// What a player does with the messages of the server: remember, and say what they mean.
#include "tools/demo/English.h"
#include "tools/demo/Player.h"

#include "server/messages/ResultCodes.h"
#include "server/messages/Texts.h"
#include "server/world/Catalogue.h"

namespace
{

std::string Show(const TItem& item)
{
    return Words(Things(item.GetItemCount(), item.GetItemID()), " (place ", item.GetItemIndex(), ")");
}

std::string Show(TWorldItem& item)
{
    // The count of a skill book is the skill's experience.
    const long count = item.GetWorldItemID() > Kesra::SkillBookBase ? 1 : item.GetWorldItemCount();
    return Words(Things(count, item.GetWorldItemID()), " (object ", item.GetID(), ") at ",
                 Place(item.GetDRVector()->GetPos()));
}

std::string Show(const char* text)
{
    return "\"" + Kesra::Utf8Text(text) + "\"";
}

std::string Goods(std::vector<TItem>& items, std::vector<TSkill>& skills, long gold)
{
    std::string goods;
    for (const TItem& item : items)
        goods += Things(item.GetItemCount(), item.GetItemID()) + ", ";
    for (const TSkill& skill : skills)
        goods += Words("skill ", skill.GetSkillID(), ", ");
    return goods + Words(gold, " gold");
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
    Note([this, count = servers.size()] {
        Tell(Words("is told of ", Count(static_cast<long long>(count), "game server")));
    });
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

void Player::SC_Monster(TMonster& monster)
{
    Note([this, monster] {
        Monsters.emplace(monster.GetID(), monster);
        Tell("sees " + NameOf(monster.GetID()) + " come");
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
        const auto count = [](std::size_t number, const char* noun) {
            return Count(static_cast<long long>(number), noun);
        };
        Tell("sees " + count(items.size(), "thing") + " on the ground, " + count(monsters.size(), "monster") +
             " and " + count(npcs, "villager"));
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
    Note([this, count = sessions.size()] {
        Tell(Words("may choose among ", Count(static_cast<long long>(count), "session")));
    });
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
        Tell(Words("stands in zone ", zone, " at ", Place(position)));
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
        Tell("hears " + Kesra::Utf8Text(static_cast<const char*>(name)) + " whisper from afar " + Show(line));
    });
}

void Player::SC_Event18001(char& kind, CString& about)
{
    Note([this, kind, about = Kesra::Utf8Text(static_cast<const char*>(about))] {
        Tell("learns: " + NoticeText(kind, about));
    });
}

// Items.

void Player::SC_PutonItem(short& who, short& place, long& item)
{
    Note([this, who, place, item] {
        Tell(Words("sees ", NameOf(static_cast<unsigned long>(who)), " wear ", Things(1, item), " at place ",
                   place));
    });
}

void Player::SC_TakeoffItem(short& who, short& place)
{
    Note([this, who, place] {
        Tell(Words("sees ", NameOf(static_cast<unsigned long>(who)), " take off what was at place ", place));
    });
}

void Player::SC_Event16006(short& index)
{
    Note([this, index] { Tell("has dropped " + Show(TakeAway(index))); });
}

void Player::SC_Event16007(long& gold, short& index, short& count, long& kind)
{
    Note([this, gold, index, count, kind] {
        TItem item;
        item.SetItemIndex(index);
        item.SetItemID(kind);
        item.SetItemCount(count);
        Put(item);
        Tell(Words("has bought ", Show(item), ", ", gold, " gold left"));
    });
}

void Player::SC_Event16008(short& index, long& gold)
{
    Note([this, index, gold] { Tell(Words("has sold ", Show(TakeAway(index)), ", ", gold, " gold now")); });
}

void Player::SC_Event16009(long&, TItem& item)
{
    Note([this, item] {
        Put(item);
        Tell("has picked up a thing and carries " + Show(item) + " now");
    });
}

void Player::SC_Event16010(short& code)
{
    Note([this, code = static_cast<unsigned short>(code)] {
        LastRefusal = code;
        Tell("is refused: " + Meaning(code));
    });
}

void Player::SC_Event16014(short& weapon)
{
    Note([this, weapon] { Tell(Words("takes weapon ", weapon, " in hand")); });
}

void Player::SC_Event16025(short& index, long& left)
{
    Note([this, index, left] {
        SetCount(index, left);
        Tell(Words("has used one of the things at place ", index, ", ", left, " left"));
    });
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
    Note([this, from, to] {
        TItem item = TakeAway(from);
        item.SetItemIndex(to);
        Put(item);
        Tell(Words("has moved ", Things(item.GetItemCount(), item.GetItemID()), " from place ", from, " to ",
                   to));
    });
}

void Player::SC_Event19001(short& index)
{
    Note([this, index] {
        const TItem jewel = TakeAway(index);
        // What a jewel does is not told: every game knows its own items.
        const Kesra::ItemKind* kind = Kesra::FindItemKind(jewel.GetItemID());
        const float factor = kind != nullptr ? 1.0F + static_cast<float>(kind->Strength) / 100.0F : 1.0F;
        Priv.UpdateParamByJewelry(1, 1, 1, factor, factor);
        Tell("has added " + Show(jewel) + " to the collection");
    });
}

void Player::SC_Event20001(TWorldItem& item, long& from)
{
    Note([this, item, from]() mutable {
        Ground.emplace(item.GetID(), item);
        const auto who = static_cast<unsigned long>(from);
        const bool loot = who != ID && Avatars.count(who) == 0;
        Tell("sees " + (loot ? "on the ground" : NameOf(who) + " drop") + " " + Show(item));
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
    Note([this, index, left] {
        SetCount(index, left);
        Tell(Words("has ", left, " left at place ", index));
    });
}

void Player::SC_Priv13010(short& index, long price)
{
    Note([this, index, price] {
        Tell(Words("has had what is at place ", index, " repaired for ", price, " gold"));
    });
}

// Skills and statistics.

void Player::SC_Event16017(long& gold, TSkill& skill)
{
    Note([this, gold, skill] {
        Skills.push_back(skill);
        Tell(Words("has learnt skill ", skill.GetSkillID(), " (place ", skill.GetSkillIndex(), "), ", gold,
                   " gold left"));
    });
}

void Player::SC_Event16018(short& index)
{
    Note([this, index] { Tell(Words("keeps the skill at place ", index, " now")); });
}

void Player::SC_Event16019(short& index)
{
    Note([this, index] { Tell(Words("is ready to use the skill at place ", index)); });
}

void Player::SC_Event16022(TSkill& skill, long&)
{
    Note([this, skill] { Tell(Words("has picked up skill ", skill.GetSkillID())); });
}

void Player::SC_Event16023(short& index, long& gold)
{
    Note(
        [this, index, gold] { Tell(Words("has sold the skill at place ", index, ", ", gold, " gold now")); });
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
        Tell(Words("has raised parameter ", parameter, ", ", Count(left, "point"), " left"));
    });
}

void Player::SC_Event17002(short& attack, short& defence, short& intellect, long& hp, long& mp, long& sp)
{
    Note([=, this] {
        Tell(Words("gives ki ", attack, " to attack, ", defence, " to defence, ", intellect,
                   " to intellect and has ", hp, " HP, ", mp, " MP, ", sp, " SP at most"));
    });
}

void Player::SC_Priv13004(short& level, short& points, long& experience, short&, long& hp, long&, long&,
                          long& maxHP, long&, long&)
{
    Note([=, this] {
        Tell(Words("has level ", level, ", ", experience, " experience, ", Count(points, "point"), ", ", hp,
                   " of ", maxHP, " HP"));
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
        Tell(Words("sees monster ", target, " lose ", damage, " HP", killed ? ", its last" : ""));
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
    Note([this, count = targets.size()] {
        Tell(Words("sees a blow that hits ", Count(static_cast<long long>(count), "monster")));
    });
}

void Player::SC_ObjectMove(unsigned long& id, CDRVector& movement, short&, long&)
{
    Note([this, id, position = movement.GetPos()] {
        Tell(Words("sees monster ", id, " come to ", Place(position)));
    });
}

// Trading.

void Player::SC_Barter50002(long& who, short& answer)
{
    Note([this, who, answer] {
        Tell("learns that " + NameOf(static_cast<unsigned long>(who)) +
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
        Tell("learns that " + NameOf(static_cast<unsigned long>(who)) +
             (isSigned ? " has signed" : " is out of the trade"));
    });
}

void Player::SC_Dealing(unsigned long& who, std::vector<TItem>& items, std::vector<TSkill>& skills,
                        long& gold)
{
    Note([this, who, goods = Goods(items, skills, gold)] {
        Tell("is offered " + goods + " by " + NameOf(who));
    });
}

void Player::SC_Barter50005(unsigned long& who, std::vector<TItem>& items, std::vector<TSkill>& skills,
                            long& gold)
{
    Note([this, who, goods = Goods(items, skills, gold)] {
        Tell("receives " + goods + " from " + NameOf(who));
    });
}

// Game masters.

void Player::SC_GM_Call_Avatar(short& session, CNTVector& position)
{
    Note([this, session, position]() mutable {
        Own.SetPos(position);
        Tell(Words("is called to session ", session, " at ", Place(position)));
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
        Put(item);
        Tell("is given " + Show(item));
    });
}

void Player::SC_Event16020(TAvatar& avatar)
{
    Note([this, avatar]() mutable {
        const auto known = Avatars.find(avatar.GetID());
        if (known != Avatars.end())
            known->second.SetNickname(avatar.GetNickname());
        Tell("sees that " + Kesra::Utf8Text(static_cast<const char*>(avatar.GetNickname())) + " has changed");
    });
}

void Player::SC_Event16021(TAvatar&, TPrivData& data, std::vector<TItem>& items, std::vector<TSkill>& skills)
{
    Note([this, data, items, skills] {
        Priv = data;
        Items = items;
        Skills = skills;
        Tell("owns " + Count(static_cast<long long>(items.size()), "kind of thing", "kinds of things") +
             " and " + Count(static_cast<long long>(skills.size()), "skill"));
    });
}
