#include "Wire.h"

#include "KesraNTC/net/DateEncoding.h"
#include "KesraNTC/world/TPrivData.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>

namespace
{

void UpdateAll(TPrivData& data)
{
    data.UpdateHPRecovery();
    data.UpdateMPRecovery();
    data.UpdateMaxHP();
    data.UpdateMaxMP();
    data.UpdateMaxSP();
    data.UpdateSpiritPower();
    data.UpdateMagicPower();
    data.UpdateCurePower();
}

TPrivData Sample()
{
    TPrivData data;
    data.SetPower(10);
    data.SetIntellect(20);
    data.SetStaminar(30);
    data.SetDexterity(15);
    data.SetPlyometric(5);
    data.SetKI(8);
    data.SetLevel(12);
    data.SetDefReDivision(2);
    data.SetIntellectReDivision(3);
    return data;
}

TEST(PrivData, Defaults)
{
    TPrivData data;
    EXPECT_EQ(1, data.GetLevel());
    EXPECT_EQ(1, data.GetAtkReDivision());
    EXPECT_EQ(1, data.GetDefReDivision());
    EXPECT_EQ(1, data.GetIntellectReDivision());
    EXPECT_EQ(11, data.GetUseWeaponIndex());
    EXPECT_EQ(1, data.GetUseSkillGroup());
    EXPECT_EQ(1, data.GetMaxInventorySlot());
    EXPECT_EQ(1.0F, data.JewelryFactor1 * data.JewelryFactor2 * data.JewelryFactor3);
    EXPECT_EQ(0.0, static_cast<double>(data.GetDeleteAvatarDate()));
    for (short group = 1; group <= 4; ++group)
        EXPECT_EQ(0, data.GetSelectSkillIndex(group));

    UpdateAll(data);
    EXPECT_EQ(61, data.MaxHP);
    EXPECT_EQ(40, data.MaxMP);
    EXPECT_EQ(50, data.MaxSP);
    EXPECT_EQ(0, data.HPRecovery);
    EXPECT_EQ(0, data.MPRecovery);
    EXPECT_EQ(0.0F, data.SpiritPower + data.MagicPower + data.CurePower);
}

TEST(PrivData, DerivedValues)
{
    TPrivData data = Sample();
    UpdateAll(data);
    EXPECT_EQ(65, data.HPRecovery);
    EXPECT_EQ(28, data.MPRecovery);
    EXPECT_EQ(127, data.MaxHP);
    EXPECT_EQ(91, data.MaxMP);
    EXPECT_EQ(103, data.MaxSP);
    EXPECT_EQ(46.4F, data.SpiritPower);
    EXPECT_EQ(35.3F, data.MagicPower);
    EXPECT_EQ(27.2F, data.CurePower);

    data.PowerBonus = 1;
    data.IntellectBonus = 2;
    data.StaminarBonus = 3;
    data.DexterityBonus = 4;
    data.PlyometricBonus = 5;
    data.KIBonus = 6;
    data.UpdateParamByJewelry(1, 1, 1, 1.5F, 2);
    EXPECT_EQ(127, data.MaxHP);
    UpdateAll(data);
    EXPECT_EQ(72, data.HPRecovery);
    EXPECT_EQ(36, data.MPRecovery);
    EXPECT_EQ(202, data.MaxHP);
    EXPECT_EQ(200, data.MaxMP);
    EXPECT_EQ(109, data.MaxSP);
}

TEST(PrivData, DerivedIntegersKeepTheirLow16Bits)
{
    const float infinity = std::numeric_limits<float>::infinity();
    const struct {
        float Intellect;
        unsigned short Expected;
    } sums[] = {
        {70000, 4464},      {65535.9F, 65535}, {65536, 0},
        {-1.9F, 0xFFFF},    {-70000, 0xEE90},  {4295032832.0F, 0}, // 2^32 + 2^16
        {8589934592.0F, 0}, {1e30F, 0},        {-1e30F, 0},
        {infinity, 0},      {-infinity, 0},    {std::numeric_limits<float>::quiet_NaN(), 0},
        {33554436.0F, 4},
    };
    for (const auto& sum : sums) {
        TPrivData data;
        data.SetIntellect(sum.Intellect);
        UpdateAll(data);
        EXPECT_EQ(sum.Expected, data.MPRecovery) << sum.Intellect;
    }
    TPrivData data;
    data.SetPower(2 * (70000 - 61));
    data.UpdateMaxHP();
    EXPECT_EQ(4464, data.MaxHP);
}

TEST(PrivData, WeaponsChooseTheSkillGroup)
{
    TPrivData data;
    data.SetSelectSkillIndex(2, 300);
    const struct {
        short Weapon;
        int Group;
        short Skill;
    } weapons[] = {{12, 2, 300}, {23, 3, 0}, {-23, -3, 0}, {20, 0, 0}, {-1, -1, 0}, {19, 9, 0}, {5, 5, 0}};
    for (const auto& weapon : weapons) {
        data.SetUseWeaponIndex(weapon.Weapon);
        EXPECT_EQ(weapon.Weapon, data.GetUseWeaponIndex());
        EXPECT_EQ(weapon.Group, data.GetUseSkillGroup());
        EXPECT_EQ(weapon.Skill, data.GetUseSkillIndex()) << weapon.Weapon;
    }
}

TEST(PrivData, RefusesSkillsAndGroupsThatAreNone)
{
    TPrivData data;
    for (const short index : std::initializer_list<short>{100, 1000, 150}) {
        data.SetSelectSkillIndex(2, index);
        EXPECT_EQ(index, data.GetSelectSkillIndex(2));
    }
    for (const short index : std::initializer_list<short>{99, 1001, -1, -150, 1})
        data.SetSelectSkillIndex(2, index);
    for (const short group : std::initializer_list<short>{0, 5, -1}) {
        data.SetSelectSkillIndex(group, 150);
        EXPECT_EQ(0, data.GetSelectSkillIndex(group));
    }
    EXPECT_EQ(0, data.GetSelectSkillIndex(1));
    EXPECT_EQ(150, data.GetSelectSkillIndex(2));
    EXPECT_EQ(0, data.GetSelectSkillIndex(3));
    EXPECT_EQ(0, data.GetSelectSkillIndex(4));
    data.SetSelectSkillIndex(2, 0);
    EXPECT_EQ(0, data.GetSelectSkillIndex(2));
}

TEST(PrivData, InventorySlots)
{
    TPrivData data;
    data.SetMaxInventorySlot(9);
    EXPECT_EQ(4, data.GetMaxInventorySlot());
    data.SetMaxInventorySlot(-1);
    EXPECT_EQ(-1, data.GetMaxInventorySlot());
    const short slots[][2] = {{19, -1}, {20, 2}, {59, 2}, {60, 3}, {1, -1}};
    for (const auto& [level, expected] : slots) {
        data.SetMaxInventorySlot(-1);
        data.SetLevel(level);
        data.UpdateMaxInventorySlot();
        EXPECT_EQ(expected, data.GetMaxInventorySlot()) << level;
    }
}

CNTPacket SentPrivData()
{
    CNTPacket packet = Begun();
    packet << short{1} << 2.5F << 3.5F << 4.5F << 5.5F << 6.5F << 7.5F << short{8} << short{9} << short{10};
    packet << 11.5F << 12.5F << 13.5F << short{14} << 15 << -16L << short{23} << short{9};
    packet << COLEDateTime(36585.5) << short{21} << short{22} << short{-23} << short{24};
    return packet;
}

void ExpectWireFields(const TPrivData& data)
{
    EXPECT_EQ(1, data.GetParamPoint());
    EXPECT_EQ(2.5F, data.GetPower());
    EXPECT_EQ(3.5F, data.GetIntellect());
    EXPECT_EQ(4.5F, data.GetStaminar());
    EXPECT_EQ(5.5F, data.GetDexterity());
    EXPECT_EQ(6.5F, data.GetPlyometric());
    EXPECT_EQ(7.5F, data.GetKI());
    EXPECT_EQ(8, data.GetAtkReDivision());
    EXPECT_EQ(9, data.GetDefReDivision());
    EXPECT_EQ(10, data.GetIntellectReDivision());
    EXPECT_EQ(11.5F, data.GetHP());
    EXPECT_EQ(12.5F, data.GetMP());
    EXPECT_EQ(13.5F, data.GetSP());
    EXPECT_EQ(14, data.GetLevel());
    EXPECT_EQ(15, data.GetExp());
    EXPECT_EQ(-16, data.GetGold());
    EXPECT_EQ(23, data.GetUseWeaponIndex());
    EXPECT_EQ(9, data.GetMaxInventorySlot());
    EXPECT_EQ(36585.5, static_cast<double>(data.GetDeleteAvatarDate()));
    EXPECT_EQ(21, data.GetSelectSkillIndex(1));
    EXPECT_EQ(22, data.GetSelectSkillIndex(2));
    EXPECT_EQ(-23, data.GetSelectSkillIndex(3));
    EXPECT_EQ(24, data.GetSelectSkillIndex(4));
}

TEST(PrivData, IsReadFieldByFieldPastTheSetters)
{
    CNTPacket sent = SentPrivData();
    sent << 'x';
    CNTPacket packet = Received(sent);
    TPrivData data;
    data.SetChattingProhibitTime(5);
    data.KIBonus = 6;
    data.JewelryFactor4 = 7;
    data.MaxHP = 8;
    packet >> data;
    EXPECT_EQ(74, BytesRead(packet));
    ExpectWireFields(data);
    EXPECT_EQ(1, data.GetUseSkillGroup());
    EXPECT_EQ(5, data.GetChattingProhibitTime());
    EXPECT_EQ(6, data.KIBonus);
    EXPECT_EQ(7, data.JewelryFactor4);
    EXPECT_EQ(8, data.MaxHP);

    CNTPacket cut = Received(sent, 61);
    TPrivData partly;
    partly.SetSelectSkillIndex(1, 300);
    cut >> partly;
    EXPECT_EQ(9, partly.GetMaxInventorySlot());
    EXPECT_EQ(300, partly.GetSelectSkillIndex(1));
}

TEST(PrivData, CopyRules)
{
    CNTPacket packet = Received(SentPrivData());
    TPrivData source;
    packet >> source;
    source.SetUseWeaponIndex(23);
    source.SetChattingProhibitTime(31);
    source.PowerBonus = 32;
    source.KIBonus = 33;
    source.UpdateParamByJewelry(1.5F, 2.5F, 3.5F, 4.5F, 5.5F);
    UpdateAll(source);

    const TPrivData copy(source);
    ExpectWireFields(copy);
    EXPECT_EQ(3, copy.GetUseSkillGroup());
    EXPECT_EQ(1.5F, copy.JewelryFactor1);
    EXPECT_EQ(5.5F, copy.JewelryFactor5);
    EXPECT_EQ(0, copy.MaxHP + copy.MaxMP + copy.MaxSP + copy.HPRecovery + copy.MPRecovery);
    EXPECT_EQ(0.0F, copy.SpiritPower + copy.MagicPower + copy.CurePower);

    TPrivData assigned;
    assigned.MaxHP = 8;
    assigned.CurePower = 9;
    assigned = source;
    ExpectWireFields(assigned);
    EXPECT_EQ(1, assigned.GetUseSkillGroup());
    EXPECT_EQ(1.0F, assigned.JewelryFactor1);
    EXPECT_EQ(1.0F, assigned.JewelryFactor5);
    EXPECT_EQ(8, assigned.MaxHP);
    EXPECT_EQ(9.0F, assigned.CurePower);
    for (const TPrivData* data : {&copy, static_cast<const TPrivData*>(&assigned)}) {
        EXPECT_EQ(31, data->GetChattingProhibitTime());
        EXPECT_EQ(32, data->PowerBonus);
        EXPECT_EQ(33, data->KIBonus);
    }
}

TEST(PrivData, InitKeepsDateAndPowers)
{
    TPrivData data = Sample();
    data.SetDeleteAvatarDate(COLEDateTime(5.0));
    UpdateAll(data);
    data.Init();
    EXPECT_EQ(5.0, static_cast<double>(data.GetDeleteAvatarDate()));
    EXPECT_EQ(46.4F, data.SpiritPower);
    EXPECT_EQ(0, data.MaxHP);
    EXPECT_EQ(0, data.GetKI());
    EXPECT_EQ(1, data.GetLevel());
}

TEST(DateEncoding, TheValueTravelsAndBecomesValid)
{
    EXPECT_EQ((Bytes{0, 0, 0, 0, 0, 0, 0xF4, 0xBF}), WireForm(COLEDateTime(-1.25)));
    COLEDateTime invalid(2.0);
    invalid.SetStatus(COLEDateTime::invalid);
    CNTPacket sent = Begun();
    sent << invalid;
    CNTPacket packet = Received(sent);
    COLEDateTime read;
    read.SetStatus(COLEDateTime::null);
    packet >> read;
    EXPECT_EQ(COLEDateTime::valid, read.GetStatus());
    EXPECT_EQ(2.0, static_cast<double>(read));
    CNTPacket none = Received(sent, 0);
    COLEDateTime kept(7.0);
    none >> kept;
    EXPECT_EQ(7.0, static_cast<double>(kept));
}

} // namespace
