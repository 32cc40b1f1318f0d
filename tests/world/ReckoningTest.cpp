#include "Wire.h"

#include "KesraNTC/world/TAvatar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <functional>
#include <limits>
#include <random>
#include <utility>

namespace
{

constexpr float FrameTime = 1.0F / 30;
constexpr int FramesPerReport = 3; // 100 ms

/// Somebody who walks: where it really is.
struct Walker {
    double X = 120; // near enough to the origin for a follower to set out from there
    double Z = -90;
    double Heading = 0;
    double Speed = 0;

    void Step()
    {
        const CNTVector direction = CDRVector::DirectionOf(static_cast<float>(Heading));
        X += direction.x * Speed * FrameTime;
        Z += direction.z * Speed * FrameTime;
    }
    CDRVector Report() const
    {
        CNTVector position(static_cast<float>(X), 0, static_cast<float>(Z));
        CDRVector report;
        report.SetPos(position);
        report.SetAY(static_cast<float>(Heading));
        report.SetSpeed(static_cast<float>(Speed));
        return report;
    }
};

/// What a game gets of a report: what travelled.
CDRVector Arrived(const CDRVector& sent)
{
    CNTPacket packet = Begun();
    packet << sent;
    CNTPacket received = Received(packet);
    CDRVector report;
    received >> report;
    return report;
}

/// The walker as it comes into sight.
TAvatar Seen(const Walker& walker)
{
    TAvatar avatar;
    CDRVector movement = Arrived(walker.Report());
    avatar.SetDRVector(movement);
    avatar.InitDRVector();
    return avatar;
}

double Distance(const Walker& walker, TAvatar& shown)
{
    const CNTVector position = shown.GetDRVector()->GetPos();
    return std::hypot(position.x - walker.X, position.z - walker.Z);
}

double Frames(double distance, double speed)
{
    return distance / (speed * FrameTime);
}

/// Sets heading and speed of a walker that walks at a given pace, frame by frame.
using Course = void (*)(Walker&, double pace, int frame);

/// How far the shown place was from the real one, in frames of walking.
struct Outcome {
    double Worst = 0;
    double AtTheEnd = 0;
};

/// A walk of 30 seconds in the sight of another. Reports go out every 100 ms, a last one with the stop, and
/// take so many frames to arrive; none overtakes another.
Outcome Watch(
    double pace, Course course, const std::function<int()>& delay = [] { return 0; })
{
    constexpr int frames = 900;
    Walker walker;
    course(walker, pace, 0);
    TAvatar shown = Seen(walker);
    std::deque<std::pair<int, CDRVector>> onTheWay;
    bool standing = walker.Speed == 0;
    Outcome outcome;
    for (int frame = 1; frame <= frames; ++frame) {
        course(walker, pace, frame);
        walker.Step();
        if (frame % FramesPerReport == 0 && !(standing && walker.Speed == 0)) {
            const int earliest = onTheWay.empty() ? frame : onTheWay.back().first;
            onTheWay.emplace_back(std::max(earliest, frame + delay()), walker.Report());
            standing = walker.Speed == 0;
        }
        for (; !onTheWay.empty() && onTheWay.front().first <= frame; onTheWay.pop_front())
            shown.SetDRVectorReport(Arrived(onTheWay.front().second));
        EXPECT_FALSE(shown.GetDRVector()->Move(FrameTime, 0));
        outcome.AtTheEnd = Frames(Distance(walker, shown), pace);
        outcome.Worst = std::max(outcome.Worst, outcome.AtTheEnd);
    }
    return outcome;
}

void WalkStraight(Walker& walker, double pace, int)
{
    walker.Speed = pace;
    walker.Heading = 60;
}

void StopAfterTurning(Walker& walker, double pace, int frame)
{
    walker.Speed = frame < 400 ? pace : 0;
    walker.Heading = std::min(frame, 400) * 2;
}

constexpr double Paces[] = {30, 31, 60, 120, 300, 1000, 3000};

TEST(Reckoning, ShowsAWalkerWithinTheWayOfOneReport)
{
    const struct {
        const char* Name;
        double Limit; // frames of walking
        Course Steer;
    } walks[] = {
        {"straight", 1.1, WalkStraight},
        {"in circles", 1.5,
         [](Walker& w, double pace, int f) {
             w.Speed = pace;
             w.Heading = 3 * f;
         }},
        {"spinning", 1.5,
         [](Walker& w, double pace, int f) {
             w.Speed = pace;
             w.Heading = -12 * f;
         }},
        {"turning, then standing", 1.5, StopAfterTurning},
        {"round corners", 3.1,
         [](Walker& w, double pace, int f) {
             w.Speed = pace;
             w.Heading = f / 40 * 90;
         }},
        {"zigzag", 3.1,
         [](Walker& w, double pace, int f) {
             w.Speed = pace;
             w.Heading = f / 7 % 2 == 0 ? 45 : -45;
         }},
        {"to and fro", 3.1,
         [](Walker& w, double pace, int f) {
             w.Speed = pace;
             w.Heading = f / 31 % 2 == 0 ? 0 : 180;
         }},
        {"stop and go", 3.1,
         [](Walker& w, double pace, int f) {
             w.Speed = f / 37 % 2 == 0 ? pace : 0;
             w.Heading = f / 37 * 70;
         }},
        {"faster and slower", 3.1,
         [](Walker& w, double pace, int f) {
             w.Speed = f / 17 % 2 == 0 ? pace : std::max(30.0, pace / 2);
             w.Heading = f / 61 * 70;
         }},
    };
    for (const auto& walk : walks) {
        for (const double pace : Paces) {
            const Outcome seen = Watch(pace, walk.Steer);
            EXPECT_LE(seen.Worst, walk.Limit) << walk.Name << " at " << pace;
        }
    }
}

TEST(Reckoning, ADelayCostsTheWayThatIsWalkedMeanwhile)
{
    for (const int delay : {1, 3, 6, 15}) {
        const Outcome seen = Watch(120, WalkStraight, [=] { return delay; });
        EXPECT_LE(seen.Worst, delay + 1.1) << delay;
    }
}

TEST(Reckoning, StandsWhereTheWalkerStandsHoweverTheReportsCome)
{
    for (const double pace : Paces) {
        for (unsigned seed = 1; seed <= 200; ++seed) {
            std::minstd_rand random(seed);
            const auto delay = [&] { return static_cast<int>(random() % 10); };
            EXPECT_LE(Watch(pace, StopAfterTurning, delay).AtTheEnd, 1.1) << pace << ", seed " << seed;
        }
    }
}

// What the unit of distance has to be chosen for.
TEST(Reckoning, AWalkerSlowerThanOneUnitPerFrameStandsUntilItJumps)
{
    const auto behindAfter = [](double speed, int frames) {
        Walker walker;
        walker.Speed = speed;
        TAvatar shown = Seen(walker);
        for (int frame = 1; frame <= frames; ++frame) {
            walker.Step();
            if (frame % FramesPerReport == 0)
                shown.SetDRVectorReport(Arrived(walker.Report()));
            shown.GetDRVector()->Move(FrameTime, 0);
        }
        return Distance(walker, shown);
    };
    EXPECT_NEAR(50, behindAfter(5, 300), 0.1);
    EXPECT_NEAR(290, behindAfter(29, 300), 0.1);
    EXPECT_GT(behindAfter(29, 360), 340);
    EXPECT_LT(behindAfter(29, 363), 2);
    EXPECT_LT(behindAfter(31, 300), 2);
}

TEST(Reckoning, FirstSightIsWhereTheObjectIs)
{
    Walker walker;
    walker.Heading = 90;
    TAvatar standing = Seen(walker);
    EXPECT_EQ(0, Distance(walker, standing));
    standing.GetDRVector()->Move(FrameTime, 0);
    EXPECT_EQ(0, Distance(walker, standing));
    EXPECT_EQ(90, standing.GetDRVector()->GetAY());

    // One that walks is not held up by waiting for its first report.
    walker.Speed = 60;
    TAvatar walking = Seen(walker);
    for (int frame = 0; frame < 30; ++frame) {
        walker.Step();
        walking.GetDRVector()->Move(FrameTime, 0);
        EXPECT_LE(Frames(Distance(walker, walking), 60), 1.1) << frame;
    }

    // A record that has been copied since, which leaves the state out, is put in its place by the next
    // report.
    TAvatar copy(walking);
    walker.X += 200;
    copy.SetDRVectorReport(Arrived(walker.Report()));
    EXPECT_EQ(DR_FOLLOW, copy.GetDRVector()->GetDRState());
    EXPECT_LE(Distance(walker, copy), 0.001);
}

TEST(Reckoning, OneWhoStandsFacesWhereItsReportSays)
{
    Walker walker;
    TAvatar shown = Seen(walker);
    const float headings[][2] = {{25, 25}, {170, 170}, {-175, -175}, {270, -90}, {730, 10}};
    for (const auto& [reported, faced] : headings) {
        walker.Heading = reported;
        shown.SetDRVectorReport(Arrived(walker.Report()));
        shown.GetDRVector()->Move(FrameTime, 0);
        EXPECT_EQ(faced, shown.GetDRVector()->GetAY());
        EXPECT_EQ(0, Distance(walker, shown));
    }
    // Put elsewhere without having walked, it is shown there.
    walker.X += 150;
    shown.SetDRVectorReport(Arrived(walker.Report()));
    shown.GetDRVector()->Move(FrameTime, 0);
    EXPECT_EQ(0, Distance(walker, shown));
}

TEST(Reckoning, WhoWalksFacesTheWay)
{
    Walker walker;
    walker.Speed = 120;
    TAvatar shown = Seen(walker);
    // Turns by a quarter and more, past 180 degrees too, do not leave it walking backwards.
    for (int leg = 0; leg < 12; ++leg) {
        walker.Heading += leg % 3 == 0 ? 170 : 100;
        for (int frame = 1; frame <= 30; ++frame) {
            walker.Step();
            if (frame % FramesPerReport == 0)
                shown.SetDRVectorReport(Arrived(walker.Report()));
            shown.GetDRVector()->Move(FrameTime, 0);
        }
        EXPECT_NEAR(0, std::remainder(walker.Heading - shown.GetDRVector()->GetAY(), 360), 3) << leg;
        EXPECT_EQ(120, shown.GetDRVector()->GetSpeed());
    }
}

TEST(Reckoning, TheHeightStays)
{
    Walker walker;
    walker.Speed = 120;
    CDRVector movement = walker.Report();
    CNTVector hill = movement.GetPos();
    hill.y = 70;
    movement.SetPos(hill);
    TAvatar shown;
    shown.SetDRVector(movement);
    shown.InitDRVector();
    for (int frame = 0; frame < 9; ++frame) {
        walker.Step();
        shown.SetDRVectorReport(Arrived(walker.Report()));
        shown.GetDRVector()->Move(FrameTime, 0);
        EXPECT_EQ(70, shown.GetDRVector()->GetPos().y);
    }
    EXPECT_LE(Frames(Distance(walker, shown), 120), 1.1);
}

TEST(Reckoning, SurvivesReportsThatAreNone)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    Walker walker;
    TAvatar shown = Seen(walker);
    for (const float odd : {nan, infinity, -infinity, 1e38F}) {
        CNTVector position(odd, 0, odd);
        CDRVector report;
        report.SetPos(position);
        report.SetAY(odd);
        report.SetSpeed(odd);
        shown.SetDRVectorReport(report);
        EXPECT_FALSE(shown.GetDRVector()->Move(FrameTime, 0));
        shown.InitDRVector();
        EXPECT_FALSE(shown.GetDRVector()->Move(FrameTime, 0));
    }
}

TEST(Reckoning, DirectionsFollowHeadings)
{
    const float headings[][3] = {{0, 0, 1}, {90, 1, 0}, {-90, -1, 0}, {180, 0, -1}, {450, 1, 0}};
    for (const auto& [heading, x, z] : headings) {
        const CNTVector direction = CDRVector::DirectionOf(heading);
        EXPECT_NEAR(x, direction.x, 1e-6) << heading;
        EXPECT_EQ(0, direction.y);
        EXPECT_NEAR(z, direction.z, 1e-6) << heading;
    }
    EXPECT_EQ(0.5F, CDRVector::DirectionOf(30).x);
}

} // namespace
