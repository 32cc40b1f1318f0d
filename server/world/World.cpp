#include "server/world/World.h"

#include <algorithm>

namespace Kesra
{
namespace
{

constexpr std::size_t AccountLimit = 10000;
constexpr unsigned short CharacterLimit = 30000;
constexpr std::size_t NameLimit = 20;
constexpr std::size_t AccountNameLimit = 64;
constexpr std::size_t GroundLimit = 80;      ///< all of it fits in one packet, monsters included
constexpr std::size_t AvatarsPerPacket = 40; ///< whoever is left out is met with the next SC_AVATAR
constexpr unsigned long FirstMonsterID = 100'000;
constexpr unsigned long FirstItemID = 1'000'000;
constexpr std::chrono::seconds RespawnDelay{3};
constexpr std::size_t NpcsPerSession = 2;
constexpr long StartingWeapon = 110001;
constexpr long StartingPotion = 70001;
constexpr long StartingPotions = 5;
constexpr long StartingSkill = 101;

bool IsName(const std::string& name)
{
    const auto control = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
    return !name.empty() && name.size() <= NameLimit && std::none_of(name.begin(), name.end(), control);
}

GroundItem MakeGroundItem(long id, long count, short option)
{
    GroundItem thing;
    thing.Record.SetCurZoneID(1);
    thing.Record.SetWorldItemID(static_cast<int>(id));
    thing.Record.SetWorldItemCount(count);
    thing.Record.SetWorldItemOptionID(option);
    return thing;
}

} // namespace

bool IsAccountName(const std::string& name)
{
    return !name.empty() && name.size() <= AccountNameLimit;
}

std::vector<TMonster> PlaySession::MonsterList() const
{
    std::vector<TMonster> list;
    for (const auto& [id, monster] : Monsters)
        list.push_back(monster.Record);
    return list;
}

std::vector<TWorldItem> PlaySession::ItemList() const
{
    std::vector<TWorldItem> list;
    for (const auto& [id, item] : Items)
        list.push_back(item.Record);
    return list;
}

World::World(Scheduler scheduler)
    : Schedule(std::move(scheduler)), LastMonsterID(FirstMonsterID), LastItemID(FirstItemID)
{
}

Account* World::FindAccount(const std::string& name)
{
    const auto found = Accounts.find(name);
    return found == Accounts.end() ? nullptr : found->second.get();
}

Account* World::AddAccount(const std::string& name, const std::string& password, bool master)
{
    if (Accounts.size() >= AccountLimit)
        return nullptr;
    auto& account = Accounts[name];
    if (!account) {
        account = std::make_unique<Account>();
        account->UserIndex = static_cast<long>(Accounts.size());
        account->Name = name;
    }
    account->Password = password;
    account->Master = master;
    return account.get();
}

Result World::CreateCharacter(Account& account, short index, const std::string& name, short avatarTemplate)
{
    if (index < 0 || index >= AvatarsPerAccount || avatarTemplate < 0)
        return Result::BadArgument;
    if (!IsName(name))
        return Result::BadName;
    auto& place = account.Avatars[static_cast<std::size_t>(index)];
    if (place || FindCharacter(name) != nullptr)
        return Result::AvatarExists;
    if (LastCharacterID == CharacterLimit)
        return Result::Full;
    ++LastCharacterID;
    place = std::make_unique<Character>(LastCharacterID, account.UserIndex, index, name, avatarTemplate);
    place->AddItem(StartingWeapon, 0, 1);
    place->AddItem(StartingPotion, 0, StartingPotions);
    place->AddSkill(StartingSkill, 0);
    Characters[name] = place.get();
    CharactersByID[place->ID()] = place.get();
    return Result::Done;
}

Result World::Rename(Character& character, const std::string& name)
{
    if (!IsName(name))
        return Result::BadName;
    if (FindCharacter(name) != nullptr)
        return Result::AvatarExists;
    Characters.erase(character.Name());
    CString nickname(name.c_str());
    character.Avatar.SetNickname(nickname);
    Characters[name] = &character;
    if (character.IsPlaying())
        SendToSession(character.Session(), Notification<SC_EVENT16020>(character.Avatar));
    return Result::Done;
}

Character* World::FindCharacter(const std::string& name)
{
    const auto found = Characters.find(name);
    return found == Characters.end() ? nullptr : found->second;
}

Character* World::FindPlaying(unsigned long id)
{
    const auto found = CharactersByID.find(id);
    return found == CharactersByID.end() || !found->second->IsPlaying() ? nullptr : found->second;
}

void World::ForgetInvitations(Character& character)
{
    character.InvitedBy = 0;
    for (const auto& [id, other] : CharactersByID)
        if (other->InvitedBy == character.ID())
            other->InvitedBy = 0;
}

PlaySession& World::SessionOf(const Character& character)
{
    return Session(character.Session());
}

std::size_t World::PlayerCount() const
{
    std::size_t players = 0;
    for (const auto& [number, session] : Sessions)
        players += session.Players.size();
    return players;
}

PlaySession& World::Session(short session)
{
    const auto [found, fresh] = Sessions.try_emplace(session);
    if (fresh)
        Populate(session);
    return found->second;
}

void World::Populate(short number)
{
    PlaySession& session = Session(number);
    const std::array positions{CNTVector(300, 0, 100), CNTVector(350, 0, 120), CNTVector(-400, 0, 250)};
    short monsterTemplate = 1;
    for (const CNTVector& position : positions) {
        Monster monster = MakeMonster(*FindMonsterKind(monsterTemplate++), position);
        session.Monsters.emplace(monster.Record.GetID(), monster);
    }
    TNPC npc;
    npc.Init();
    npc.SetNpcTemplateID(1);
    session.Npcs.assign(NpcsPerSession, npc);
    Lay(number, MakeGroundItem(StartingPotion, 1, 0), CNTVector(50, 0, 50));
}

Monster World::MakeMonster(const MonsterKind& kind, const CNTVector& position)
{
    CNTVector copy = position;
    Monster monster;
    monster.Kind = &kind;
    monster.Record.Init();
    monster.Record.SetID(++LastMonsterID);
    monster.Record.SetCurZoneID(1);
    monster.Record.SetMonsterTemplateID(kind.Template);
    monster.Record.SetMonHP(kind.HP);
    monster.Record.GetDRVector()->SetPos(copy);
    return monster;
}

void World::Enter(Character& character, short session)
{
    character.Avatar.SetJoinedSessionID(session);
    if (character.Avatar.GetCurZoneID() < 1)
        character.Avatar.SetCurZoneID(1);
    character.Send(Notification<SC_EVENT29001>(character.ID()));
    ShowSurroundings(character);
    SendToSession(session, Notification<SC_AVATAR>(character.Avatar));
    SessionOf(character).Players.push_back(&character);
}

void World::ShowSurroundings(Character& character)
{
    PlaySession& session = SessionOf(character);
    std::vector<TAvatar> avatars;
    for (Character* other : session.Players)
        avatars.push_back(other->Avatar);
    avatars.resize(std::min(avatars.size(), AvatarsPerPacket));
    character.Send(Notification<SC_PRIV_DATA>(character.Priv));
    character.Send(Notification<SC_AVATAR_LIST>(avatars));
    character.Send(
        Notification<SC_WORLD_OBJECT_LISTS>(session.ItemList(), session.MonsterList(), session.Npcs));
}

void World::Leave(Character& character)
{
    const short session = character.Session();
    if (session == 0)
        return;
    Trades.Cancel(character);
    auto& players = SessionOf(character).Players;
    players.erase(std::remove(players.begin(), players.end(), &character), players.end());
    character.Avatar.SetJoinedSessionID(0);
    SendToSession(session, Notification<SC_WORLD14011>(character.ID()));
}

void World::SendToSession(short session, const CNTPacket& packet, const Character* except)
{
    for (Character* character : Session(session).Players)
        if (character != except)
            character->Send(packet);
}

Monster* World::FindMonster(const Character& character, unsigned long id)
{
    auto& monsters = SessionOf(character).Monsters;
    const auto found = monsters.find(id);
    return found == monsters.end() ? nullptr : &found->second;
}

void World::Respawn(short session, const Monster& dead)
{
    const MonsterKind& kind = *dead.Kind;
    Monster copy = dead;
    const CNTVector position = copy.Record.GetDRVector()->GetPos();
    Session(session).Monsters.erase(dead.Record.GetID());
    Schedule(RespawnDelay, [this, session, &kind, position] {
        const Monster monster = MakeMonster(kind, position);
        Session(session).Monsters.emplace(monster.Record.GetID(), monster);
        SendToSession(session, Notification<SC_MONSTER>(monster.Record));
    });
}

/// Puts something on the ground; when too much lies there, the oldest goes.
TWorldItem World::Lay(short session, const GroundItem& thing, const CNTVector& position)
{
    CNTVector copy = position;
    GroundItem laid = thing;
    laid.Record.SetID(++LastItemID);
    laid.Record.GetDRVector()->SetPos(copy);
    auto& items = Session(session).Items;
    if (items.size() >= GroundLimit) {
        SendToSession(session, Notification<SC_WORLD14011>(items.begin()->first));
        items.erase(items.begin());
    }
    return items.emplace(laid.Record.GetID(), laid).first->second.Record;
}

void World::Drop(Character& owner, const TItem& item, long count)
{
    const GroundItem thing = MakeGroundItem(item.GetItemID(), count, item.GetItemOptionID());
    const TWorldItem record = Lay(owner.Session(), thing, owner.Position());
    SendToSession(owner.Session(), Notification<SC_EVENT20001>(record, owner.ID()));
}

void World::Drop(Character& owner, const TSkill& skill)
{
    GroundItem thing = MakeGroundItem(SkillBookBase + skill.GetSkillID(), skill.GetSkillExp(), 0);
    thing.Skill = skill;
    const TWorldItem record = Lay(owner.Session(), thing, owner.Position());
    SendToSession(owner.Session(), Notification<SC_WORLD_ITEM>(record));
}

void World::DropLoot(Character& finder, Monster& monster)
{
    const CNTVector position = monster.Record.GetDRVector()->GetPos();
    const TWorldItem record = Lay(finder.Session(), MakeGroundItem(monster.Kind->Loot, 1, 0), position);
    SendToSession(finder.Session(), Notification<SC_EVENT20001>(record, monster.Record.GetID()));
}

} // namespace Kesra
