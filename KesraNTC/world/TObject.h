#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/world/CDRVector.h"

/// What every object with a place in the world has: identifier, kind, session, zones and movement. Records
/// are plain values that check nothing; copying one copies its texts and lists. One thread at a time.
class KESRANTC_API TObject
{
public:
    /// The kinds of object that GetType tells.
    enum : unsigned long { TypeAvatar = 1, TypeWorldItem = 2, TypeMonster = 3, TypeNPC = 4 };

    /// No object: identifier, session and type 0, both zones -1, movement as CDRVector constructs it.
    TObject() = default;
    /// Copies everything, the dead-reckoning state included.
    TObject(const TObject&) = default;
    /// Copies everything but the dead-reckoning state, which stays.
    TObject& operator=(const TObject&) = default;
    virtual ~TObject();

    /// Identifier and session 0, both zones -1; type and movement stay.
    void Init();

    /// The object ID, a 32-bit value, by which messages call the object.
    unsigned long GetID() const { return ID; }
    void SetID(unsigned long id) { ID = id; }
    /// One of the kinds above; 0 for none.
    unsigned long GetType() const { return Type; }
    void SetType(unsigned long type) { Type = type; }

    /// The object's own movement, to move it with.
    CDRVector* GetDRVector() { return &DR; }
    /// Takes over a movement but for its dead-reckoning state, which stays.
    void SetDRVector(CDRVector& vector) { DR = vector; }
    /// A remote object has come into sight, or has been put elsewhere: it is displayed from its own position
    /// on, and walks on when it has a speed. To be called on the record that the game keeps and moves, since
    /// copying a record leaves the dead-reckoning state out.
    void InitDRVector();
    /// A report about a remote object has arrived: from now on Move takes it there. Only the report's
    /// position on the ground, heading and speed are read; the height stays. The first report about an object
    /// without InitDRVector counts as its coming into sight.
    void SetDRVectorReport(const CDRVector& report);

    /// The play session the object has joined.
    short GetJoinedSessionID() const { return JoinedSessionID; }
    /// Always true.
    bool SetJoinedSessionID(short id);
    /// The zone the object is in, -1 for none.
    short GetCurZoneID() const { return CurZoneID; }
    void SetCurZoneID(short id) { CurZoneID = id; }
    /// The zone it was in before, -1 for none.
    short GetLastZoneID() const { return LastZoneID; }
    void SetLastZoneID(short id) { LastZoneID = id; }

protected:
    explicit TObject(unsigned long type) : Type(type) {}

    short JoinedSessionID = 0;
    unsigned long ID = 0;
    unsigned long Type = 0;
    CDRVector DR;
    short CurZoneID = -1;
    short LastZoneID = -1;
};
