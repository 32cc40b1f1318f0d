// A small game: logs on, meets a companion in a play session, greets it in Korean and walks a few steps in
// its sight. Prints what it sees; returns 0 when everything expected has been seen.
#include <KesraNTC/KesraNTC.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace
{

constexpr char Greeting[] = "\xBE\xC8\xB3\xE7\xC7\xCF\xBC\xBC\xBF\xE4"; // "annyeonghaseyo", code page 949
constexpr unsigned long LastFrame = 200;
constexpr float FrameTime = 1.0F / 30;

// What the server tells. Handlers run on one thread at a time, on the receive thread while a request waits.
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
        if (avatar.GetNickname() == Companion && !Met.exchange(true))
            std::printf("meets %s\n", static_cast<const char*>(avatar.GetNickname()));
    }
    void SC_Chat(short&, CFixCharString<200>& text) override
    {
        std::printf("hears %s\n", static_cast<const char*>(text));
        const bool fromCompanion = std::strstr(text, Companion) == static_cast<const char*>(text);
        Greeted = Greeted || (fromCompanion && std::strstr(text, Greeting) != nullptr);
    }
    void SC_AvatarMove(short&, CDRVector& movement, unsigned short&, unsigned long& frame) override
    {
        const CNTVector position = movement.GetPos();
        std::printf("sees a step to %.3f %.3f\n", static_cast<double>(position[0]),
                    static_cast<double>(position[2]));
        Arrived = Arrived || frame == LastFrame;
    }

    const CString Companion;
    std::atomic<bool> Met{false};
    std::atomic<bool> Greeted{false};
    std::atomic<bool> Arrived{false};
};

class Client : public CNTMainClient
{
public:
    ~Client() override
    {
        Disconnect();
        WaitForReceiveThread(5000);
    }
    void ProcessDisconnection() override { Ended = true; }

    // Frames of the game, until the companion has done its part.
    bool PlayUntil(const std::atomic<bool>& seen)
    {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (!seen && !Ended && std::chrono::steady_clock::now() < limit) {
            ProcessQueuedMessageFromServer();
            UpdateFrame();
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return seen;
    }

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

// Walks a winding path; dead reckoning decides when the others need a report.
void Walk(CNTProxy_CLToGS& proxy)
{
    CDRVector own;
    CNTVector position(3, 0, 4), direction(1, 0, 0);
    own.SetSpeed(60);
    for (unsigned long frame = 1; frame <= LastFrame; ++frame) {
        const float turn = static_cast<float>(frame % 50) / 50;
        direction = CNTVector(1 - turn, 0, turn);
        for (int axis : {0, 2})
            position[axis] += direction[axis] * own.GetSpeed() * FrameTime;
        own.SetPos(position);
        own.SetVel(direction);
        own.SetAY(turn * 90);
        const bool drifted = own.Move(FrameTime, 0);
        if (drifted || frame == LastFrame)
            proxy.CS_AvatarMove(own, 1, frame);
    }
}

bool Play(const char* address, const char* port, const char* name, const char* companion)
{
    Sights sights(companion);
    CNTProxy_CLToGS proxy;
    Client client;
    client.Attach(&sights);
    client.Attach(&proxy);
    client.SetServerAddr(address);
    client.SetServerPort(std::strtoul(port, nullptr, 10));
    if (!client.Startup() || !client.ConnectToServer() || !Enter(proxy, name) ||
        !client.PlayUntil(sights.Met))
        return false;

    CFixCharString<200> text(CString(name) + ": " + Greeting);
    proxy.CS_Chat(text);
    if (!client.PlayUntil(sights.Greeted))
        return false;
    Walk(proxy);
    if (!client.PlayUntil(sights.Arrived))
        return false;
    proxy.CS_LeaveSession();
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 5) {
        std::puts("usage: meeting ADDRESS PORT OWN_NAME COMPANION");
        return 2;
    }
    const bool complete = Play(argv[1], argv[2], argv[3], argv[4]);
    std::puts(complete ? "has seen everything" : "has missed something");
    return complete ? 0 : 1;
}
