#include "server/world/Character.h"

#include <algorithm>

namespace Kesra
{
namespace
{

constexpr float StartingAttribute = 10.0F;
constexpr short ParamPointsPerLevel = 3;
constexpr int ParamPointLimit = 1000;
constexpr int ExperiencePerLevel = 100;
constexpr short FirstSkillIndex = 100;
constexpr short LastSkillIndex = 1000;
constexpr std::size_t SkillLimit = 60;

bool Stacks(long id)
{
    const ItemKind* kind = FindItemKind(id);
    return kind != nullptr && (kind->Use == ItemUse::Potion || kind->Use == ItemUse::Stone);
}

} // namespace

Character::Character(unsigned short objectID, long userIndex, short avatarIndex, const std::string& name,
                     short avatarTemplate)
{
    CString nickname(name.c_str());
    std::vector<long> appearance(WornPlaces);
    Avatar.SetID(objectID);
    Avatar.SetUserIndex(userIndex);
    Avatar.SetAvatarIndex(avatarIndex);
    Avatar.SetNickname(nickname);
    Avatar.SetAvatarTemplateID(avatarTemplate);
    Avatar.SetAppearance(appearance);
    Priv.SetPower(StartingAttribute);
    Priv.SetIntellect(StartingAttribute);
    Priv.SetStaminar(StartingAttribute);
    Priv.SetDexterity(StartingAttribute);
    Priv.SetPlyometric(StartingAttribute);
    Priv.SetKI(StartingAttribute);
    Priv.SetParamPoint(ParamPointsPerLevel);
    Priv.SetGold(StartingGold);
    UpdateDerived();
    RestorePoints();
}

std::string Character::Name()
{
    return static_cast<const char*>(Avatar.GetNickname());
}

void Character::SetPosition(const CNTVector& position)
{
    CNTVector copy = position;
    Avatar.GetDRVector()->SetPos(copy);
}

void Character::Send(CNTPacket packet)
{
    if (Player != nullptr)
        Player->Send(packet.GetBuf(), packet.GetBufSize());
}

TItem* Character::FindItem(short index)
{
    const auto found = std::find_if(Items.begin(), Items.end(),
                                    [=](const TItem& item) { return item.GetItemIndex() == index; });
    return found == Items.end() ? nullptr : &*found;
}

TItem* Character::AddItem(long id, short option, long count)
{
    for (TItem& item : Items) {
        const bool same = Stacks(id) && item.GetItemID() == id && item.GetItemOptionID() == option;
        if (same && item.GetItemSlotIndex() != 0 && item.GetItemCount() <= StackLimit - count) {
            item.SetItemCount(item.GetItemCount() + count);
            return &item;
        }
    }
    const short index = FreeIndex();
    if (index == 0)
        return nullptr;
    TItem item;
    item.SetUserIndex(Avatar.GetUserIndex());
    item.SetAvatarIndex(Avatar.GetAvatarIndex());
    item.SetItemIndex(index);
    item.SetItemID(id);
    item.SetItemOptionID(option);
    item.SetItemCount(count);
    item.SetTempUUID(NextTempUUID());
    Items.push_back(item);
    return &Items.back();
}

void Character::RemoveItem(short index, long count)
{
    TItem* item = FindItem(index);
    if (item == nullptr)
        return;
    if (item->GetItemCount() > count) {
        item->SetItemCount(item->GetItemCount() - count);
        return;
    }
    ShowWorn(index, 0);
    Items.erase(Items.begin() + (item - Items.data()));
}

bool Character::HasRoomFor(std::size_t items) const
{
    const auto bags = static_cast<std::size_t>(Priv.GetMaxInventorySlot());
    const auto inBags = std::count_if(Items.begin(), Items.end(),
                                      [](const TItem& item) { return item.GetItemSlotIndex() > 0; });
    return static_cast<std::size_t>(inBags) + items <= bags * BagPlaces;
}

bool Character::IsPlace(short index) const
{
    if (index < BagSize)
        return index >= 1 && index <= WornPlaces;
    return index / BagSize <= Priv.GetMaxInventorySlot() && index % BagSize < BagPlaces;
}

void Character::MoveItem(TItem& item, short index)
{
    ShowWorn(item.GetItemIndex(), 0);
    item.SetItemIndex(index);
    ShowWorn(index, item.GetItemID());
}

TSkill* Character::FindSkill(short index)
{
    const auto found = std::find_if(Skills.begin(), Skills.end(),
                                    [=](const TSkill& skill) { return skill.GetSkillIndex() == index; });
    return found == Skills.end() ? nullptr : &*found;
}

Result Character::CheckFreeSkillIndex(short index)
{
    if (index < FirstSkillIndex || index > LastSkillIndex)
        return Result::BadArgument;
    return FindSkill(index) != nullptr ? Result::PlaceTaken : Result::Done;
}

TSkill* Character::AddSkill(long id, long experience, short index)
{
    if (!HasRoomForSkills(1))
        return nullptr;
    if (index == 0) {
        index = FirstSkillIndex;
        while (FindSkill(index) != nullptr)
            ++index;
    }
    TSkill skill;
    skill.SetUserIndex(Avatar.GetUserIndex());
    skill.SetAvatarIndex(Avatar.GetAvatarIndex());
    skill.SetSkillIndex(index);
    skill.SetSkillID(id);
    skill.SetSkillExp(experience);
    skill.SetTempUUID(NextTempUUID());
    Skills.push_back(skill);
    return &Skills.back();
}

void Character::MoveSkill(TSkill& skill, short index)
{
    for (short group = 1; group <= 4; ++group)
        if (Priv.GetSelectSkillIndex(group) == skill.GetSkillIndex())
            Priv.SetSelectSkillIndex(group, index);
    skill.SetSkillIndex(index);
}

void Character::RemoveSkill(short index)
{
    for (short group = 1; group <= 4; ++group)
        if (Priv.GetSelectSkillIndex(group) == index)
            Priv.SetSelectSkillIndex(group, 0);
    const auto gone = [=](const TSkill& skill) { return skill.GetSkillIndex() == index; };
    Skills.erase(std::remove_if(Skills.begin(), Skills.end(), gone), Skills.end());
}

bool Character::HasRoomForSkills(std::size_t skills) const
{
    return Skills.size() + skills <= SkillLimit;
}

bool Character::Pay(long gold)
{
    if (gold < 0 || gold > Priv.GetGold())
        return false;
    Priv.SetGold(Priv.GetGold() - gold);
    return true;
}

void Character::Earn(long gold)
{
    Priv.SetGold(gold > GoldLimit - Priv.GetGold() ? GoldLimit : Priv.GetGold() + gold);
}

bool Character::Learn(int experience)
{
    Priv.SetExp(Priv.GetExp() + experience);
    const int needed = ExperiencePerLevel * Priv.GetLevel();
    if (Priv.GetExp() < needed || Priv.GetLevel() >= LevelLimit) {
        Priv.SetExp(std::min(Priv.GetExp(), needed));
        return false;
    }
    Priv.SetExp(Priv.GetExp() - needed);
    SetLevel(static_cast<short>(Priv.GetLevel() + 1));
    return true;
}

void Character::SetLevel(short level)
{
    const int gained = std::max(0, level - Priv.GetLevel());
    Priv.SetLevel(level);
    Priv.SetParamPoint(
        static_cast<short>(std::min(ParamPointLimit, Priv.GetParamPoint() + gained * ParamPointsPerLevel)));
    Priv.UpdateMaxInventorySlot();
    UpdateDerived();
    RestorePoints();
}

void Character::UpdateDerived()
{
    Priv.UpdateHPRecovery();
    Priv.UpdateMPRecovery();
    Priv.UpdateMaxHP();
    Priv.UpdateMaxMP();
    Priv.UpdateMaxSP();
    Priv.UpdateSpiritPower();
    Priv.UpdateMagicPower();
    Priv.UpdateCurePower();
}

void Character::RestorePoints()
{
    Priv.SetHP(static_cast<float>(Priv.MaxHP));
    Priv.SetMP(static_cast<float>(Priv.MaxMP));
    Priv.SetSP(static_cast<float>(Priv.MaxSP));
    Dead = false;
}

short Character::Damage()
{
    const TItem* weapon = FindItem(WeaponPlace);
    const ItemKind* kind = weapon != nullptr ? FindItemKind(weapon->GetItemID()) : nullptr;
    const int armed = kind != nullptr ? kind->Strength + weapon->GetItemOptionID() : 0;
    return static_cast<short>(armed + static_cast<int>(Priv.GetPower()) / 2 + Priv.GetLevel());
}

short Character::Protection()
{
    int protection = 0;
    for (const TItem& item : Items) {
        const ItemKind* kind = FindItemKind(item.GetItemID());
        if (item.GetItemSlotIndex() == 0 && kind != nullptr && kind->Use == ItemUse::Clothes)
            protection += kind->Strength + item.GetItemOptionID();
    }
    return static_cast<short>(protection);
}

short Character::FreeIndex() const
{
    for (short bag = 1; bag <= Priv.GetMaxInventorySlot(); ++bag) {
        for (short place = 0; place < BagPlaces; ++place) {
            const auto index = static_cast<short>(bag * BagSize + place);
            const auto taken = [=](const TItem& item) { return item.GetItemIndex() == index; };
            if (std::none_of(Items.begin(), Items.end(), taken))
                return index;
        }
    }
    return 0;
}

short Character::NextTempUUID()
{
    LastTempUUID = LastTempUUID == 32767 ? static_cast<short>(1) : static_cast<short>(LastTempUUID + 1);
    return LastTempUUID;
}

/// The others see what is worn in the appearance, one element per place.
void Character::ShowWorn(short place, long id)
{
    if (place >= 1 && place <= WornPlaces)
        Avatar.SetAppearanceElement(place, id);
}

} // namespace Kesra
