#pragma once

#include "server/messages/Notifications.h"
#include "server/world/Barter.h"
#include "server/world/Character.h"
#include "server/world/Party.h"

#include <array>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Kesra
{

/// Whoever is logged on with an account.
class AccountUser
{
public:
    /// Somebody else has logged on with the account: logs off at once.
    virtual void GiveUp(const std::string& successor) = 0;

protected:
    ~AccountUser() = default;
};

/// True for what an account may be called: 1 to 64 bytes.
bool IsAccountName(const std::string& name);

struct Account {
    std::string Name;
    std::string Password;
    long UserIndex = 0;
    bool Master = false; ///< may give game-master commands
    AccountUser* User = nullptr;
    std::array<std::unique_ptr<Character>, AvatarsPerAccount> Avatars;
};

struct Monster {
    TMonster Record;
    const MonsterKind* Kind = nullptr;
};

/// Something on the ground; a skill lies there as a book.
struct GroundItem {
    TWorldItem Record;
    std::optional<TSkill> Skill;
};

/// Who and what is in one play session.
struct PlaySession {
    std::vector<Character*> Players;
    std::map<unsigned long, Monster> Monsters;
    std::map<unsigned long, GroundItem> Items;
    std::vector<TNPC> Npcs;

    std::vector<TMonster> MonsterList() const;
    std::vector<TWorldItem> ItemList() const;
};

/// Runs something later on the server's thread.
using Scheduler = std::function<void(std::chrono::milliseconds, std::function<void()>)>;

/// Everything that outlives a connection: accounts, characters, play sessions, parties. Used on the server's
/// thread only. Operations that change what others see tell them.
class World
{
public:
    explicit World(Scheduler scheduler);

    Account* FindAccount(const std::string& name);
    /// Null when there are too many.
    Account* AddAccount(const std::string& name, const std::string& password, bool master);

    /// Done, or why the avatar cannot be made.
    Result CreateCharacter(Account& account, short index, const std::string& name, short avatarTemplate);
    Result Rename(Character& character, const std::string& name);
    Character* FindCharacter(const std::string& name);
    /// The playing character of that object ID; null when nobody plays it.
    Character* FindPlaying(unsigned long id);

    /// Nobody can accept any more what the character offered, nor the character what it was offered.
    void ForgetInvitations(Character& character);

    PlaySession& SessionOf(const Character& character);
    /// How many play, in all sessions together.
    std::size_t PlayerCount() const;
    /// Brings a character into a session: it learns its surroundings, the others see it.
    void Enter(Character& character, short session);
    void Leave(Character& character);
    void SendToSession(short session, const CNTPacket& packet, const Character* except = nullptr);

    /// The one in the character's session, alive; null when there is none.
    Monster* FindMonster(const Character& character, unsigned long id);
    /// Takes a dead monster out and brings another one some time later.
    void Respawn(short session, const Monster& dead);
    /// Lays something at the character's feet and tells the session.
    void Drop(Character& owner, const TItem& item, long count);
    void Drop(Character& owner, const TSkill& skill);
    void DropLoot(Character& finder, Monster& monster);

    PartyBook Parties;
    BarterBook Trades;

private:
    PlaySession& Session(short session);
    void Populate(short session);
    TWorldItem Lay(short session, const GroundItem& thing, const CNTVector& position);
    Monster MakeMonster(const MonsterKind& kind, const CNTVector& position);
    void ShowSurroundings(Character& character);

    Scheduler Schedule;
    std::map<std::string, std::unique_ptr<Account>> Accounts;
    std::map<std::string, Character*> Characters;
    std::map<unsigned long, Character*> CharactersByID;
    std::map<short, PlaySession> Sessions;
    unsigned short LastCharacterID = 0;
    unsigned long LastMonsterID;
    unsigned long LastItemID;
};

} // namespace Kesra
