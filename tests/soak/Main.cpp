// Plays on and on with the reference server and with hostile ones, and checks that everything said arrives
// once and that nothing grows.

#include "server/GameServer.h"
#include "tests/soak/Hostile.h"
#include "tests/soak/Traveller.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <unistd.h>

using Clock = std::chrono::steady_clock;

namespace Soak
{
namespace
{

constexpr unsigned LinesOfASitting = 150;
constexpr long MostGrowth = 4096; // KiB: arenas of the allocator come and go

/// What the process holds of the system.
struct Holdings {
    long Memory; ///< resident, in KiB
    long Descriptors;
    long Threads;
};

long CountOf(const char* directory)
{
    return std::distance(std::filesystem::directory_iterator(directory),
                         std::filesystem::directory_iterator());
}

Holdings Measure()
{
    long pages = 0;
    std::ifstream statistics("/proc/self/statm");
    statistics >> pages >> pages;
    return {pages * (sysconf(_SC_PAGESIZE) / 1024), CountOf("/proc/self/fd"), CountOf("/proc/self/task")};
}

/// The same, once what has just ended is gone: nothing may be left, however long that takes within the limit.
template <class Enough> Holdings Settle(std::chrono::milliseconds limit, Enough enough)
{
    const auto end = Clock::now() + limit;
    Holdings least = Measure();
    while (!enough(least) && Clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        const Holdings now = Measure();
        least = {now.Memory, std::min(least.Descriptors, now.Descriptors),
                 std::min(least.Threads, now.Threads)};
    }
    return least;
}

/// Two players at a server, and a third one who visits others.
class Company
{
public:
    Company() : Server(Quiet()) {}

    void Sit()
    {
        ++Sittings;
        Meet();
        for (unsigned line = 1; line <= LinesOfASitting; ++line)
            for (Traveller* player : {&Anna, &Bora}) {
                player->Say(Sittings, line);
                player->ProcessQueuedMessageFromServer();
            }
        for (Traveller* player : {&Anna, &Bora}) {
            player->Until("what the other one says", [&] { return player->Stub.Heard >= LinesOfASitting; });
            Require(player->Stub.Connection == Sittings && player->Stub.Heard == LinesOfASitting,
                    "each line once");
        }
        CompareBytes();
        Part();
        VisitHostile(Cora, Sittings % HostileKinds());
    }

    unsigned long long GetPushes() const { return Findings.Pushes; }
    const char* GetFault() const { return Findings.Fault.data(); }
    void Report() const
    {
        std::printf(
            "%u sittings, %u connections, %u reconnects, %u visits to hostile servers; %llu lines said and "
            "heard, %llu more pushed, %llu bytes sent and %llu received\n",
            Sittings, 3 * Sittings, 3 * (Sittings - 1), Sittings, 2ULL * LinesOfASitting * Sittings,
            GetPushes() - 2ULL * LinesOfASitting * Sittings, Sent, Received);
    }

private:
    static Kesra::ServerOptions Quiet()
    {
        Kesra::ServerOptions options;
        options.ClockInterval = std::chrono::milliseconds(0);
        return options;
    }

    void Meet()
    {
        Before = Server.GetCounters();
        for (Traveller* player : {&Anna, &Bora}) {
            player->Stub.Heard = 0;
            player->ConnectTo(Server.GetPort());
        }
        Anna.Enter("anna");
        Bora.Enter("bora");
    }

    /// What the one side has sent the other one has received, to the byte.
    void CompareBytes()
    {
        Anna.Settle();
        Bora.Settle();
        CNTStatistics anna{};
        CNTStatistics bora{};
        Anna.Until("as many bytes as the server counts", [&] {
            const Kesra::ServerCounters now = Server.GetCounters();
            anna = Anna.GetStatistics();
            bora = Bora.GetStatistics();
            return anna.BytesSent + bora.BytesSent == now.BytesReceived - Before.BytesReceived &&
                   anna.BytesReceived + bora.BytesReceived == now.BytesSent - Before.BytesSent;
        });
        Sent += anna.BytesSent + bora.BytesSent;
        Received += anna.BytesReceived + bora.BytesReceived;
    }

    /// The server ends both connections, or each its own.
    void Part()
    {
        const auto first = static_cast<Kesra::PeerID>(2 * Sittings - 1);
        if (Sittings % 3 == 0) {
            Anna.Leave();
            Bora.Leave();
        } else {
            for (const Kesra::PeerID peer : {first, first + 1})
                Sittings % 3 == 1 ? Server.Close(peer) : Server.Reset(peer);
            Anna.AwaitEnd();
            Bora.AwaitEnd();
        }
        Require(Server.WaitFor([&](const auto& counters) { return counters.Ended == 2 * Sittings; }),
                "the end of both connections at the server");
    }

    Outcome Findings;
    Kesra::GameServer Server;
    Kesra::ServerCounters Before;
    Traveller Anna{Findings};
    Traveller Bora{Findings};
    Traveller Cora{Findings};
    unsigned Sittings = 0;
    unsigned long long Sent = 0;
    unsigned long long Received = 0;
};

bool Soak(std::chrono::seconds time)
{
    Company company;
    const auto begin = Clock::now();
    // The first rounds fill what later ones use again.
    const auto warm = begin + time / 4;
    while (Clock::now() < warm)
        company.Sit();
    const Holdings first = Settle(std::chrono::milliseconds(500), [](const Holdings&) { return false; });
    while (Clock::now() < begin + time)
        company.Sit();
    const auto isAsBefore = [&](const Holdings& now) {
        return now.Descriptors <= first.Descriptors && now.Threads <= first.Threads;
    };
    const Holdings last = Settle(std::chrono::seconds(20), isAsBefore);
    company.Report();
    const bool isFlat = last.Memory - first.Memory <= MostGrowth && isAsBefore(last);
    const bool isGood = isFlat && company.GetFault()[0] == '\0';
    std::printf("%s", company.GetFault());
    std::printf(
        "soak: %lld s, from a quarter of it to the end: resident KiB %ld and %ld, descriptors %ld and %ld, "
        "threads %ld and %ld: %s\n",
        static_cast<long long>(time.count()), first.Memory, last.Memory, first.Descriptors, last.Descriptors,
        first.Threads, last.Threads, isGood ? "every count was exact and nothing grew" : "FAILED");
    return isGood;
}

} // namespace
} // namespace Soak

int main(int argc, char** argv)
{
    const long seconds = argc == 2 ? std::strtol(argv[1], nullptr, 10) : 0;
    if (seconds < 1)
        return std::fprintf(stderr, "usage: soak SECONDS, in a directory for the log\n"), 2;
    // The servers' ends say by GoogleTest what they have waited for in vain.
    testing::GTEST_FLAG(throw_on_failure) = true;
    try {
        return Soak::Soak(std::chrono::seconds(seconds)) ? 0 : 1;
    } catch (const std::exception& error) {
        std::printf("soak: %s: FAILED\n", error.what());
        return 1;
    }
}
