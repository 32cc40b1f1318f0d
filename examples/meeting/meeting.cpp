// A small game: logs on, meets a companion in a play session, greets it in Korean and walks in its sight,
// while the companion walks here. Prints what it sees; returns 0 when everything expected has been seen.
#include "../Utf8.h"

#include <KesraNTC/KesraNTC.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <thread>

namespace
{

constexpr char Greeting[] = "\xBE\xC8\xB3\xE7\xC7\xCF\xBC\xBC\xBF\xE4"; // "annyeonghaseyo", code page 949
constexpr float FrameTime = 1.0F / 30;                                  // seconds; every step has this length
constexpr unsigned long FramesPerSecond = 30;
constexpr unsigned long WalkFrames = 3 * FramesPerSecond;
// Centimetres a second, 5 of them per frame: less than 1 per frame, and the others would see nobody walk.
constexpr float Pace = 150;

// What the server tells. Handlers run inside ProcessQueuedMessageFromServer; while a request waits for its
// reply they run on the receive thread, but nothing of this arrives before the session has been entered.
class Sights : public CNTStub_Quiet
{
public:
    explicit Sights(const char* companion) : Companion(companion) {}

    void SC_AvatarList(std::vector<TAvatar>& avatars) override
    {
        for (TAvatar& avatar : avatars)
            SC_Avatar(avatar);
    }
    void SC_Avatar(TAvatar& avatar) override
    {
        if (avatar.GetNickname() != Companion)
            return;
        Other = avatar;
        Other.InitDRVector(); // shown from where it is
        if (!Met)
            std::printf("meets %s\n", Utf8(Companion).c_str());
        Met = true;
    }
    void SC_Chat(short&, CFixCharString<200>& text) override
    {
        std::printf("hears %s\n", Utf8(text).c_str());
        const bool fromCompanion = std::strstr(text, Companion) == static_cast<const char*>(text);
        Greeted = Greeted || (fromCompanion && std::strstr(text, Greeting) != nullptr);
    }
    void SC_AvatarMove(short& who, CDRVector& movement, unsigned short&, unsigned long& frame) override
    {
        if (static_cast<unsigned long>(who) != Other.GetID())
            return;
        Other.SetDRVectorReport(movement); // from now on it walks there
        Reported = movement.GetPos();
        Stopped = frame > WalkFrames;
        std::printf("sees a step to %.3f %.3f\n", static_cast<double>(Reported[0]),
                    static_cast<double>(Reported[2]));
    }

    CNTVector Shown() { return Other.GetDRVector()->GetPos(); }
    bool HasArrived()
    {
        const CNTVector shown = Shown();
        return Stopped &&
               std::hypot(shown[0] - Reported[0], shown[2] - Reported[2]) <= Pace * FrameTime * 1.1F;
    }

    const CString Companion;
    TAvatar Other;
    CNTVector Reported;
    bool Met = false;
    bool Greeted = false;
    bool Stopped = false;
};

class Client : public CNTMainClient
{
public:
    ~Client() override { StopReceiving(); } // first of all: the receive thread calls this class
    void ProcessDisconnection() override { Ended = true; }

    std::atomic<bool> Ended{false};
};

bool Enter(CNTProxy_CLToGS& proxy, const char* name)
{
    CString account(name), password("open sesame");
    unsigned short value = 0;
    unsigned long verdict = 0;
    std::vector<TAvatar> avatars;
    std::vector<TPrivData> data;
    std::vector<TItem> items;
    std::vector<TSkill> skills;
    if (proxy.CS_Logon(account, password, value, avatars, data, verdict) != GS_OK || verdict != 0)
        return false;
    if (avatars.empty() && (proxy.CS_CreateAvatar(0, account, 1, verdict) != GS_OK || verdict != 0))
        return false;
    if (proxy.CS_TryOnSession(0, 1, items, skills, verdict) != GS_OK || verdict != 0)
        return false;
    return proxy.CS_EnterSession() == GS_OK;
}

// The own avatar on its way round a circle; dead reckoning decides when the others need a report.
class Walk
{
public:
    void Step(CNTProxy_CLToGS& proxy)
    {
        ++Frame;
        const float heading = static_cast<float>(Frame) * 3;
        CNTVector direction = CDRVector::DirectionOf(heading); // the others compute it from the heading, too
        Own.SetSpeed(Frame <= WalkFrames ? Pace : 0);
        for (int axis : {0, 2})
            Position[axis] += direction[axis] * Own.GetSpeed() * FrameTime;
        Own.SetPos(Position);
        Own.SetVel(direction);
        if (Own.GetSpeed() != 0)
            Own.SetAY(heading);
        if (Own.Move(FrameTime, 0))
            proxy.CS_AvatarMove(Own, 1, Frame);
    }

private:
    unsigned long Frame = 0;
    CDRVector Own;
    CNTVector Position{3, 0, 4};
};

class Game
{
public:
    explicit Game(const char* companion) : Seen(companion) {}

    bool Play(const char* address, const char* port, const char* name)
    {
        Connection.Attach(&Seen);
        Connection.Attach(&Proxy);
        Connection.SetServerAddr(address);
        Connection.SetServerPort(std::strtoul(port, nullptr, 10));
        if (!Connection.Startup() || !Connection.ConnectToServer())
            return std::puts("finds no server there; start one: kesra-server --listen 127.0.0.1:7001"), false;
        if (!Enter(Proxy, name))
            return std::puts("is not let in: is the name in use?"), false;
        if (!FramesUntil([this] { return Seen.Met; }))
            return false;
        CFixCharString<200> text(CString(name) + ": " + Greeting);
        Proxy.CS_Chat(text);
        if (!FramesUntil([this] { return Seen.Greeted; }))
            return false;
        Walk walk;
        unsigned long frame = 0;
        const auto bothHaveWalked = [&] {
            walk.Step(Proxy);
            if (++frame % FramesPerSecond == 0)
                std::printf("shows %s at %.0f %.0f\n", Utf8(Seen.Companion).c_str(),
                            static_cast<double>(Seen.Shown()[0]), static_cast<double>(Seen.Shown()[2]));
            return frame > WalkFrames && Seen.HasArrived();
        };
        const bool complete = FramesUntil(bothHaveWalked);
        Proxy.CS_LeaveSession();
        return complete;
    }

private:
    // Frames of the game until something is so, for half a minute at most.
    bool FramesUntil(const std::function<bool()>& isSo)
    {
        for (unsigned long frame = 0; frame < 30 * FramesPerSecond && !Connection.Ended; ++frame) {
            Connection.ProcessQueuedMessageFromServer();
            Connection.UpdateFrame();
            Seen.Other.GetDRVector()->Move(FrameTime, 0);
            if (isSo())
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(33));
        }
        return false;
    }

    Sights Seen;
    CNTProxy_CLToGS Proxy;
    Client Connection;
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 5) {
        std::puts("usage: meeting ADDRESS PORT OWN_NAME COMPANION\n"
                  "Start it twice, with the names exchanged, beside a running kesra-server. Latin letters "
                  "make a name.");
        return 2;
    }
    const bool complete = Game(argv[4]).Play(argv[1], argv[2], argv[3]);
    std::puts(complete ? "has seen everything" : "has missed something");
    return complete ? 0 : 1;
}
