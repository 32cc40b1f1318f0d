// What connections cost in memory, and in wake-ups while they are idle. Each case in a process of its own
// that has had no connection before.
//
//     MemoryBench first|thousand|flood|idle
//     MemoryBench backlog PACKETS...

#include "bench/Figures.h"
#include "bench/GameClient.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace
{

/// The sum of the numbers behind a name in a file of the process's own status.
long StatusValue(const std::filesystem::path& file, const std::string& name)
{
    std::ifstream status(file);
    std::string word;
    long value = 0;
    long sum = 0;
    while (status >> word)
        if (word == name && status >> value)
            sum += value;
    return sum;
}

/// What the stacks of threads hold: mappings of a thread stack's usual size.
long StacksKiB()
{
    std::ifstream maps("/proc/self/smaps");
    std::string word;
    long size = 0;
    long value = 0;
    long sum = 0;
    while (maps >> word)
        if (word == "Size:" && maps >> value)
            size = value;
        else if (word == "Rss:" && maps >> value && size == 8192)
            sum += value;
    return sum;
}

/// Resident memory in KiB: all of it, what of it belongs to this process alone (the rest is code, which every
/// process shares), and what thread stacks hold. The system's page tables come on top.
struct Resident {
    double All = static_cast<double>(StatusValue("/proc/self/smaps_rollup", "Rss:"));
    double Own = static_cast<double>(StatusValue("/proc/self/smaps_rollup", "Private_Dirty:"));
    double Stacks = static_cast<double>(StacksKiB());
    double PageTables = static_cast<double>(StatusValue("/proc/self/status", "VmPTE:"));

    void Report(const std::string& name, const Resident& before, double connections) const
    {
        Bench::Figure(name + ".kib", (All - before.All) / connections);
        Bench::Figure(name + ".own_kib", (Own - before.Own) / connections);
        Bench::Figure(name + ".stack_kib", (Stacks - before.Stacks) / connections);
        Bench::Figure(name + ".page_tables_kib", (PageTables - before.PageTables) / connections);
    }
};

/// Times that any thread but the calling one gave up its core because it had to wait.
double WakeUps()
{
    long sum = 0;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task"))
        sum += StatusValue(thread.path() / "status", "voluntary_ctxt_switches:");
    return static_cast<double>(sum - StatusValue("/proc/thread-self/status", "voluntary_ctxt_switches:"));
}

using Sizes = std::vector<long>;
using Clients = std::vector<std::unique_ptr<Bench::GameClient>>;

void Connect(const Bench::Listener& listener, Clients& clients, int count)
{
    for (int i = 0; i < count; ++i)
        clients.push_back(std::make_unique<Bench::GameClient>(listener));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
}

/// So many packets queued as a whole before the first is drained. Returns the nanoseconds that draining one
/// took.
double Flood(Bench::GameClient& client, long packets)
{
    constexpr long PerWrite = 200;
    const CNTPacket packet = Bench::MovementMessage();
    std::vector<unsigned char> block;
    for (long i = 0; i < PerWrite; ++i)
        block.insert(block.end(), packet.GetBuf(), packet.GetBuf() + packet.GetBufSize());
    for (long sent = 0; sent < packets; sent += PerWrite)
        Bench::SendAll(client.Peer, block.data(), block.size());
    while (client.GetQueuedPackets() < static_cast<unsigned long>(packets))
        std::this_thread::yield();
    const auto start = std::chrono::steady_clock::now();
    client.ProcessQueuedMessageFromServer();
    const std::chrono::duration<double, std::nano> passed = std::chrono::steady_clock::now() - start;
    return passed.count() / static_cast<double>(packets);
}

void First(const Bench::Listener& listener, const Sizes&)
{
    const Resident before;
    Clients clients;
    Connect(listener, clients, 1);
    Resident().Report("memory.first", before, 1);
}

void Thousand(const Bench::Listener& listener, const Sizes&)
{
    constexpr int Count = 1000;
    const Resident before;
    Clients clients;
    clients.reserve(Count);
    Connect(listener, clients, Count);
    Resident().Report("memory.thousand", before, Count);
    for (const auto& client : clients)
        Flood(*client, 200);
    Resident().Report("memory.after_200", before, Count);
}

void Floods(const Bench::Listener& listener, const Sizes&)
{
    const Resident before;
    Clients clients;
    Connect(listener, clients, 1);
    Resident().Report("memory.before_floods", before, 1);
    for (int i = 0; i < 2; ++i)
        Flood(*clients[0], 200000);
    Resident().Report("memory.after_floods", before, 1);
}

void Idle(const Bench::Listener& listener, const Sizes&)
{
    Clients clients;
    Connect(listener, clients, 50);
    const double asleep = WakeUps();
    std::this_thread::sleep_for(std::chrono::seconds(2));
    Bench::Figure("idle.wake_ups", WakeUps() - asleep);
}

void Backlogs(const Bench::Listener& listener, const Sizes& floods)
{
    Clients clients;
    Connect(listener, clients, 1);
    for (const long packets : floods)
        Bench::Figure("backlog." + std::to_string(packets) + ".drain_ns", Flood(*clients[0], packets));
}

struct Case {
    const char* Name;
    void (*Measure)(const Bench::Listener& listener, const Sizes& floods);
};

constexpr Case Cases[] = {
    {"first", First}, {"thousand", Thousand}, {"flood", Floods}, {"idle", Idle}, {"backlog", Backlogs}};

} // namespace

int main(int argc, char** argv)
{
    Bench::AllowManyDescriptors();
    const Bench::Listener listener;
    Sizes sizes;
    for (int i = 2; i < argc; ++i)
        sizes.push_back(std::atol(argv[i]));
    for (const Case& one : Cases)
        if (argc > 1 && std::strcmp(argv[1], one.Name) == 0) {
            // What looking itself needs is there from now on.
            Resident();
            one.Measure(listener, sizes);
            return 0;
        }
    return 2;
}
