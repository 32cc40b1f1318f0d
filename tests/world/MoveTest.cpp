#include "KesraNTC/world/CDRVector.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

namespace
{

struct Follower {
    CNTVector Pos;
    CNTVector Vel;
    float Speed = 0;
    float Heading = 0;
};

Follower FollowerOf(const CDRVector& v)
{
    Follower follower;
    v.GetFollower(follower.Pos, follower.Vel, follower.Speed, follower.Heading);
    return follower;
}

// An own avatar that has just reported.
CDRVector Synchronized(float speed, float heading)
{
    CDRVector v;
    v.SetSpeed(speed);
    v.SetAY(heading + 40);
    v.Move(0, 0);
    v.SetAY(heading);
    v.Move(0, 0);
    EXPECT_EQ(DR_SYNCED, v.GetDRState());
    return v;
}

// A remote object whose follower starts at the origin.
CDRVector Remote(CNTVector target, float targetSpeed, float followerSpeed, DR_STATE state)
{
    CNTVector direction(0, 0, 1);
    CNTVector origin;
    float heading = 0;
    CDRVector v;
    v.SetTarget(target, direction, targetSpeed, 0);
    v.SetFollower(origin, direction, followerSpeed, heading);
    v.SetDRState(state);
    return v;
}

TEST(MoveOwn, ADefaultVectorRests)
{
    CDRVector v;
    EXPECT_FALSE(v.Move(1, 0));
    EXPECT_EQ(DR_INIT, v.GetDRState());
    EXPECT_EQ(0, FollowerOf(v).Pos.x);
}

TEST(MoveOwn, ReportsADriftOf100)
{
    CDRVector v = Synchronized(10, 0);
    for (int call = 1; call <= 9; ++call)
        EXPECT_FALSE(v.Move(1, 0)) << call;
    EXPECT_EQ(90, FollowerOf(v).Pos.x);
    EXPECT_TRUE(v.Move(1, 0));
    EXPECT_EQ(0, FollowerOf(v).Pos.x);

    // Height does not count.
    CNTVector high(0, 5000, 0);
    v.SetPos(high);
    EXPECT_FALSE(v.Move(1, 0));
}

TEST(MoveOwn, ReportsTurnsOf20DegreesWithoutWrappingAround)
{
    const struct {
        float Speed, From, To;
        bool Reported;
    } turns[] = {
        {10, 0, 19.9F, false}, {10, 0, 20, true}, {10, 0, -20, true},    {10, 0, -19.9F, false},
        {0, 0, 25, true},      {0, 0, 15, false}, {10, -179, 179, true},
    };
    for (const auto& turn : turns) {
        CDRVector v = Synchronized(turn.Speed, turn.From);
        v.SetAY(turn.To);
        EXPECT_EQ(turn.Reported, v.Move(0.1F, 0)) << turn.From << " to " << turn.To;
        EXPECT_EQ(turn.Reported ? turn.To : turn.From, FollowerOf(v).Heading);
    }
}

TEST(MoveOwn, ReportsAChangeOfSpeedAndTakesOverTheTruth)
{
    CDRVector v = Synchronized(10, 0);
    CNTVector pos(1, 2, 3);
    CNTVector vel(0, 0, -1);
    v.SetPos(pos);
    v.SetVel(vel);
    v.SetSpeed(11);
    EXPECT_TRUE(v.Move(1, 0));
    const Follower follower = FollowerOf(v);
    EXPECT_EQ(1, follower.Pos.x);
    EXPECT_EQ(2, follower.Pos.y);
    EXPECT_EQ(3, follower.Pos.z);
    EXPECT_EQ(-1, follower.Vel.z);
    EXPECT_EQ(11, follower.Speed);

    // A standing avatar does not drift, wherever it is put.
    v = Synchronized(0, 0);
    CNTVector distant(1000, 0, 0);
    v.SetPos(distant);
    EXPECT_FALSE(v.Move(1, 0));
}

TEST(MoveOwn, EveryOtherStateIsOwnToo)
{
    CDRVector v;
    v.SetDRState(static_cast<DR_STATE>(7));
    v.SetSpeed(1);
    EXPECT_TRUE(v.Move(1, 0));
    EXPECT_EQ(DR_SYNCED, v.GetDRState());
}

TEST(MoveRemote, ApproachesAStandingTarget)
{
    CDRVector v = Remote(CNTVector(100, 0, 0), 0, 10, DR_FOLLOW);
    EXPECT_FALSE(v.Move(1, 0));
    EXPECT_EQ(10, FollowerOf(v).Pos.x);
    EXPECT_EQ(10, v.GetPos().x);
    EXPECT_EQ(static_cast<float>(89.99999636921457), v.GetAY());
    EXPECT_EQ(10, v.GetSpeed());
    EXPECT_EQ(DR_STOPPING, v.GetDRState());

    for (int call = 0; call < 8; ++call)
        v.Move(1, 0);
    EXPECT_EQ(90, v.GetPos().x);
    EXPECT_EQ(DR_STOPPING, v.GetDRState());
    // The last step would end at the target: the follower stands where it is.
    v.Move(1, 0);
    EXPECT_EQ(90, v.GetPos().x);
    EXPECT_EQ(DR_FOLLOW, v.GetDRState());
    EXPECT_EQ(0, v.GetSpeed());
    EXPECT_EQ(0, FollowerOf(v).Speed);
}

TEST(MoveRemote, ANewTargetIsNotAdvancedOnce)
{
    CDRVector v = Remote(CNTVector(100, 0, 0), 5, 0, DR_NEWTARGET);
    v.SetSpeed(77);
    v.Move(1, 0);
    EXPECT_EQ(0, v.GetTargetPos().z);
    EXPECT_EQ(DR_FOLLOW, v.GetDRState());
    EXPECT_EQ(5, FollowerOf(v).Speed);
    EXPECT_EQ(5, v.GetPos().x);
    EXPECT_EQ(77, v.GetSpeed());
    v.Move(1, 0);
    EXPECT_EQ(5, v.GetTargetPos().z);
}

TEST(MoveRemote, JumpsBeyond350AndStandsOnTheTarget)
{
    CDRVector jump = Remote(CNTVector(0, 351, 0), 0, 10, DR_STOPPING);
    jump.Move(1, 0);
    EXPECT_EQ(351, jump.GetPos().y);
    EXPECT_EQ(351, FollowerOf(jump).Pos.y);
    EXPECT_EQ(DR_STOPPING, jump.GetDRState());

    CDRVector close = Remote(CNTVector(0, 350, 0), 0, 10, DR_FOLLOW);
    close.Move(1, 0);
    EXPECT_EQ(10, close.GetPos().y);

    CDRVector there = Remote(CNTVector(0, 0, 5e-7F), 0, 10, DR_STOPPING);
    there.Move(1, 0);
    EXPECT_EQ(0, there.GetPos().z);
    EXPECT_EQ(DR_STOPPING, there.GetDRState());
}

TEST(MoveRemote, AStepBelowOneIsArrival)
{
    CDRVector v = Remote(CNTVector(100, 0, 0), 0, 1.5F, DR_FOLLOW);
    v.Move(0.5F, 0);
    EXPECT_EQ(DR_FOLLOW, v.GetDRState());
    EXPECT_EQ(0, v.GetSpeed());
    EXPECT_EQ(0, FollowerOf(v).Speed);
    EXPECT_EQ(0, v.GetPos().x);

    CDRVector one = Remote(CNTVector(100, 0, 0), 0, 2, DR_FOLLOW);
    one.Move(0.5F, 0);
    EXPECT_EQ(1, one.GetPos().x);
}

TEST(MoveRemote, DoesNotTurnByAQuarterTurnAtOnce)
{
    CDRVector v = Remote(CNTVector(-100, 0, 0), 0, 10, DR_FOLLOW);
    v.SetAY(90);
    v.Move(1, 0);
    EXPECT_EQ(-10, v.GetPos().x);
    EXPECT_EQ(90, v.GetAY());
    v.SetAY(-10);
    v.Move(1, 0);
    EXPECT_EQ(static_cast<float>(-89.99999636921457), v.GetAY());
}

TEST(MoveRemote, SurvivesNumbersThatAreNone)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float odd : {nan, infinity, -infinity, 1e38F}) {
        for (const DR_STATE state : {DR_FOLLOW, DR_NEWTARGET, DR_STOPPING}) {
            CDRVector v = Remote(CNTVector(odd, 1, 2), odd, odd, state);
            v.SetAY(odd);
            EXPECT_FALSE(v.Move(odd, 0));
            EXPECT_FALSE(v.Move(1, 0));
        }
    }
}

struct Snapshot {
    int State;
    std::uint32_t Pos[3];
    std::uint32_t Heading;
    std::uint32_t Speed;
};

// From a reference calculation of the same walk that rounds every operation to single precision.
constexpr Snapshot Walk[] = {
    {2, {0x41299811, 0x3F0FC9A9, 0x40A916D9}, 0x42317BF4, 0x00000000},
    {2, {0x419BFF98, 0x3F4F15DD, 0x416B14D4}, 0x422AF8D4, 0x00000000},
    {2, {0x41DBE1A8, 0x3F877F57, 0x41956637}, 0x42DC5239, 0x00000000},
    {2, {0x420C32F5, 0x3FC37552, 0x416BFBB9}, 0x42F5CBEA, 0x00000000},
    {2, {0x4226E7F9, 0x400920A7, 0x4114FD6F}, 0x43055466, 0x00000000},
    {2, {0x41D1C21C, 0x3FDF3D13, 0x4160704B}, 0x43055466, 0x00000000},
    {2, {0x412FD6A7, 0x3FB7238D, 0x41A01E87}, 0x43055466, 0x00000000},
    {4, {0xBFA5FB00, 0x3F8D825F, 0x41E75E77}, 0x43055466, 0x4174CCCD},
    {4, {0xC142BAC4, 0x3F35CBAE, 0x42206EC2}, 0x43055466, 0x4174CCCD},
    {4, {0xC1B93568, 0x3E9F2923, 0x424D9E97}, 0x43055466, 0x4174CCCD},
};

struct Report {
    CNTVector Pos;
    CNTVector Vel;
    float Speed;
    float Heading;
};

TEST(MoveRemote, WalksTheSameBitsEverywhere)
{
    Report reports[] = {
        {{40.1F, 1.7F, 33.3F}, {0.6F, 0, 0.8F}, 12.7F, 30},
        {{55.5F, 2.1F, 10.9F}, {0.3F, 0.1F, -0.95F}, 9.1F, 160},
        {{-20.3F, 0.4F, 25.6F}, {-0.8F, 0, 0.6F}, 15.3F, -50},
        {{-31.7F, 0, 60.2F}, {1, 0, 0}, 0, 10},
    };
    CNTVector start(1.5F, 0.25F, -3.75F);
    CNTVector direction(1, 0, 0);
    float speed = 7.3F;
    float heading = 0;
    CDRVector v;
    v.SetFollower(start, direction, speed, heading);
    for (int frame = 0; frame < 80; ++frame) {
        if (frame % 20 == 0) {
            Report& report = reports[frame / 20];
            v.SetTarget(report.Pos, report.Vel, report.Speed, report.Heading);
            v.SetDRState(DR_NEWTARGET);
        }
        v.Move(static_cast<float>(0.1 + 0.01 * (frame % 7)), 0);
        if (frame % 8 != 7)
            continue;
        const Snapshot& expected = Walk[frame / 8];
        EXPECT_EQ(expected.State, v.GetDRState()) << frame;
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(expected.Pos[i], std::bit_cast<std::uint32_t>(v.GetPos()[i])) << frame;
        EXPECT_EQ(expected.Heading, std::bit_cast<std::uint32_t>(v.GetAY())) << frame;
        EXPECT_EQ(expected.Speed, std::bit_cast<std::uint32_t>(v.GetSpeed())) << frame;
    }
}

TEST(MoveOwn, WalksTheSameBitsEverywhere)
{
    CDRVector v;
    std::vector<int> reported;
    CNTVector pos;
    CNTVector vel(0.6F, 0, 0.8F);
    for (int frame = 0; frame < 300; ++frame) {
        v.SetVel(vel);
        v.SetSpeed(11.3F);
        v.SetAY(static_cast<float>(v.GetAY() + 0.37));
        pos += CNTVector(0.91F, 0, 0.23F);
        v.SetPos(pos);
        if (v.Move(0.13F, 0))
            reported.push_back(frame);
    }
    EXPECT_EQ((std::vector<int>{0, 55, 110, 165, 220, 275}), reported);
    EXPECT_EQ(0x43882840U, std::bit_cast<std::uint32_t>(FollowerOf(v).Pos.x));
    EXPECT_EQ(0x42B75E94U, std::bit_cast<std::uint32_t>(FollowerOf(v).Pos.z));
}

} // namespace
