#pragma once

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/world/TObject.h"

/// A monster.
class KESRANTC_API TMonster : public TObject
{
public:
    /// As Init leaves it, of type TypeMonster.
    TMonster();
    /// A monster of a default record that takes what assignment takes.
    TMonster(const TMonster& other);
    /// Takes everything over, so that a monster stays what it is when its list grows.
    TMonster(TMonster&& other) noexcept = default;
    /// Copies movement (but the dead-reckoning state), hit points, template, animation, identifier and
    /// current zone. Session, type, last zone and dead-reckoning state stay, also when the other is a
    /// temporary. Inside a list these therefore belong to the place: erase, insert and sorting assign, and
    /// move the rest of a monster without them.
    TMonster& operator=(const TMonster& other);
    ~TMonster() override;

    /// Restores the defaults: numbers 0, zones -1. The movement stays.
    void Init();

    /// The dead-reckoning state of the movement, which copying leaves out.
    void SetDRVectorState(DR_STATE state) { DR.SetDRState(state); }

    /// Which kind of monster it is.
    short GetMonsterTemplateID() const { return MonsterTemplateID; }
    void SetMonsterTemplateID(short id) { MonsterTemplateID = id; }
    /// The animation the monster is playing.
    short GetAniID() const { return AniID; }
    void SetAniID(short id) { AniID = id; }
    /// The monster's hit points.
    float GetMonHP() const { return MonHP; }
    void SetMonHP(float hp) { MonHP = hp; }

private:
    friend KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, TMonster& monster);

    short MonsterTemplateID = 0;
    short AniID = 0;
    float MonHP = 0;
};

/// Reads a monster, 30 bytes. Session, type, last zone and the movement beyond the ground position, heading
/// and speed do not travel and stay.
KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, TMonster& monster);
