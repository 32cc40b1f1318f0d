#pragma once

#include "server/messages/ResultCodes.h"

#include <list>
#include <string>
#include <vector>

namespace Kesra
{

class Character;

/// Characters that play together; the first one is the boss. A party has at least two members.
struct Party {
    std::vector<Character*> Members;

    bool IsBoss(const Character& character) const { return Members.front() == &character; }
};

/// All parties. Every change is told to the members.
class PartyBook
{
public:
    Result Invite(Character& boss, Character* invited);
    /// The answer to `inviter`, who is null when it is gone.
    Result Answer(Character& invited, Character* inviter, bool accepted);
    Result Leave(Character& member);
    Result Expel(Character& boss, Character* member);
    Result Entrust(Character& boss, Character* member);

private:
    void Join(Character& inviter, Character& invited);
    void Remove(Character& member);

    std::list<Party> Parties;
};

} // namespace Kesra
