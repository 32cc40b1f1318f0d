#include "KesraNTC/world/CDRVector.h"

#include <algorithm>
#include <cmath>

namespace
{

constexpr float TurnToReport = 20;            // degrees
constexpr float SquaredDriftToReport = 10000; // on the ground plane
constexpr float JumpDistance = 350;
constexpr float NoDistance = 1e-6F;
constexpr float ShortestStep = 1;
constexpr double TurnLimit = 90; // degrees in one step
constexpr float OneOverPi = 0.31830987F;
constexpr double RadiansPerDegree = 3.14159265358979323846 / 180;

// The displacement of an object that moves on; the product is formed from left to right.
CNTVector Travel(const CNTVector& direction, float speed, float elapsed)
{
    CNTVector way = direction;
    way *= speed;
    way *= elapsed;
    return way;
}

} // namespace

CDRVector& CDRVector::operator=(const CDRVector& other)
{
    Own = other.Own;
    Target = other.Target;
    Follower = other.Follower;
    return *this;
}

CNTVector CDRVector::DirectionOf(float ay)
{
    const double radians = ay * RadiansPerDegree;
    return CNTVector(static_cast<float>(std::sin(radians)), 0, static_cast<float>(std::cos(radians)));
}

void CDRVector::SetTarget(CNTVector& pos, CNTVector& vel, float speed, float ay)
{
    Target = {pos, vel, speed, ay};
}

void CDRVector::GetTarget(CNTVector& pos, CNTVector& vel, float& speed, float& ay) const
{
    pos = Target.Pos;
    vel = Target.Vel;
    speed = Target.Speed;
    ay = Target.AY;
}

void CDRVector::SetFollower(CNTVector& pos, CNTVector& vel, float& speed, float& ay)
{
    Follower = {pos, vel, speed, ay};
}

void CDRVector::GetFollower(CNTVector& pos, CNTVector& vel, float& speed, float& ay) const
{
    pos = Follower.Pos;
    vel = Follower.Vel;
    speed = Follower.Speed;
    ay = Follower.AY;
}

bool CDRVector::Move(float elapsed, float)
{
    if (State != DR_FOLLOW && State != DR_NEWTARGET && State != DR_STOPPING)
        return MoveOwn(elapsed);
    MoveRemote(elapsed);
    return false;
}

bool CDRVector::MoveOwn(float elapsed)
{
    Follower.Pos += Travel(Follower.Vel, Follower.Speed, elapsed);
    if (Follower.Speed != Own.Speed)
        return Synchronize();

    const float turn = Own.AY - Follower.AY;
    if (turn >= TurnToReport || turn <= -TurnToReport)
        return Synchronize();
    if (Own.Speed == 0)
        return false;

    const float dx = Own.Pos.x - Follower.Pos.x;
    const float dz = Own.Pos.z - Follower.Pos.z;
    return dx * dx + dz * dz < SquaredDriftToReport ? false : Synchronize();
}

bool CDRVector::Synchronize()
{
    Follower = Own;
    State = DR_SYNCED;
    return true;
}

void CDRVector::MoveRemote(float elapsed)
{
    if (State == DR_NEWTARGET)
        State = DR_FOLLOW;
    else
        Target.Pos += Travel(Target.Vel, Target.Speed, elapsed);
    ChaseTarget(elapsed);
    Own.Pos = Follower.Pos;
}

void CDRVector::ChaseTarget(float elapsed)
{
    CNTVector way = Target.Pos;
    way -= Follower.Pos;
    const float distance = std::sqrt(way.x * way.x + way.y * way.y + way.z * way.z);
    if (distance <= NoDistance)
        return;
    Follower.Vel = way;
    Follower.Vel /= distance;
    if (distance > JumpDistance) {
        Follower.Pos = Target.Pos;
        return;
    }

    // A target that stands still is approached at the speed at which the follower already moves.
    if (Target.Speed != 0)
        Follower.Speed = Target.Speed;
    else
        Own.Speed = Follower.Speed;
    const float step = elapsed * Follower.Speed;

    const bool shortStep = step > -ShortestStep && step < ShortestStep;
    if (shortStep || distance <= step) {
        State = DR_FOLLOW;
        Follower.Speed = 0;
        Own.Speed = 0;
        return;
    }

    CNTVector advance = Follower.Vel;
    advance *= step;
    Follower.Pos += advance;
    FaceTravel();
    if (Target.Speed == 0)
        State = DR_STOPPING;
}

void CDRVector::FaceTravel()
{
    // Rounding may have left the component a little beyond 1.
    const double cosine = std::clamp(Follower.Vel.z, -1.0F, 1.0F);
    double heading = std::acos(cosine) * 180 * OneOverPi;
    if (Follower.Vel.x < 0)
        heading = -heading;
    const double turn = heading - Own.AY;
    if (turn > -TurnLimit && turn < TurnLimit)
        Own.AY = static_cast<float>(heading);
}
