#pragma once

#include "KesraNTC/base/CString.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"

#include <utility>

/// A skill that an avatar has learnt. A plain value that checks nothing; one thread at a time.
class KESRANTC_API TSkill
{
public:
    /// Everything 0 or empty.
    TSkill() = default;
    TSkill(const TSkill&) = default;
    TSkill& operator=(const TSkill&) = default;
    virtual ~TSkill();

    /// Everything 0 or empty but the temporary identifier, which stays.
    void Init();

    /// The user whose avatar has the skill, a 32-bit value.
    long GetUserIndex() const { return UserIndex; }
    void SetUserIndex(long index) { UserIndex = index; }
    short GetAvatarIndex() const { return AvatarIndex; }
    void SetAvatarIndex(short index) { AvatarIndex = index; }
    CString GetSkillUUID() const { return SkillUUID; }
    void SetSkillUUID(CString uuid) { SkillUUID = std::move(uuid); }
    /// The temporary identifier, which travels in place of the UUID.
    short GetTempUUID() const { return TempUUID; }
    void SetTempUUID(short uuid) { TempUUID = uuid; }
    short GetSkillIndex() const { return SkillIndex; }
    void SetSkillIndex(short index) { SkillIndex = index; }
    /// Which skill it is, a 32-bit value.
    long GetSkillID() const { return SkillID; }
    void SetSkillID(long id) { SkillID = id; }
    /// The experience gathered in it, a 32-bit value.
    long GetSkillExp() const { return SkillExp; }
    void SetSkillExp(long exp) { SkillExp = exp; }

private:
    friend KESRANTC_API CNTPacket& operator<<(CNTPacket& packet, const TSkill& skill);
    friend KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, TSkill& skill);

    long UserIndex = 0;
    short AvatarIndex = 0;
    CString SkillUUID;
    short TempUUID = 0;
    short SkillIndex = 0;
    long SkillID = 0;
    long SkillExp = 0;
};

/// The wire form, 12 bytes; user, avatar index and UUID do not travel and stay.
KESRANTC_API CNTPacket& operator<<(CNTPacket& packet, const TSkill& skill);
KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, TSkill& skill);
