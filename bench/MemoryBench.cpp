// What one connection costs: resident memory when fresh and after a burst, and wake-ups while idle.

#include "bench/GameClient.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace
{

constexpr int Connections = 50;
constexpr int BurstPackets = 200;

/// A number behind a name in a file of the process's own status; 0 when it is not there.
long StatusValue(const std::filesystem::path& file, const std::string& name)
{
    std::ifstream status(file);
    std::string word;
    long value = 0;
    while (status >> word)
        if (word == name && status >> value)
            return value;
    return 0;
}

long ResidentKiB()
{
    return StatusValue("/proc/self/smaps_rollup", "Rss:");
}

/// Times that any thread but the calling one gave up its core because it had to wait.
long WakeUps()
{
    long sum = 0;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task"))
        sum += StatusValue(thread.path() / "status", "voluntary_ctxt_switches:");
    return sum - StatusValue("/proc/thread-self/status", "voluntary_ctxt_switches:");
}

using Clients = std::vector<std::unique_ptr<Bench::GameClient>>;

void Connect(const Bench::Listener& listener, Clients& clients)
{
    for (int i = 0; i < Connections; ++i)
        clients.push_back(std::make_unique<Bench::GameClient>(listener));
}

void SendBurst(const Clients& clients)
{
    const CNTPacket packet = Bench::MovementMessage();
    std::vector<unsigned char> burst;
    for (int i = 0; i < BurstPackets; ++i)
        burst.insert(burst.end(), packet.GetBuf(), packet.GetBuf() + packet.GetBufSize());
    for (const auto& client : clients) {
        Bench::SendAll(client->Peer, burst.data(), burst.size());
        while (client->GetRecvBytes() < burst.size())
            std::this_thread::yield();
    }
}

void DrainBurst(const Clients& clients)
{
    for (const auto& client : clients)
        while (client->Stub.Count < BurstPackets)
            client->ProcessQueuedMessageFromServer();
}

void Report(const char* what, double value, const char* unit, double limit)
{
    std::printf("RATIO  %-46s %6.1f %s  (at most %.0f: %s)\n", what, value, unit, limit,
                value <= limit ? "reached" : "NOT REACHED");
}

} // namespace

int main()
{
    const Bench::Listener listener;
    {
        // What only the first connection of a process brings is not a connection's cost.
        Clients first;
        Connect(listener, first);
        first.resize(1);
        SendBurst(first);
        DrainBurst(first);
    }
    Clients clients;
    clients.reserve(Connections);
    const long before = ResidentKiB();
    Connect(listener, clients);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    Report("a fresh connection", static_cast<double>(ResidentKiB() - before) / Connections, "KiB", 64);

    const long asleep = WakeUps();
    std::this_thread::sleep_for(std::chrono::seconds(2));
    Report("wake-ups of idle connections in two seconds", static_cast<double>(WakeUps() - asleep), "   ", 0);

    SendBurst(clients);
    DrainBurst(clients);
    Report("a connection after 200 packets", static_cast<double>(ResidentKiB() - before) / Connections, "KiB",
           256);
    return 0;
}
