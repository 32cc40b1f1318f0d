#pragma once

#include "KesraNTC/base/COLEDateTime.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"

/// What only the owner of an avatar sees of it, and the values derived from that. Nothing is recomputed by
/// itself: the game calls the Update methods after it changed what they depend on. One thread at a time.
class KESRANTC_API TPrivData
{
public:
    static constexpr int SkillGroups = 4; ///< skill groups are numbered from 1 to this

    /// A record as Init leaves it, with the derived values 0 and the default date.
    TPrivData();
    /// Copies everything but the eight derived values, which are 0.
    TPrivData(const TPrivData& other);
    /// Takes everything over, so that a record stays what it is when its list grows.
    TPrivData(TPrivData&& other) noexcept = default;
    /// Copies everything but the eight derived values, the skill group in use and the five factors, which
    /// stay.
    TPrivData& operator=(const TPrivData& other);
    virtual ~TPrivData();

    /// Level, re-divisions and inventory slots 1, weapon 11 in skill group 1, factors 1.0, all else 0. The
    /// date of deletion and the three powers stay.
    void Init();

    /// Parameter points.
    short GetParamPoint() const { return ParamPoint; }
    void SetParamPoint(short points) { ParamPoint = points; }

    // The six base attributes.
    float GetPower() const { return Power; }
    void SetPower(float power) { Power = power; }
    float GetIntellect() const { return Intellect; }
    void SetIntellect(float intellect) { Intellect = intellect; }
    float GetStaminar() const { return Staminar; }
    void SetStaminar(float staminar) { Staminar = staminar; }
    float GetDexterity() const { return Dexterity; }
    void SetDexterity(float dexterity) { Dexterity = dexterity; }
    float GetPlyometric() const { return Plyometric; }
    void SetPlyometric(float plyometric) { Plyometric = plyometric; }
    float GetKI() const { return KI; }
    void SetKI(float ki) { KI = ki; }

    /// The level, 1 in a fresh record.
    short GetLevel() const { return Level; }
    void SetLevel(short level) { Level = level; }
    /// Experience.
    int GetExp() const { return Exp; }
    void SetExp(int exp) { Exp = exp; }
    /// What the ki system gives to attack, defence and intellect.
    short GetAtkReDivision() const { return AtkReDivision; }
    void SetAtkReDivision(short value) { AtkReDivision = value; }
    short GetDefReDivision() const { return DefReDivision; }
    void SetDefReDivision(short value) { DefReDivision = value; }
    short GetIntellectReDivision() const { return IntellectReDivision; }
    void SetIntellectReDivision(short value) { IntellectReDivision = value; }

    // The current points; their maxima are derived values.
    float GetHP() const { return HP; }
    void SetHP(float hp) { HP = hp; }
    float GetMP() const { return MP; }
    void SetMP(float mp) { MP = mp; }
    float GetSP() const { return SP; }
    void SetSP(float sp) { SP = sp; }

    /// A 32-bit value, as the chatting prohibition time.
    long GetGold() const { return Gold; }
    void SetGold(long gold) { Gold = gold; }
    long GetChattingProhibitTime() const { return ChattingProhibitTime; }
    void SetChattingProhibitTime(long time) { ChattingProhibitTime = time; }
    /// The date on which the avatar will be deleted.
    COLEDateTime GetDeleteAvatarDate() const { return DeleteAvatarDate; }
    void SetDeleteAvatarDate(COLEDateTime date) { DeleteAvatarDate = date; }

    /// The weapon in use; setting it makes its last digit, with its sign, the skill group in use.
    short GetUseWeaponIndex() const { return UseWeaponIndex; }
    void SetUseWeaponIndex(short w);
    int GetUseSkillGroup() const { return UseSkillGroup; }
    /// Inventory slots the avatar may use; setting more than 4 stores 4.
    short GetMaxInventorySlot() { return MaxInventorySlot; }
    short GetMaxInventorySlot() const { return MaxInventorySlot; }
    void SetMaxInventorySlot(short n);

    /// Chooses the skill of a group: 0 for none or 100 to 1000. Another skill, or another group than 1 to 4,
    /// changes nothing.
    void SetSelectSkillIndex(short group, short index);
    /// The skill chosen for a group; 0 for another group than 1 to 4.
    short GetSelectSkillIndex(short group) const;
    /// The skill chosen for the group in use; 0 when that is not 1 to 4.
    short GetUseSkillIndex() const { return SkillOfGroup(UseSkillGroup); }

    /// Sets the five factors; nothing is recomputed.
    void UpdateParamByJewelry(float f1, float f2, float f3, float f4, float f5);
    /// 2 slots from level 20 and 3 from level 60 on; below level 20 the slots stay.
    void UpdateMaxInventorySlot();

    // Each recomputes the derived value of its name from attributes, bonuses, level, re-divisions and
    // factors. The 16-bit ones keep the low 16 bits of the result cut toward zero; a result that 64 bits
    // cannot hold, or that is no number, gives 0.
    void UpdateHPRecovery();
    void UpdateMPRecovery();
    void UpdateMaxHP();
    void UpdateMaxMP();
    void UpdateMaxSP();
    void UpdateSpiritPower();
    void UpdateMagicPower();
    void UpdateCurePower();

private:
    friend KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, TPrivData& data);

    static bool IsSkillGroup(int group) { return group >= 1 && group <= SkillGroups; }
    short SkillOfGroup(int group) const
    {
        return IsSkillGroup(group) ? SelectSkillIndex[group - 1] : short{0};
    }
    void CopyBase(const TPrivData& other);

    short ParamPoint;
    float Power;
    float Intellect;
    float Staminar;
    float Dexterity;
    float Plyometric;
    float KI;
    short Level;
    int Exp;
    short AtkReDivision;
    short DefReDivision;
    short IntellectReDivision;
    float HP;
    float MP;
    float SP;
    long Gold;
    long ChattingProhibitTime;
    short UseWeaponIndex;
    int UseSkillGroup;
    short SelectSkillIndex[SkillGroups];
    short MaxInventorySlot;
    COLEDateTime DeleteAvatarDate;

public:
    // The derived values, written by the Update methods alone.
    unsigned short HPRecovery = 0;
    unsigned short MPRecovery = 0;
    unsigned short MaxHP = 0;
    unsigned short MaxMP = 0;
    unsigned short MaxSP = 0;
    float SpiritPower = 0;
    float MagicPower = 0;
    float CurePower = 0;

    // Whole points that every formula adds to the attribute of the same name; the game fills them.
    int PowerBonus;
    int IntellectBonus;
    int StaminarBonus;
    int DexterityBonus;
    int PlyometricBonus;
    int KIBonus;

    // Factor 4 scales MaxHP and factor 5 MaxMP; the others are kept for the game.
    float JewelryFactor1;
    float JewelryFactor2;
    float JewelryFactor3;
    float JewelryFactor4;
    float JewelryFactor5;
};

/// Reads a record, 74 bytes, through none of the setters' rules. Skill group in use, chatting prohibition
/// time, bonuses, factors and derived values do not travel and stay.
KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, TPrivData& data);
