#pragma once

#include "KesraNTC/base/CString.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/world/TObject.h"

#include <vector>

/// A player character, one's own or another player's.
class KESRANTC_API TAvatar : public TObject
{
public:
    /// As Init leaves it, of type TypeAvatar.
    TAvatar();
    /// An avatar of a default record that takes what assignment takes; dead-reckoning state 0, no last zone.
    TAvatar(const TAvatar& other);
    /// Takes everything over, so that an avatar stays what it is when its list grows.
    TAvatar(TAvatar&& other) noexcept = default;
    /// Copies everything but the type, the last zone and the dead-reckoning state, which stay, also when the
    /// other is a temporary. Inside a list these therefore belong to the place: erase, insert and sorting
    /// assign, and move the rest of an avatar without them.
    TAvatar& operator=(const TAvatar& other);
    ~TAvatar() override;

    /// Restores the defaults: numbers 0, zones -1, no name, not transparent, no appearance. The movement
    /// stays.
    void Init();

    /// The dead-reckoning state of the movement, which copying leaves out.
    void SetDRVectorState(DR_STATE state) { DR.SetDRState(state); }

    /// The animation the avatar is playing.
    short GetAniID() const { return AniID; }
    void SetAniID(short id) { AniID = id; }
    /// Whether the avatar is shown transparent.
    bool IsTransparent() const { return TransparentFlag; }
    void SetTransparentFlag(bool transparent) { TransparentFlag = transparent; }
    /// The template that the avatar is made from.
    short GetAvatarTemplateID() const { return AvatarTemplateID; }
    void SetAvatarTemplateID(short id) { AvatarTemplateID = id; }

    /// The character's name itself, not a copy.
    CString& GetNickname() { return Nickname; }
    void SetNickname(CString& name) { Nickname = name; }

    /// The appearance elements themselves, 32-bit values each, not a copy.
    std::vector<long>& GetAppearance() { return Appearance; }
    void SetAppearance(std::vector<long>& appearance) { Appearance = appearance; }
    /// Appearance element i, counted from 1. One that the list does not have reads as 0 and is not written.
    long GetAppearanceElement(int i) const;
    void SetAppearanceElement(int i, long v);

    /// The user the avatar belongs to, a 32-bit value.
    long GetUserIndex() const { return UserIndex; }
    void SetUserIndex(long index) { UserIndex = index; }
    /// The avatar's index among its user's avatars.
    short GetAvatarIndex() const { return AvatarIndex; }
    void SetAvatarIndex(short index) { AvatarIndex = index; }

    /// The kind of the weapon: the ten-thousands of appearance element 11, with its sign.
    int GetWeaponItemKind() const;

private:
    friend KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, TAvatar& avatar);

    bool HasAppearanceElement(int i) const;
    void ReadAppearance(CNTPacket& packet);

    long UserIndex = 0;
    short AvatarIndex = 0;
    CString Nickname;
    short AvatarTemplateID = 0;
    short AniID = 0;
    bool TransparentFlag = false;
    std::vector<long> Appearance;
};

/// Reads an avatar, 35 bytes besides its name and its appearance elements. Type, last zone, user index and
/// the movement beyond the ground position, heading and speed do not travel and stay.
KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, TAvatar& avatar);
