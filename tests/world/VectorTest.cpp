#include "Wire.h"

#include "KesraNTC/world/CDRVector.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{

void ExpectVector(float x, float y, float z, const CNTVector& v)
{
    EXPECT_EQ(x, v.x);
    EXPECT_EQ(y, v.y);
    EXPECT_EQ(z, v.z);
}

TEST(Vector, ConstructionAndArithmetic)
{
    const float numbers[] = {1, 2, 3};
    ExpectVector(0, 0, 0, CNTVector());
    ExpectVector(4, 4, 4, CNTVector(4.0F));
    ExpectVector(1, 2, 3, CNTVector(numbers));

    CNTVector v(6, 8, 10);
    v[1] = 9;
    const CNTVector& same = v;
    EXPECT_EQ(9, same[1]);
    EXPECT_EQ(10, same[2]);
    ExpectVector(7, 11, 13, v += CNTVector(numbers));
    ExpectVector(6, 9, 10, v -= CNTVector(numbers));
    ExpectVector(6, 18, 30, v *= CNTVector(numbers));
    ExpectVector(6, 9, 10, v /= CNTVector(numbers));
    ExpectVector(12, 18, 20, v *= 2);
    ExpectVector(4, 6, 20.0F / 3, v /= 3);
    v /= 0.0F;
    EXPECT_TRUE(std::isinf(v.x));
    // A vector may be its own operand.
    CNTVector own(2, 4, 8);
    const CNTVector& itself = own;
    ExpectVector(1, 1, 1, own /= itself);
}

TEST(Vector, WireFormIsTheGroundPlane)
{
    EXPECT_EQ((Bytes{0, 0, 0x80, 0x3F, 0, 0, 0x40, 0x40}), WireForm(CNTVector(1, 2, 3)));

    CNTPacket sent = Begun();
    sent << 1.5F << -2.5F << 7;
    CNTPacket packet = Received(sent);
    CNTVector read(9, 5, 9);
    int next = 0;
    packet >> read >> next;
    ExpectVector(1.5F, 5, -2.5F, read);
    EXPECT_EQ(7, next);

    CNTPacket cut = Received(sent, 4);
    CNTVector partly(9, 5, 8);
    cut >> partly;
    ExpectVector(1.5F, 5, 8, partly);
}

CDRVector Sample()
{
    CNTVector pos(1, 2, 3);
    CNTVector vel(0, 0, 1);
    CNTVector targetPos(4, 5, 6);
    CNTVector targetVel(0, 1, 0);
    CNTVector followerPos(7, 8, 9);
    CNTVector followerVel(-1, 0, 0);
    float followerSpeed = 30;
    float followerHeading = 40;
    CDRVector v;
    v.SetPos(pos);
    v.SetVel(vel);
    v.SetSpeed(10);
    v.SetAY(20);
    v.SetTarget(targetPos, targetVel, 50, 60);
    v.SetFollower(followerPos, followerVel, followerSpeed, followerHeading);
    v.SetDRState(DR_NEWTARGET);
    return v;
}

void ExpectSampleMotion(const CDRVector& v)
{
    CNTVector pos;
    CNTVector vel;
    float speed = 0;
    float heading = 0;
    ExpectVector(1, 2, 3, v.GetPos());
    ExpectVector(0, 0, 1, v.GetVel());
    EXPECT_EQ(10, v.GetSpeed());
    EXPECT_EQ(20, v.GetAY());
    v.GetTarget(pos, vel, speed, heading);
    ExpectVector(4, 5, 6, pos);
    ExpectVector(4, 5, 6, v.GetTargetPos());
    ExpectVector(0, 1, 0, vel);
    EXPECT_EQ(50, speed);
    EXPECT_EQ(60, heading);
    v.GetFollower(pos, vel, speed, heading);
    ExpectVector(7, 8, 9, pos);
    ExpectVector(-1, 0, 0, vel);
    EXPECT_EQ(30, speed);
    EXPECT_EQ(40, heading);
}

TEST(DRVector, Defaults)
{
    const CDRVector v;
    CNTVector pos(9, 9, 9);
    CNTVector vel;
    float speed = 9;
    float heading = 9;
    EXPECT_EQ(DR_INIT, v.GetDRState());
    ExpectVector(0, 0, 0, v.GetPos());
    ExpectVector(1, 0, 0, v.GetVel());
    EXPECT_EQ(0, v.GetSpeed());
    EXPECT_EQ(0, v.GetAY());
    v.GetTarget(pos, vel, speed, heading);
    ExpectVector(0, 0, 0, pos);
    ExpectVector(1, 0, 0, vel);
    EXPECT_EQ(0, speed + heading);
    v.GetFollower(pos, vel, speed, heading);
    ExpectVector(0, 0, 0, pos);
    ExpectVector(1, 0, 0, vel);
    EXPECT_EQ(0, speed + heading);
}

TEST(DRVector, AssignmentKeepsTheStateAndCopyingTakesIt)
{
    const CDRVector sample = Sample();
    const CDRVector copy(sample);
    EXPECT_EQ(DR_NEWTARGET, copy.GetDRState());
    ExpectSampleMotion(copy);

    CDRVector assigned;
    assigned.SetDRState(DR_SYNCED);
    assigned = sample;
    EXPECT_EQ(DR_SYNCED, assigned.GetDRState());
    ExpectSampleMotion(assigned);
}

TEST(DRVector, WireFormIsPositionHeadingSpeed)
{
    EXPECT_EQ((Bytes{0, 0, 0x80, 0x3F, 0, 0, 0x40, 0x40, 0, 0, 0xA0, 0x41, 0, 0, 0x20, 0x41}),
              WireForm(Sample()));

    CNTPacket sent = Begun();
    sent << 11.0F << 12.0F << 13.0F << 14.0F;
    CNTPacket packet = Received(sent);
    CDRVector v = Sample();
    packet >> v;
    EXPECT_EQ(16, BytesRead(packet));
    ExpectVector(11, 2, 12, v.GetPos());
    EXPECT_EQ(13, v.GetAY());
    EXPECT_EQ(14, v.GetSpeed());
    ExpectVector(0, 0, 1, v.GetVel());
    ExpectVector(4, 5, 6, v.GetTargetPos());
    EXPECT_EQ(DR_NEWTARGET, v.GetDRState());
}

/// A sink of another kind than a packet.
struct Floats {
    std::vector<float> Values;
    Floats& operator<<(float value)
    {
        Values.push_back(value);
        return *this;
    }
};

TEST(DRVector, OneDescriptionOfTheFieldsServesEverySink)
{
    Floats sink;
    EXPECT_EQ((std::vector<float>{1, 3, 20, 10}), WriteFields(sink, Sample()).Values);
}

} // namespace
