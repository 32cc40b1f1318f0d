#include "KesraNTC/world/TObject.h"

#include <cmath>

namespace
{

bool IsRemote(const CDRVector& movement)
{
    const DR_STATE state = movement.GetDRState();
    return state == DR_FOLLOW || state == DR_NEWTARGET || state == DR_STOPPING;
}

float TargetSpeed(const CDRVector& movement)
{
    CNTVector pos;
    CNTVector direction;
    float speed = 0;
    float ay = 0;
    movement.GetTarget(pos, direction, speed, ay);
    return speed;
}

// The position, heading and speed that travel, and the direction that follows from them.
void TakeReport(CDRVector& movement, CNTVector pos, float ay, float speed)
{
    // Move compares headings without reducing them.
    ay = std::remainder(ay, 360.0F);
    CNTVector direction = CDRVector::DirectionOf(ay);
    movement.SetPos(pos);
    movement.SetVel(direction);
    movement.SetSpeed(speed);
    movement.SetAY(ay);
    movement.SetTarget(pos, direction, speed, ay);
}

} // namespace

TObject::~TObject() = default;

void TObject::Init()
{
    ID = 0;
    JoinedSessionID = 0;
    CurZoneID = -1;
    LastZoneID = -1;
}

bool TObject::SetJoinedSessionID(short id)
{
    JoinedSessionID = id;
    return true;
}

void TObject::InitDRVector()
{
    CNTVector pos = DR.GetPos();
    TakeReport(DR, pos, DR.GetAY(), DR.GetSpeed());
    CNTVector direction = DR.GetVel();
    float speed = DR.GetSpeed();
    float ay = DR.GetAY();
    DR.SetFollower(pos, direction, speed, ay);
    DR.SetDRState(DR_FOLLOW);
}

void TObject::SetDRVectorReport(const CDRVector& report)
{
    CNTVector pos = report.GetPos();
    pos.y = DR.GetPos().y;
    if (!IsRemote(DR)) {
        TakeReport(DR, pos, report.GetAY(), report.GetSpeed());
        InitDRVector();
        return;
    }

    CNTVector shown;
    CNTVector direction;
    float speed = 0;
    float ay = 0;
    const float lastSpeed = TargetSpeed(DR);
    DR.GetFollower(shown, direction, speed, ay);
    TakeReport(DR, pos, report.GetAY(), report.GetSpeed());
    // Move takes the follower to a target that stands at the speed it has, which is 0 after an arrival.
    if (report.GetSpeed() == 0 && speed == 0) {
        speed = lastSpeed;
        if (lastSpeed == 0)
            shown = pos;
    }
    DR.SetPos(shown);
    DR.SetFollower(shown, direction, speed, ay);
    DR.SetDRState(DR_NEWTARGET);
}
