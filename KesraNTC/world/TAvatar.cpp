#include "KesraNTC/world/TAvatar.h"

#include <cstddef>

namespace
{

constexpr int WeaponElement = 11;
constexpr long IdsPerItemKind = 10000;

} // namespace

TAvatar::TAvatar() : TObject(TypeAvatar) {}

TAvatar::TAvatar(const TAvatar& other) : TObject(TypeAvatar)
{
    *this = other;
}

TAvatar& TAvatar::operator=(const TAvatar& other)
{
    JoinedSessionID = other.JoinedSessionID;
    DR = other.DR;
    AvatarTemplateID = other.AvatarTemplateID;
    AniID = other.AniID;
    ID = other.ID;
    CurZoneID = other.CurZoneID;
    UserIndex = other.UserIndex;
    AvatarIndex = other.AvatarIndex;
    Nickname = other.Nickname;
    TransparentFlag = other.TransparentFlag;
    Appearance = other.Appearance;
    return *this;
}

TAvatar::~TAvatar() = default;

void TAvatar::Init()
{
    TObject::Init();
    Type = TypeAvatar;
    UserIndex = 0;
    AvatarIndex = 0;
    AvatarTemplateID = 0;
    Nickname.Empty();
    AniID = 0;
    TransparentFlag = false;
    Appearance.clear();
}

bool TAvatar::HasAppearanceElement(int i) const
{
    return i >= 1 && static_cast<std::size_t>(i) <= Appearance.size();
}

long TAvatar::GetAppearanceElement(int i) const
{
    return HasAppearanceElement(i) ? Appearance[static_cast<std::size_t>(i) - 1] : 0;
}

void TAvatar::SetAppearanceElement(int i, long v)
{
    if (HasAppearanceElement(i))
        Appearance[static_cast<std::size_t>(i) - 1] = v;
}

int TAvatar::GetWeaponItemKind() const
{
    return static_cast<int>(GetAppearanceElement(WeaponElement) / IdsPerItemKind);
}

void TAvatar::ReadAppearance(CNTPacket& packet)
{
    if (packet.IsAtEnd())
        return;
    short count = 0;
    packet >> count;
    Appearance.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    for (long& element : Appearance) {
        if (packet.IsAtEnd())
            return;
        packet >> element;
    }
}

CNTPacket& operator>>(CNTPacket& packet, TAvatar& avatar)
{
    packet >> avatar.JoinedSessionID;
    packet >> avatar.ID;
    packet >> avatar.CurZoneID;
    packet >> avatar.AvatarIndex;
    packet >> avatar.AvatarTemplateID;
    packet >> avatar.DR;
    packet >> avatar.AniID;
    packet >> avatar.Nickname;
    packet >> avatar.TransparentFlag;
    avatar.ReadAppearance(packet);
    return packet;
}
