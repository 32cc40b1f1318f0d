#include "tests/torture/Runner.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <new>
#include <poll.h>
#include <stdexcept>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace Torture
{
namespace
{

constexpr int HangLimit = 120000;               // milliseconds, beyond what a session waits itself
constexpr std::chrono::seconds SettleLimit(20); // for threads to be gone once they have said their last

unsigned CountOf(const char* directory)
{
    return static_cast<unsigned>(
        std::distance(std::filesystem::directory_iterator(directory), std::filesystem::directory_iterator()));
}

unsigned Descriptors()
{
    return CountOf("/proc/self/fd");
}

unsigned Threads()
{
    return CountOf("/proc/self/task");
}

void RequireAsBefore(Outcome& outcome, const char* what, unsigned (*count)(), unsigned before)
{
    const auto end = std::chrono::steady_clock::now() + SettleLimit;
    while (count() != before && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    if (const unsigned now = count(); now != before)
        Blame(outcome, "there are %u %s, and were %u", now, what, before);
}

void BeginFaults(const Faults& faults, const Case* tortured)
{
    if (tortured == nullptr)
        faults.BeginCounting();
    else if (tortured->Failing)
        faults.Begin(*tortured->Failing);
    else
        faults.BeginCutting(tortured->Seed);
}

/// Waits for a process, which is killed when it takes too long. Empty when it has ended well.
std::string AwaitProcess(pid_t process, const char* stage)
{
    const int descriptor = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
    pollfd end{descriptor, POLLIN, 0};
    const bool isHanging = poll(&end, 1, HangLimit) == 0;
    close(descriptor);
    if (isHanging)
        kill(process, SIGKILL);
    int status = 0;
    waitpid(process, &status, 0);
    if (isHanging)
        return std::string("hung in ") + stage;
    if (WIFSIGNALED(status))
        return std::string(strsignal(WTERMSIG(status))) + " in " + stage;
    return WEXITSTATUS(status) == 0 ? "" : std::string("ended in ") + stage;
}

} // namespace

Runner::Runner(unsigned short port) : Port(port), Shared(new (MakeShared(sizeof(Outcome))) Outcome) {}

bool Runner::Run(const Case& tortured)
{
    const std::string fault = Play(&tortured);
    Add();
    if (fault.empty())
        return true;
    ++Sums.Faulty;
    std::printf("%s: %s\n", tortured.Name().c_str(), fault.c_str());
    std::fflush(stdout);
    return false;
}

std::array<unsigned, CallCount> Runner::Count()
{
    if (const std::string fault = Play(nullptr); !fault.empty())
        throw std::runtime_error("a session without failures: " + fault);
    return Shared->Calls;
}

std::string Runner::Play(const Case* tortured)
{
    new (Shared) Outcome;
    std::fflush(stdout);
    const pid_t process = fork();
    if (process < 0)
        throw std::runtime_error("no process can be forked");
    if (process == 0)
        PlayHere(tortured);
    const std::string fault = AwaitProcess(process, Shared->Stage.data());
    return !fault.empty() || !Shared->IsFaulty ? fault : Shared->Fault.data();
}

void Runner::PlayHere(const Case* tortured)
{
    const Faults& faults = *KesraTortureFaults();
    const unsigned descriptors = Descriptors();
    const unsigned threads = Threads();
    const auto isSpent = [&] {
        const auto& plan = tortured->Failing;
        return plan && !plan->Onwards && faults.FailuresOf(plan->Which) != 0;
    };
    const Switch trouble{[&] { BeginFaults(faults, tortured); }, faults.End, isSpent};
    const Demand demand = tortured != nullptr ? tortured->Wanted() : Demand::Exact;
    const bool isMemoryShort = tortured != nullptr && tortured->IsMemoryShort();
    // The game's thread, so that what belongs to it goes with it.
    std::thread([&] {
        Session(Port, *Shared, tortured != nullptr ? tortured->Name() : "nothing")
            .Play(demand, isMemoryShort, trouble);
    }).join();
    for (std::size_t call = 0; call < CallCount; ++call) {
        Shared->Calls[call] = faults.CallsOf(static_cast<Call>(call));
        Shared->Failures[call] = faults.FailuresOf(static_cast<Call>(call));
    }
    RequireAsBefore(*Shared, "threads", Threads, threads);
    RequireAsBefore(*Shared, "descriptors", Descriptors, descriptors);
    _exit(0);
}

void Runner::Add()
{
    ++Sums.Cases;
    const auto& failures = Shared->Failures;
    Sums.Hit += std::any_of(failures.begin(), failures.end(), [](unsigned count) { return count != 0; });
    Sums.Connections += Shared->Connections;
    Sums.Reconnects += Shared->Reconnects;
    Sums.Pushes += Shared->Pushes;
    Sums.Chats += Shared->Chats;
    for (std::size_t call = 0; call < CallCount; ++call) {
        Sums.Calls[call] += Shared->Calls[call];
        Sums.Failures[call] += Shared->Failures[call];
    }
    AddNames(Sums.Escaped, Shared->Escaped.data());
}

} // namespace Torture
