#pragma once

namespace Kesra
{

/// The world's fixed facts. All IDs are this server's own.
constexpr short SessionCount = 8; ///< play sessions are numbered from 1
constexpr short ZoneCount = 4;    ///< zones of a session are numbered from 1
constexpr short AvatarsPerAccount = 4;
constexpr short WornPlaces = 11; ///< item indexes 1 to 11 are worn; place 11 is the weapon
constexpr short WeaponPlace = 11;
constexpr short BagSize = 1000; ///< item indexes of bag n start at n x 1000
constexpr short BagPlaces = 24; ///< of which this many are used
constexpr long StackLimit = 9999;
constexpr long GoldLimit = 2'000'000'000;
constexpr short LevelLimit = 100;
constexpr short OptionLimit = 9; ///< how far an item can be upgraded
constexpr float PositionLimit = 100'000.0F;
constexpr long StartingGold = 500;
constexpr long RepairPrice = 10;

enum class ItemUse { Weapon, Clothes, Potion, Stone, Jewel, SkillBook };

struct ItemKind {
    long ID;
    ItemUse Use;
    long Price;
    short Strength; ///< damage of a weapon, protection of clothes, points a potion restores
};

/// The kind of an item; null for an ID that does not exist.
const ItemKind* FindItemKind(long id);

struct SkillKind {
    long ID; ///< its hundreds are the skill group, 1 to 4
    long Price;
    float Cost; ///< MP per use
    short Strength;
};

const SkillKind* FindSkillKind(long id);
constexpr short GroupOfSkill(long id)
{
    return static_cast<short>(id / 100);
}

/// A skill that lies on the ground is a book: an item of its own ID.
constexpr long SkillBookBase = 900'000;

struct MonsterKind {
    short Template;
    float HP;
    short Damage;
    int Experience;
    long Loot; ///< the item it drops
};

const MonsterKind* FindMonsterKind(short monsterTemplate);

} // namespace Kesra
