#pragma once

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/world/CNTVector.h"

/// What Move does with a vector. The first two are for the player's own avatar, the others for remote
/// objects.
enum DR_STATE : int {
    DR_INIT = 0,      ///< as constructed; no report synchronised yet
    DR_SYNCED = 1,    ///< the follower was last reset to the truth
    DR_FOLLOW = 2,    ///< the follower chases the target, or has arrived and stands
    DR_NEWTARGET = 3, ///< a target has just been set; the next Move does not advance it
    DR_STOPPING = 4   ///< the target has stopped and the follower is still approaching it
};

/// The movement of one object: its position, direction, speed and heading, and the same four of a target and
/// of a follower, with which positions are predicted between reports (dead reckoning).
///
/// The game calls Move once per frame. For its own avatar it stores the truth and leaves the state at DR_INIT
/// or DR_SYNCED; the follower is what the others predict, and Move tells when it has drifted too far.
///
/// For a remote object each report becomes the target, with state DR_NEWTARGET, and the follower, and with it
/// the position, glides towards it. Two things do not come by themselves: at first sight the follower has to
/// be put where the object is, since it would set out from (0, 0, 0) otherwise; and the direction of a report
/// has to be computed from its heading (DirectionOf), since it does not travel. TObject::InitDRVector and
/// TObject::SetDRVectorReport do both.
///
/// A step covers direction x speed x elapsed time, in whatever unit of time the game uses. **Choose the unit
/// of distance so that the slowest walk covers at least one per frame:** Move takes a shorter step of a
/// remote object for its arrival, and the object stands until it is 350 behind and jumps. At 30 frames a
/// second that means speeds of 30 units a second or more (docs/dead-reckoning.md). Headings are in degrees
/// about the vertical axis: 0 faces +z, +90 faces +x. One thread at a time; nothing allocates.
class KESRANTC_API CDRVector
{
public:
    /// State DR_INIT, everything 0, the three directions (1, 0, 0).
    // Not defaulted: GCC would clear the whole object with a slow string instruction first.
    CDRVector() {} // NOLINT(modernize-use-equals-default)
    /// Copies everything, the state included.
    CDRVector(const CDRVector&) = default;
    /// Copies everything but the state, which stays.
    CDRVector& operator=(const CDRVector& other);
    virtual ~CDRVector() = default;

    /// The position: the truth of the own avatar, what is displayed of a remote object.
    void SetPos(CNTVector& pos) { Own.Pos = pos; }
    CNTVector GetPos() const { return Own.Pos; }
    /// The direction of motion; a length other than 1 scales the speed.
    void SetVel(CNTVector& vel) { Own.Vel = vel; }
    CNTVector GetVel() const { return Own.Vel; }
    void SetSpeed(float speed) { Own.Speed = speed; }
    float GetSpeed() const { return Own.Speed; }
    /// The heading in degrees.
    void SetAY(float ay) { Own.AY = ay; }
    float GetAY() const { return Own.AY; }
    /// The direction, of length 1 on the ground, in which an object with this heading (degrees) walks.
    static CNTVector DirectionOf(float ay);

    /// What the next Move does; see DR_STATE.
    void SetDRState(DR_STATE state) { State = state; }
    DR_STATE GetDRState() const { return State; }

    /// The last report of a remote object: position, direction, speed and heading.
    void SetTarget(CNTVector& pos, CNTVector& vel, float speed, float ay);
    void GetTarget(CNTVector& pos, CNTVector& vel, float& speed, float& ay) const;
    CNTVector GetTargetPos() const { return Target.Pos; }
    /// What the others predict of the own avatar, or what is displayed of a remote object.
    void SetFollower(CNTVector& pos, CNTVector& vel, float& speed, float& ay);
    void GetFollower(CNTVector& pos, CNTVector& vel, float& speed, float& ay) const;

    /// One step over the elapsed time; the second argument is not used. True only for an own avatar whose
    /// follower was just reset to the truth, because its speed changed, its heading turned by 20 degrees or
    /// more, or it drifted by 100 or more on the ground: the game then reports the movement.
    ///
    /// A remote object stops within one step of its target: speed x elapsed time, so a frame that took long
    /// leaves it far off. Steps of one fixed length, several in a long frame, keep that small.
    bool Move(float elapsed, float unused);

private:
    struct Motion {
        CNTVector Pos;
        CNTVector Vel{1, 0, 0};
        float Speed = 0;
        float AY = 0;
    };

    bool MoveOwn(float elapsed);
    bool Synchronize();
    void MoveRemote(float elapsed);
    void ChaseTarget(float elapsed);
    void FaceTravel();

    template <class In> friend In& ReadFields(In& in, CDRVector& vector);

    DR_STATE State = DR_INIT;
    Motion Own;
    Motion Target;
    Motion Follower;
};

/// The wire form, 16 bytes, into a packet or any other sink.
template <class Out> Out& WriteFields(Out& out, const CDRVector& vector)
{
    WriteFields(out, vector.GetPos());
    out << vector.GetAY();
    out << vector.GetSpeed();
    return out;
}

inline CNTPacket& operator<<(CNTPacket& packet, const CDRVector& vector)
{
    return WriteFields(packet, vector);
}

/// Reads x and z of the position, the heading and the speed from a packet or any other source; all else
/// stays.
template <class In> In& ReadFields(In& in, CDRVector& vector)
{
    ReadFields(in, vector.Own.Pos);
    in >> vector.Own.AY;
    in >> vector.Own.Speed;
    return in;
}

inline CNTPacket& operator>>(CNTPacket& packet, CDRVector& vector)
{
    return ReadFields(packet, vector);
}
