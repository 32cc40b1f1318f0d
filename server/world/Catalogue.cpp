#include "server/world/Catalogue.h"

#include <algorithm>
#include <array>

namespace Kesra
{
namespace
{

constexpr std::array Items{
    ItemKind{110001, ItemUse::Weapon, 100, 10}, ItemKind{120001, ItemUse::Weapon, 120, 12},
    ItemKind{130001, ItemUse::Weapon, 140, 14}, ItemKind{140001, ItemUse::Weapon, 160, 16},
    ItemKind{20001, ItemUse::Clothes, 40, 1},   ItemKind{20002, ItemUse::Clothes, 40, 1},
    ItemKind{20003, ItemUse::Clothes, 40, 2},   ItemKind{20004, ItemUse::Clothes, 40, 2},
    ItemKind{20005, ItemUse::Clothes, 40, 1},   ItemKind{70001, ItemUse::Potion, 5, 50},
    ItemKind{70002, ItemUse::Potion, 8, 100},   ItemKind{80001, ItemUse::Stone, 20, 1},
    ItemKind{90001, ItemUse::Jewel, 60, 10},    ItemKind{90002, ItemUse::Jewel, 90, 20},
};

constexpr std::array Skills{
    SkillKind{101, 50, 5, 15}, SkillKind{102, 80, 8, 25}, SkillKind{201, 50, 5, 15},
    SkillKind{301, 50, 5, 15}, SkillKind{401, 50, 5, 15},
};

constexpr std::array Monsters{
    MonsterKind{1, 60, 4, 40, 70001},
    MonsterKind{2, 90, 6, 70, 80001},
    MonsterKind{3, 150, 9, 120, 90001},
};

template <class List, class Matches> auto FindIn(const List& list, Matches matches)
{
    const auto found = std::find_if(list.begin(), list.end(), matches);
    return found == list.end() ? nullptr : &*found;
}

} // namespace

const ItemKind* FindItemKind(long id)
{
    return FindIn(
        Items, [id](const ItemKind& kind) { return kind.ID == id; });
}

const SkillKind* FindSkillKind(long id)
{
    return FindIn(
        Skills, [id](const SkillKind& kind) { return kind.ID == id; });
}

const MonsterKind* FindMonsterKind(short monsterTemplate)
{
    return FindIn(
        Monsters, [=](const MonsterKind& kind) { return kind.Template == monsterTemplate; });
}

} // namespace Kesra
