#pragma once

#include "server/messages/ResultCodes.h"
#include "server/network/Link.h"
#include "server/world/Catalogue.h"

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/world/TItem.h"
#include "KesraNTC/world/TPrivData.h"
#include "KesraNTC/world/TSkill.h"
#include "KesraNTC/world/WorldObjects.h"

#include <chrono>
#include <string>
#include <vector>

namespace Kesra
{

struct Party;

/// An avatar with all that the server knows of it. Characters live as long as the world.
///
/// Indexes: of an item 1 to 11 for what is worn, bag x 1000 + place for the rest; of a skill 100 to 1000.
/// A list holds no index twice, and every count is at least 1.
class Character
{
public:
    Character(unsigned short objectID, long userIndex, short avatarIndex, const std::string& name,
              short avatarTemplate);

    std::string Name();
    unsigned long ID() const { return Avatar.GetID(); }
    /// The object ID as the 16-bit number that some messages carry.
    short ShortID() const { return static_cast<short>(Avatar.GetID()); }
    short Session() const { return Avatar.GetJoinedSessionID(); }
    bool IsPlaying() const { return Player != nullptr && Session() != 0; }
    CNTVector Position() { return Avatar.GetDRVector()->GetPos(); }
    void SetPosition(const CNTVector& position);
    /// Sends to whoever plays the avatar, if anybody does.
    void Send(CNTPacket packet);

    TItem* FindItem(short index);
    /// Adds to a stack of the same kind or to a free place; null when neither is there.
    TItem* AddItem(long id, short option, long count);
    /// Takes count of the item away; at 0 the item is gone.
    void RemoveItem(short index, long count);
    bool HasRoomFor(std::size_t items) const;
    /// True for the places the avatar may put something: worn ones and those of its bags.
    bool IsPlace(short index) const;
    /// Moves an item to a free place.
    void MoveItem(TItem& item, short index);

    TSkill* FindSkill(short index);
    /// Done when a skill may be put at the index, or why not.
    Result CheckFreeSkillIndex(short index);
    /// Puts a skill at a free index, with 0 at the first one; null when there is no room.
    TSkill* AddSkill(long id, long experience, short index = 0);
    /// Moves a skill to a free index, chosen ones included.
    void MoveSkill(TSkill& skill, short index);
    void RemoveSkill(short index);
    bool HasRoomForSkills(std::size_t skills) const;

    bool Pay(long gold);
    void Earn(long gold);
    /// Adds experience; true when it made the level rise.
    bool Learn(int experience);
    void SetLevel(short level);
    /// Recomputes what follows from attributes, level and jewels.
    void UpdateDerived();
    void RestorePoints();
    short Damage();
    short Protection();

    TAvatar Avatar;
    TPrivData Priv;
    std::vector<TItem> Items;
    std::vector<TSkill> Skills;
    Link* Player = nullptr; ///< the connection that plays the avatar
    bool Dead = false;
    std::chrono::steady_clock::time_point SilencedUntil{};
    Kesra::Party* Party = nullptr;
    unsigned long InvitedBy = 0; ///< object ID of who asked the avatar into a party

private:
    short FreeIndex() const;
    short NextTempUUID();
    void ShowWorn(short place, long id);

    short LastTempUUID = 0;
};

} // namespace Kesra
