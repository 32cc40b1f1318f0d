#include "KesraNTC/world/TPrivData.h"

#include "KesraNTC/base/Trace.h"
#include "KesraNTC/base/private/Korean.h"
#include "KesraNTC/base/private/Truncate.h"
#include "KesraNTC/net/DateEncoding.h"

#include <algorithm>
#include <iterator>

using namespace Kesra;

namespace
{

constexpr short MostInventorySlots = 4;
constexpr short FirstSkillIndex = 100;
constexpr short LastSkillIndex = 1000;

// The formulas calculate in double precision with single-precision constants, as the server does.
constexpr double Single(float constant)
{
    return constant;
}

double WithBonus(int bonus, float attribute)
{
    return static_cast<double>(bonus) + static_cast<double>(attribute);
}

unsigned short LowWord(double value)
{
    return static_cast<unsigned short>(Truncate(value));
}

} // namespace

TPrivData::TPrivData()
{
    Init();
}

TPrivData::TPrivData(const TPrivData& other)
{
    CopyBase(other);
    UseSkillGroup = other.UseSkillGroup;
    UpdateParamByJewelry(other.JewelryFactor1, other.JewelryFactor2, other.JewelryFactor3,
                         other.JewelryFactor4, other.JewelryFactor5);
}

TPrivData& TPrivData::operator=(const TPrivData& other)
{
    if (this != &other)
        CopyBase(other);
    return *this;
}

TPrivData::~TPrivData() = default;

void TPrivData::CopyBase(const TPrivData& other)
{
    ParamPoint = other.ParamPoint;
    Power = other.Power;
    Intellect = other.Intellect;
    Staminar = other.Staminar;
    Dexterity = other.Dexterity;
    Plyometric = other.Plyometric;
    KI = other.KI;
    Level = other.Level;
    Exp = other.Exp;
    AtkReDivision = other.AtkReDivision;
    DefReDivision = other.DefReDivision;
    IntellectReDivision = other.IntellectReDivision;
    HP = other.HP;
    MP = other.MP;
    SP = other.SP;
    Gold = other.Gold;
    ChattingProhibitTime = other.ChattingProhibitTime;
    UseWeaponIndex = other.UseWeaponIndex;
    std::copy(std::begin(other.SelectSkillIndex), std::end(other.SelectSkillIndex), SelectSkillIndex);
    MaxInventorySlot = other.MaxInventorySlot;
    DeleteAvatarDate = other.DeleteAvatarDate;
    PowerBonus = other.PowerBonus;
    IntellectBonus = other.IntellectBonus;
    StaminarBonus = other.StaminarBonus;
    DexterityBonus = other.DexterityBonus;
    PlyometricBonus = other.PlyometricBonus;
    KIBonus = other.KIBonus;
}

void TPrivData::Init()
{
    ParamPoint = 0;
    Power = Intellect = Staminar = Dexterity = Plyometric = KI = 0;
    Level = 1;
    Exp = 0;
    AtkReDivision = DefReDivision = IntellectReDivision = 1;
    HP = MP = SP = 0;
    Gold = 0;
    ChattingProhibitTime = 0;
    SetUseWeaponIndex(11);
    std::fill(std::begin(SelectSkillIndex), std::end(SelectSkillIndex), short{0});
    MaxInventorySlot = 1;
    HPRecovery = MPRecovery = 0;
    MaxHP = MaxMP = MaxSP = 0;
    PowerBonus = IntellectBonus = StaminarBonus = DexterityBonus = PlyometricBonus = KIBonus = 0;
    UpdateParamByJewelry(1, 1, 1, 1, 1);
}

void TPrivData::SetUseWeaponIndex(short w)
{
    UseWeaponIndex = w;
    UseSkillGroup = w % 10;
}

void TPrivData::SetMaxInventorySlot(short n)
{
    MaxInventorySlot = std::min(n, MostInventorySlots);
}

void TPrivData::SetSelectSkillIndex(short group, short index)
{
    if (!IsSkillGroup(group)) {
        TRACE("없는 스킬 그룹이 들어왔다.  스킬그룹  %d\n"_949, group);
        return;
    }
    if (index != 0 && (index < FirstSkillIndex || index > LastSkillIndex)) {
        TRACE("잘못된 스킬인덱스이다.%d\n"_949, index);
        return;
    }
    SelectSkillIndex[group - 1] = index;
}

short TPrivData::GetSelectSkillIndex(short group) const
{
    return SkillOfGroup(group);
}

void TPrivData::UpdateParamByJewelry(float f1, float f2, float f3, float f4, float f5)
{
    JewelryFactor1 = f1;
    JewelryFactor2 = f2;
    JewelryFactor3 = f3;
    JewelryFactor4 = f4;
    JewelryFactor5 = f5;
}

void TPrivData::UpdateMaxInventorySlot()
{
    if (Level >= 60)
        SetMaxInventorySlot(3);
    else if (Level >= 20)
        SetMaxInventorySlot(2);
}

void TPrivData::UpdateHPRecovery()
{
    HPRecovery = LowWord(WithBonus(DexterityBonus, Dexterity) * Single(0.33333334F) +
                         2 * WithBonus(StaminarBonus, Staminar));
}

void TPrivData::UpdateMPRecovery()
{
    MPRecovery = LowWord(WithBonus(KIBonus, KI) + WithBonus(IntellectBonus, Intellect));
}

void TPrivData::UpdateMaxHP()
{
    const double points = (WithBonus(KIBonus, KI) + DefReDivision) * Single(0.4F) +
                          WithBonus(StaminarBonus, Staminar) * Single(1.7F) +
                          WithBonus(PowerBonus, Power) * 0.5 + Level * Single(0.6F) + 60;
    MaxHP = LowWord(points * JewelryFactor4);
}

void TPrivData::UpdateMaxMP()
{
    const double points = WithBonus(IntellectBonus, Intellect) * 1.9 + WithBonus(KIBonus, KI) * Single(0.6F) +
                          WithBonus(DexterityBonus, Dexterity) * Single(0.2F) + (Level * Single(0.4F) + 40) +
                          IntellectReDivision * Single(0.4F);
    MaxMP = LowWord(points * JewelryFactor5);
}

void TPrivData::UpdateMaxSP()
{
    MaxSP = LowWord(WithBonus(StaminarBonus, Staminar) * Single(1.8F) + 50);
}

void TPrivData::UpdateSpiritPower()
{
    SpiritPower =
        static_cast<float>(WithBonus(KIBonus, KI) * Single(0.8F) + 2 * WithBonus(IntellectBonus, Intellect));
}

void TPrivData::UpdateMagicPower()
{
    MagicPower = static_cast<float>(WithBonus(KIBonus, KI) * Single(1.6F) +
                                    WithBonus(PlyometricBonus, Plyometric) * 0.5 +
                                    WithBonus(IntellectBonus, Intellect));
}

void TPrivData::UpdateCurePower()
{
    CurePower =
        static_cast<float>(WithBonus(KIBonus, KI) * Single(0.9F) + WithBonus(IntellectBonus, Intellect));
}

CNTPacket& operator>>(CNTPacket& packet, TPrivData& data)
{
    packet >> data.ParamPoint;
    packet >> data.Power;
    packet >> data.Intellect;
    packet >> data.Staminar;
    packet >> data.Dexterity;
    packet >> data.Plyometric;
    packet >> data.KI;
    packet >> data.AtkReDivision;
    packet >> data.DefReDivision;
    packet >> data.IntellectReDivision;
    packet >> data.HP;
    packet >> data.MP;
    packet >> data.SP;
    packet >> data.Level;
    packet >> data.Exp;
    packet >> data.Gold;
    packet >> data.UseWeaponIndex;
    packet >> data.MaxInventorySlot;
    packet >> data.DeleteAvatarDate;
    for (short& index : data.SelectSkillIndex)
        packet >> index;
    return packet;
}
