#include "server/messages/Writers.h"

#include <cstring>

namespace Kesra
{
namespace
{

/// The packet class leaves packets of this number unscrambled as it writes them.
constexpr unsigned short UnscrambledNumber = 747;

} // namespace

CNTPacket BeginMessage(MessageNumber number)
{
    // Clients read the list of game servers without unscrambling it.
    const unsigned short begun =
        number == SC_GS_LIST ? UnscrambledNumber : static_cast<unsigned short>(number);
    CNTPacket packet(CNTPacket::Unzeroed{});
    packet << begun << static_cast<unsigned short>(0);
    return packet;
}

void FinishMessage(CNTPacket& packet, MessageNumber number)
{
    const auto word = static_cast<unsigned short>(number);
    std::memcpy(packet.GetBuf(), &word, sizeof word);
}

void Put(CNTPacket& packet, Result result)
{
    packet << static_cast<unsigned long>(result);
}

void Put(CNTPacket& packet, const CString& text)
{
    packet.WriteString(text);
}

void Put(CNTPacket& packet, const std::string& text)
{
    packet.WriteString(text.c_str());
}

void Put(CNTPacket& packet, TAvatar avatar)
{
    packet << avatar.GetJoinedSessionID();
    packet << avatar.GetID();
    packet << avatar.GetCurZoneID();
    packet << avatar.GetAvatarIndex();
    packet << avatar.GetAvatarTemplateID();
    packet << *avatar.GetDRVector();
    packet << avatar.GetAniID();
    Put(packet, avatar.GetNickname());
    packet << avatar.IsTransparent();
    Put(packet, avatar.GetAppearance());
}

void Put(CNTPacket& packet, TMonster monster)
{
    packet << monster.GetID();
    packet << monster.GetCurZoneID();
    packet << monster.GetMonsterTemplateID();
    packet << *monster.GetDRVector();
    packet << monster.GetAniID();
    packet << monster.GetMonHP();
}

void Put(CNTPacket&, const TNPC&)
{
    // A non-player character has no bytes; only how many there are travels.
}

void Put(CNTPacket& packet, TWorldItem item)
{
    packet << item.GetID();
    packet << item.GetCurZoneID();
    packet << *item.GetDRVector();
    packet << item.GetWorldItemID();
    packet << item.GetWorldItemExp();
    packet << item.GetWorldItemOptionID();
}

void Put(CNTPacket& packet, const TPrivData& data)
{
    packet << data.GetParamPoint();
    packet << data.GetPower();
    packet << data.GetIntellect();
    packet << data.GetStaminar();
    packet << data.GetDexterity();
    packet << data.GetPlyometric();
    packet << data.GetKI();
    packet << data.GetAtkReDivision();
    packet << data.GetDefReDivision();
    packet << data.GetIntellectReDivision();
    packet << data.GetHP();
    packet << data.GetMP();
    packet << data.GetSP();
    packet << data.GetLevel();
    packet << data.GetExp();
    packet << data.GetGold();
    packet << data.GetUseWeaponIndex();
    packet << data.GetMaxInventorySlot();
    packet << data.GetDeleteAvatarDate();
    for (short group = 1; group <= 4; ++group)
        packet << data.GetSelectSkillIndex(group);
}

} // namespace Kesra
