#include "tests/soak/Traveller.h"

#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <thread>
#include <vector>

namespace Soak
{
namespace
{

constexpr auto Limit = std::chrono::seconds(60);
constexpr unsigned long LimitMilliseconds = 60000;

} // namespace

Traveller::Traveller(Outcome& outcome) : CountingClient(outcome)
{
    SetServerAddr("127.0.0.1");
}

void Traveller::ConnectTo(unsigned short port)
{
    SetServerPort(port);
    Require(ConnectToServer(), "a connect");
    ++Begun;
}

void Traveller::Enter(const std::string& name)
{
    CString account(name.c_str());
    CString password("secret");
    unsigned short value = 0;
    unsigned long result = 99;
    std::vector<TAvatar> avatars;
    std::vector<TPrivData> data;
    std::vector<TItem> items;
    std::vector<TSkill> skills;
    Require(Requests.CS_Logon(account, password, value, avatars, data, result) == GS_OK && result == 0,
            "a logon");
    if (avatars.empty())
        Require(Requests.CS_CreateAvatar(0, account, 1, result) == GS_OK && result == 0, "an avatar");
    Require(Requests.CS_TryOnSession(0, 1, items, skills, result) == GS_OK && result == 0, "a play session");
    Requests.CS_EnterSession();
    Settle();
}

void Traveller::Settle()
{
    unsigned long result = 0;
    Require(Requests.CS_CancelDeleteAvatar(9, result) == GS_OK, "an answer");
    ProcessQueuedMessageFromServer();
}

void Traveller::Say(unsigned sitting, unsigned line)
{
    char text[200];
    std::snprintf(text, sizeof text, "%u %u%*s", sitting, line, static_cast<int>(line % 150), "");
    CFixCharString<200> said(text);
    Requests.CS_Chat(said);
}

void Traveller::Until(const char* what, const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + Limit;
    while (!condition()) {
        Require(std::chrono::steady_clock::now() < end, what);
        ProcessQueuedMessageFromServer();
        UpdateFrame();
        std::this_thread::yield();
    }
    ProcessQueuedMessageFromServer();
}

void Traveller::Leave()
{
    Disconnect();
    AwaitEnd();
}

void Traveller::AwaitEnd()
{
    Until("the end of a connection", [&] { return !IsAlive(); });
    Disconnect();
    Require(WaitForReceiveThread(LimitMilliseconds), "the end of the receive thread");
    Require(Begun == Ended, "one end for each connection");
}

void Require(bool holds, const std::string& what)
{
    if (!holds)
        throw std::runtime_error("in vain: " + what);
}

} // namespace Soak
