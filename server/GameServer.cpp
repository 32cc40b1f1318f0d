#include "server/GameServer.h"

#include "server/messages/Texts.h"
#include "server/network/Network.h"
#include "server/peer/Peer.h"
#include "server/scenario/Scenario.h"

#include <map>
#include <optional>
#include <stdexcept>

namespace Kesra
{
namespace
{

static_assert(PacketHeaderSize == CNTPacket::HeaderSize && PacketLimit == CNTPacket::Capacity);

/// The entries of SC_GS_LIST: this server's number and how busy it is.
constexpr sGS OwnEntry{1, 0};

constexpr int ScenarioLimit = 100;

std::vector<unsigned char> BytesOf(const CNTPacket& packet)
{
    return {packet.GetBuf(), packet.GetBuf() + packet.GetBufSize()};
}

} // namespace

/// Everything but Network::Post, Call and After and the recorder is used on the server's thread.
class GameServer::Implementation final : public NetworkOwner
{
public:
    explicit Implementation(const ServerOptions& options);
    ~Implementation() override;

    void OnAccepted(PeerID peer, Link& link) override;
    void OnPacket(PeerID peer, const unsigned char* bytes, std::size_t size) override;
    void OnEnded(PeerID peer) override;

    void StartScenario(Character* starter);

    Recorder Record;
    World Game;
    PeerSettings Settings;
    std::map<PeerID, std::unique_ptr<Peer>> Peers;
    std::shared_ptr<const Scenario> Loaded;
    const bool StartsScenario;
    const bool LoopsScenario;
    Network Net;

private:
    /// A scenario under way.
    struct Run {
        std::shared_ptr<const Scenario> Script;
        std::string Starter; ///< the avatar that "me" stands for
    };
    using RunPointer = std::shared_ptr<Run>;

    RunPointer StartScenarioFor(const std::string& starter);
    void SendClocks(std::chrono::milliseconds interval);
    void PlayerEntered(Character& player);
    void RunStep(const RunPointer& run, std::size_t next);
    void EndRound(const RunPointer& run);
    void Perform(const Scenario& scenario, const ScenarioStep& step, const std::string& starter);

    int RunningScenarios = 0;     ///< each may wait for hours
    std::weak_ptr<Run> Automatic; ///< what the last first player started
};

GameServer::Implementation::Implementation(const ServerOptions& options)
    : Record(options.Log),
      Game([this](std::chrono::milliseconds delay, std::function<void()> work) {
          Net.After(delay, std::move(work));
      }),
      Loaded(std::make_shared<Scenario>()),
      StartsScenario(options.StartsScenario),
      LoopsScenario(options.LoopsScenario),
      Net(options.Address, options.Port, options.Limits, *this, Record)
{
    Settings.OpenAccounts = options.OpenAccounts;
    Settings.GameServers = {OwnEntry};
    Settings.StartScenario = [this](Character* starter) { StartScenario(starter); };
    Settings.PlayerEntered = [this](Character& player) { PlayerEntered(player); };
    if (options.ClockInterval.count() > 0)
        SendClocks(options.ClockInterval);
    Net.Start();
}

GameServer::Implementation::~Implementation()
{
    // Peers log off through their links, which die with the network.
    Net.Stop();
    Peers.clear();
}

void GameServer::Implementation::OnAccepted(PeerID peer, Link& link)
{
    Peers.emplace(peer, std::make_unique<Peer>(link, Game, Record, Settings));
}

void GameServer::Implementation::OnPacket(PeerID peer, const unsigned char* bytes, std::size_t size)
{
    CNTPacket packet(CNTPacket::Unzeroed{});
    packet.Write(bytes, static_cast<unsigned short>(size));
    packet.SetBufPoint(0);
    Peers.at(peer)->Handle(packet);
}

void GameServer::Implementation::OnEnded(PeerID peer)
{
    Peers.erase(peer);
}

void GameServer::Implementation::SendClocks(std::chrono::milliseconds interval)
{
    for (const auto& [id, peer] : Peers)
        peer->SendClock();
    Net.After(interval, [this, interval] { SendClocks(interval); });
}

void GameServer::Implementation::PlayerEntered(Character& player)
{
    if (!StartsScenario || Game.PlayerCount() != 1)
        return;
    const RunPointer running = Automatic.lock();
    if (LoopsScenario && running)
        running->Starter = player.Name();
    else
        Automatic = StartScenarioFor(player.Name());
}

void GameServer::Implementation::StartScenario(Character* starter)
{
    StartScenarioFor(starter != nullptr ? starter->Name() : std::string());
}

GameServer::Implementation::RunPointer
GameServer::Implementation::StartScenarioFor(const std::string& starter)
{
    if (RunningScenarios == ScenarioLimit) {
        Record.Log("no scenario started: too many are running");
        return {};
    }
    ++RunningScenarios;
    auto run = std::make_shared<Run>(Run{Loaded, starter});
    RunStep(run, 0);
    return run;
}

void GameServer::Implementation::RunStep(const RunPointer& run, std::size_t next)
{
    while (next < run->Script->Steps.size()) {
        const ScenarioStep& step = run->Script->Steps[next++];
        if (step.Wait.count() == 0) {
            Perform(*run->Script, step, run->Starter);
            continue;
        }
        Net.After(step.Wait, [this, run, &step, next] {
            Perform(*run->Script, step, run->Starter);
            RunStep(run, next);
        });
        return;
    }
    EndRound(run);
}

void GameServer::Implementation::EndRound(const RunPointer& run)
{
    const auto goOn = [this, run] {
        if (Game.PlayerCount() > 0)
            RunStep(run, 0);
        else
            --RunningScenarios;
    };
    if (!LoopsScenario || run->Script->Length().count() == 0)
        --RunningScenarios;
    else if (run->Script->FinalWait.count() == 0)
        goOn();
    else
        Net.After(run->Script->FinalWait, goOn);
}

void GameServer::Implementation::Perform(const Scenario& scenario, const ScenarioStep& step,
                                         const std::string& starter)
{
    const auto complain = [&](const std::string& what) {
        Record.Log("scenario " + scenario.Place(step.Line) + ": " + what);
    };
    const auto find = [&](const std::string& name) {
        Character* character = Game.FindCharacter(name == "me" ? starter : WireText(name));
        if (character == nullptr)
            complain("nobody is called " + name);
        return character;
    };
    const auto idOf = [&](const std::string& name) {
        const Character* character = find(name);
        return character != nullptr ? character->ID() : 0UL;
    };
    // What a name stands for need not fit where a record takes some numbers only.
    std::optional<CNTPacket> built;
    try {
        built.emplace(step.Build(idOf));
    } catch (const std::runtime_error& error) {
        complain(error.what());
        return;
    }
    const CNTPacket& packet = *built;
    if (step.Target == "all")
        for (const auto& [id, peer] : Peers)
            peer->Send(packet);
    else if (Character* target = find(step.Target))
        target->Send(packet);
}

GameServer::GameServer(const ServerOptions& options) : Inner(std::make_unique<Implementation>(options)) {}

GameServer::~GameServer() = default;

unsigned short GameServer::GetPort() const
{
    return Inner->Net.Port();
}

void GameServer::AddAccount(const std::string& name, const std::string& password, bool master)
{
    Inner->Net.Call([&] { Inner->Game.AddAccount(name, password, master); });
}

void GameServer::Push(PeerID peer, const CNTPacket& packet)
{
    Inner->Net.Call([&] { Inner->Net.Send(peer, BytesOf(packet)); });
}

void GameServer::PushAll(const CNTPacket& packet)
{
    Push(Everyone, packet);
}

void GameServer::LoadScenario(const std::string& text, const std::string& name)
{
    const auto scenario = std::make_shared<const Scenario>(ParseScenario(text, name));
    if (Inner->LoopsScenario && !scenario->Steps.empty() && scenario->Length().count() == 0)
        throw std::runtime_error((name.empty() ? "" : name + ": ") +
                                 "a scenario that loops needs a line such as wait 1000");
    Inner->Net.Call([&] { Inner->Loaded = scenario; });
}

void GameServer::StartScenario()
{
    Inner->Net.Call([&] { Inner->StartScenario(nullptr); });
}

void GameServer::SetFaults(const Faults& faults)
{
    SetFaults(Everyone, faults);
}

void GameServer::SetFaults(PeerID peer, const Faults& faults)
{
    Inner->Net.Call([&] { Inner->Net.SetFaults(peer, faults); });
}

void GameServer::ReleaseReplies()
{
    Inner->Net.Call([&] { Inner->Net.ReleaseReplies(Everyone); });
}

void GameServer::SendBytes(PeerID peer, const std::vector<unsigned char>& bytes)
{
    Inner->Net.Call([&] { Inner->Net.SendBytes(peer, bytes); });
}

void GameServer::SendHeader(PeerID peer, unsigned short number, unsigned short size)
{
    const auto low = [](unsigned short word) { return static_cast<unsigned char>(word & 0xFF); };
    const auto high = [](unsigned short word) { return static_cast<unsigned char>(word >> 8); };
    SendBytes(peer, {low(number), high(number), low(size), high(size)});
}

void GameServer::Close(PeerID peer)
{
    Inner->Net.Call([&] { Inner->Net.Close(peer); });
}

void GameServer::Reset(PeerID peer)
{
    Inner->Net.Call([&] { Inner->Net.Reset(peer); });
}

bool GameServer::WaitFor(const std::function<bool(const ServerCounters&)>& predicate,
                         std::chrono::milliseconds limit) const
{
    return Inner->Record.WaitFor(predicate, limit);
}

bool GameServer::WaitForReceived(unsigned short number, unsigned count) const
{
    return WaitFor([=](const ServerCounters& counters) { return counters.ReceivedOf(number) >= count; });
}

ServerCounters GameServer::GetCounters() const
{
    return Inner->Record.Counters();
}

std::vector<std::string> GameServer::GetLog() const
{
    return Inner->Record.LogLines();
}

} // namespace Kesra
