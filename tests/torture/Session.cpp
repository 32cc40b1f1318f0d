#include "tests/torture/Session.h"

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <memory>
#include <mutex>
#include <new>
#include <stop_token>
#include <thread>
#include <utility>

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace Torture
{
namespace
{

// What has to come has this long; what may be lost is not waited for.
constexpr auto Promised = 40s;
constexpr auto Patient = 250ms;
constexpr unsigned long PatientReply = 100; // milliseconds
constexpr unsigned long UsualReply = 20000; // milliseconds
constexpr unsigned long EndLimit = 40000;   // milliseconds
constexpr int LittleBuffer = 4096;

void CountLine(void* lines, const char*)
{
    ++*static_cast<std::atomic<unsigned>*>(lines);
}

/// Ends a connect that takes too long, as a game does whose player has had enough.
class Impatience
{
public:
    explicit Impatience(CNTBaseClient& client)
        : Waiting([&client, this](const std::stop_token& stop) {
              std::unique_lock lock(Lock);
              if (!Over.wait_for(lock, stop, Patient, [] { return false; }) && !stop.stop_requested())
                  client.Disconnect();
          })
    {
    }

private:
    std::mutex Lock;
    std::condition_variable_any Over;
    std::jthread Waiting;
};

} // namespace

Session::Session(unsigned short port, Outcome& outcome, const std::string& name)
    : Port(port), Findings(outcome), Account(name.c_str())
{
    CDebug::SetLogHook(CountLine, &LogLines);
}

Session::~Session()
{
    CDebug::SetLogHook(nullptr, nullptr);
}

void Session::Play(Demand demand, bool isMemoryShort, const Switch& faults)
{
    faults.Begin();
    Wanted = demand;
    IsMemoryShort = isMemoryShort;
    Leave();
    std::unique_ptr<CountingClient> client;
    Guarded("a client's constructor", true, [&] { client = std::make_unique<CountingClient>(Findings); });
    if (client != nullptr)
        PlayOn(*client, faults);
    Stage("the end of the faults");
    faults.End();
    Wanted = Demand::Exact;
    // One that has had no memory for its events never connects.
    if (client != nullptr && !std::exchange(IsMemoryShort, false)) {
        client->Requests.SetReplyTimeLimit(UsualReply);
        client->Startup(); // a socket that cannot be made undoes it
        Visit(*client, "localhost", Farewell::Close);
    }
    if (client != nullptr)
        Finish(*client);
    client.reset();
    KeepProperties();
    CountingClient fresh(Findings);
    Visit(fresh, "127.0.0.1", Farewell::Reset);
    Finish(fresh);
}

void Session::Leave()
{
    std::unique_ptr<CountingClient> client;
    Guarded("a client's constructor", true, [&] { client = std::make_unique<CountingClient>(Findings); });
    if (client != nullptr && Connect(*client, "127.0.0.1"))
        Tell(*client, "push 40");
    Stage("the destruction of a connected client");
    client.reset();
}

void Session::PlayOn(CountingClient& client, const Switch& faults)
{
    if (Wanted == Demand::Survival)
        client.Requests.SetReplyTimeLimit(PatientReply);
    Visit(client, "127.0.0.1", Farewell::Close);
    // The next connection has nothing to do with what befell the one before.
    if (Wanted == Demand::Survival && !IsMemoryShort && faults.IsSpent()) {
        Wanted = Demand::Exact;
        client.Requests.SetReplyTimeLimit(UsualReply);
    }
    Visit(client, "localhost", Farewell::Reset);
    if (!client.IsAlive())
        return;
    ++Findings.Reconnects;
    Talk(client);
    End(client, Farewell::Disconnect);
}

void Session::Visit(CountingClient& client, const char* host, Farewell farewell)
{
    if (!Connect(client, host))
        return;
    Guarded("SetSendBuffer", true, [&] { client.SetSendBuffer(LittleBuffer); });
    Talk(client);
    End(client, farewell);
}

bool Session::Connect(CountingClient& client, const char* host)
{
    Stage("ConnectToServer");
    client.SetServerAddr(host);
    client.SetServerPort(Port);
    Told = Pushed = 0;
    const unsigned linesBefore = LogLines;
    bool hasBegun = false;
    Guarded("ConnectToServer", false, [&] {
        std::unique_ptr<Impatience> impatience;
        if (Wanted == Demand::Survival)
            impatience = std::make_unique<Impatience>(client);
        hasBegun = client.ConnectToServer();
    });
    if (hasBegun) {
        ++client.Begun;
        ++Findings.Connections;
        return true;
    }
    if (Wanted == Demand::Exact)
        Blame(Findings, "ConnectToServer has failed");
    Require(!client.IsConnected(), "a connect that failed leaves no socket");
    Require(IsMemoryShort || LogLines != linesBefore, "a connect that failed says why in the log");
    return false;
}

void Session::Talk(CountingClient& client)
{
    LogOn(client);
    for (int i = 0; i < 20; ++i)
        Tell(client, "");
    Ask(client, 30);
    Tell(client, "push 100");
    Pushed += 100;
    AwaitPushes(client);
    KeepFile();
    KeepProperties();
    Tell(client, "rest");
    for (int i = 0; i < 120; ++i)
        Tell(client, "");
    Ask(client, 5);
    AwaitPushes(client);
    Guarded(
        "UpdateFrame", true, [&] { client.UpdateFrame(); });
    Guarded("GetStatistics", true, [&] { static_cast<void>(client.GetStatistics()); });
}

void Session::LogOn(CountingClient& client)
{
    if (!client.IsAlive())
        return;
    Stage("CS_Logon");
    unsigned short value = 0;
    unsigned long result = 99;
    std::vector<TAvatar> avatars;
    std::vector<TPrivData> data;
    Guarded("CS_Logon", false, [&] {
        if (client.Requests.CS_Logon(Account, Password, value, avatars, data, result) != GS_OK)
            Require(Wanted == Demand::Survival, "a logon is answered");
        else
            Require(value == 7 && avatars.size() == 2 && data.size() == 2 && result == 0,
                    "the answer to a logon is whole");
    });
}

void Session::Tell(CountingClient& client, const char* order)
{
    if (!client.IsAlive())
        return;
    Stage("CS_Chat");
    char line[200];
    std::snprintf(line, sizeof line, "%u %s%*s", ++Told, order, 120, "");
    CFixCharString<200> text(line);
    ++Findings.Chats;
    Guarded("CS_Chat", false, [&] { client.Requests.CS_Chat(text); });
}

void Session::Ask(CountingClient& client, short pushes)
{
    if (!client.IsAlive())
        return;
    Stage("CS_CancelDeleteAvatar");
    Pushed += static_cast<unsigned>(pushes);
    unsigned long heard = 0;
    Guarded("CS_CancelDeleteAvatar", false, [&] {
        if (client.Requests.CS_CancelDeleteAvatar(pushes, heard) != GS_OK)
            Require(Wanted == Demand::Survival, "a question is answered");
        else if (heard != Told)
            Blame(Findings, "the server has heard %lu of %u lines", heard, Told);
    });
}

void Session::AwaitPushes(CountingClient& client)
{
    Stage("what is pushed");
    const bool hasAll = Until(
        client, [&] { return client.Stub.Heard >= Pushed || !client.IsAlive(); }, Wanted == Demand::Exact);
    Require(Wanted == Demand::Survival || (hasAll && client.Stub.Heard == Pushed), "everything pushed comes");
}

void Session::End(CountingClient& client, Farewell farewell)
{
    const int ends = client.Begun;
    if (farewell == Farewell::Disconnect) {
        Stage("Disconnect");
        Guarded("Disconnect", false, [&] { client.Disconnect(); });
    } else {
        Tell(client, farewell == Farewell::Reset ? "reset" : "close");
    }
    if (farewell == Farewell::Reset) {
        client.ConnectAgain = [&] { ConnectAgain(client); };
        client.AtEnd = CountingClient::Again::Wanted;
    }
    AwaitEnd(client, ends);
    auto wanted = CountingClient::Again::Wanted;
    if (client.AtEnd.compare_exchange_strong(wanted, CountingClient::Again::No))
        return ConnectAgain(client);
    Stage("the connect in ProcessDisconnection");
    Until(
        client, [&] { return client.AtEnd != CountingClient::Again::Connecting; }, true);
    client.AtEnd = CountingClient::Again::No;
}

void Session::ConnectAgain(CountingClient& client)
{
    static_cast<void>(Connect(client, "127.0.0.1"));
}

void Session::AwaitEnd(CountingClient& client, int ends)
{
    Stage("the end of a connection");
    const auto hasEnded = [&] { return client.Ended >= ends; };
    if (Until(client, hasEnded, Wanted == Demand::Exact))
        return;
    // Where nothing can be read any more the game ends it.
    Guarded("Disconnect", false, [&] { client.Disconnect(); });
    Until(client, hasEnded, true);
}

void Session::Finish(CountingClient& client)
{
    Stage("the end of the receive threads");
    client.Disconnect();
    Require(client.WaitForReceiveThread(EndLimit), "the receive threads end");
    if (client.Begun != client.Ended)
        Blame(Findings, "%d connections have begun and %d have ended", client.Begun.load(),
              client.Ended.load());
}

void Session::KeepFile()
{
    Stage("a file");
    CFile file;
    Guarded(
        "CFile", true,
        [&] {
            if (file.Open("missing\\settings") == INVALID_HANDLE_VALUE)
                file.Open("settings");
        });
    Guarded("CFile", true, [&] { file.Write("%s", "what a game keeps"); });
    char octet = 0;
    Guarded("CFile", true, [&] { file.Read(&octet, 1); });
    file.Close();
    Guarded("CFile", true, [&] { file.Remove("settings"); });
    // A log that is full is read.
    CDebug::SetLogLimit(1);
    CDebug::AppendDebugMsg("a line too much");
    CDebug::SetLogLimit(0);
}

void Session::KeepProperties()
{
    Stage("a property collection");
    Guarded("CPropCollection", true, [&] {
        try {
            constexpr const char* Korean = "\xB0\xA1"; // U+AC00 in code page 949
            CPropCollection properties;
            properties.SetProperty(Korean, _variant_t(Korean));
            CNTPacket packet;
            packet << std::uint16_t{2000} << std::uint16_t{0} << properties;
            packet.SetBufPoint(CNTPacket::HeaderSize);
            CPropCollection copy;
            packet >> copy;
            const _variant_t text = copy.GetProperty(Korean);
            const bool isWhole = text.vt == VT_BSTR && text.bstrVal[0] == 0xAC00 && text.bstrVal[1] == 0;
            Require(Wanted == Demand::Survival || isWhole, "a Korean text travels in a property collection");
        } catch (const _com_error&) {
            Require(Wanted == Demand::Survival, "a property collection travels");
        }
    });
}

/// Drains while it waits. A promise that is not kept in its time is a fault.
bool Session::Until(CountingClient& client, const std::function<bool()>& condition, bool isPromised)
{
    const auto end = Clock::now() + (isPromised ? Clock::duration(Promised) : Patient);
    while (!condition()) {
        Guarded("ProcessQueuedMessageFromServer", true, [&] { client.ProcessQueuedMessageFromServer(); });
        if (condition())
            break;
        if (Clock::now() > end) {
            if (isPromised)
                Blame(Findings, "waited in vain for %s", Findings.Stage.data());
            return false;
        }
        std::this_thread::sleep_for(100us);
    }
    Guarded("ProcessQueuedMessageFromServer", true, [&] { client.ProcessQueuedMessageFromServer(); });
    return true;
}

/// std::bad_alloc may leave some calls while memory is short, and no other exception any.
template <class Step> void Session::Guarded(const char* name, bool mayThrow, Step step)
{
    try {
        step();
    } catch (const std::bad_alloc&) {
        AddNames(Findings.Escaped, name);
        if (!mayThrow || !IsMemoryShort)
            Blame(Findings, "std::bad_alloc has left %s", name);
    }
}

void Session::Stage(const char* stage)
{
    std::snprintf(Findings.Stage.data(), Findings.Stage.size(), "%s", stage);
}

void Session::Require(bool holds, const char* what)
{
    if (!holds)
        Blame(Findings, "not so: %s", what);
}

} // namespace Torture
