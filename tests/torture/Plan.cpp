// Which calls of the watched library fail.

#include "tests/torture/Faults.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <link.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

namespace Torture
{
namespace
{

enum Mode : int { Idle, Counting, Failing, Cutting };

std::atomic<int> Current{Idle};
Plan Planned{};
std::atomic<std::uint64_t> Random{0};
std::array<std::atomic<unsigned>, CallCount> Calls{};
std::array<std::atomic<unsigned>, CallCount> Failures{};

struct Range {
    const char* Name;
    std::uintptr_t Begin;
    std::uintptr_t End;
};
Range Watched{};

/// The code of the library with that name.
int FindCode(dl_phdr_info* module, std::size_t, void* wanted)
{
    auto& range = *static_cast<Range*>(wanted);
    if (std::strstr(module->dlpi_name, range.Name) == nullptr)
        return 0;
    for (int i = 0; i < module->dlpi_phnum; ++i) {
        const auto& part = module->dlpi_phdr[i];
        if (part.p_type != PT_LOAD || (part.p_flags & PF_X) == 0)
            continue;
        range.Begin = module->dlpi_addr + part.p_vaddr;
        range.End = range.Begin + part.p_memsz;
    }
    return 1;
}

bool Watch(const char* library)
{
    Watched = {library, 0, 0};
    dl_iterate_phdr(FindCode, &Watched);
    return Watched.End != 0;
}

void Start(Mode mode)
{
    Current.store(Idle);
    for (auto* counters : {&Calls, &Failures})
        for (auto& counter : *counters)
            counter.store(0);
    Current.store(mode);
}

void Begin(const Plan& plan)
{
    Current.store(Idle);
    Planned = plan;
    Start(Failing);
}

void BeginCutting(std::uint64_t seed)
{
    Random.store(seed * 0x9E3779B97F4A7C15);
    Start(Cutting);
}

void BeginCounting()
{
    Start(Counting);
}

void End()
{
    Current.store(Idle);
}

unsigned CallsOf(Call call)
{
    return Calls[static_cast<std::size_t>(call)].load();
}

unsigned FailuresOf(Call call)
{
    return Failures[static_cast<std::size_t>(call)].load();
}

std::uint64_t NextRandom()
{
    std::uint64_t bits = Random.fetch_add(0x9E3779B97F4A7C15, std::memory_order_relaxed);
    bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9;
    bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EB;
    return bits ^ (bits >> 31);
}

int Note(Call call, int error)
{
    Failures[static_cast<std::size_t>(call)].fetch_add(1, std::memory_order_relaxed);
    return error;
}

int PlannedFailure(Call call, unsigned number)
{
    const Plan plan = Planned;
    if (call != plan.Which || number < plan.First || (!plan.Onwards && number != plan.First))
        return 0;
    // What is interrupted without end is made again without end.
    if (plan.Error == EINTR && (number - plan.First) % 2 != 0)
        return 0;
    return Note(call, plan.Error);
}

/// What a busy system says of calls that are made again.
int SprinkledFailure(Call call)
{
    const bool moves = call == Call::Send || call == Call::Receive;
    const bool waits = call == Call::WaitingPoll || call == Call::Poll || call == Call::Futex;
    const std::uint64_t chance = NextRandom() % 16;
    if (moves && chance == 0)
        return Note(call, EAGAIN);
    return (moves || waits) && chance == 1 ? Note(call, EINTR) : 0;
}

void Dawdle(std::uint64_t random)
{
    constexpr long Most = 100000;
    if (random % 32 != 0)
        return;
    const timespec moment{0, static_cast<long>(random / 32 % Most)};
    ::syscall(SYS_nanosleep, &moment, nullptr);
}

bool IsWatched(const void* caller)
{
    const auto address = reinterpret_cast<std::uintptr_t>(caller);
    return address >= Watched.Begin && address < Watched.End;
}

} // namespace
} // namespace Torture

int Interposed::FailureOf(Call call, const void* caller)
{
    using namespace Torture;
    const int mode = Current.load(std::memory_order_acquire);
    if (mode == Idle || !IsWatched(caller))
        return 0;
    const unsigned number = Calls[static_cast<std::size_t>(call)].fetch_add(1) + 1;
    if (mode == Counting)
        return 0;
    return mode == Failing ? PlannedFailure(call, number) : SprinkledFailure(call);
}

std::optional<std::size_t> Interposed::ShareOf(Call call, const void* caller, std::size_t size)
{
    using namespace Torture;
    if (Fails(call, caller))
        return std::nullopt;
    if (Current.load(std::memory_order_relaxed) != Cutting || !IsWatched(caller))
        return size;
    const std::uint64_t random = NextRandom();
    Dawdle(random >> 32);
    // Mostly a few bytes, at times a whole packet or more.
    const std::size_t most = std::size_t{1} << (random % 13);
    return std::min<std::size_t>(size, 1 + (random >> 8) % most);
}

const Torture::Faults* KesraTortureFaults() noexcept
{
    using namespace Torture;
    static constexpr Faults faults{Watch, Begin, BeginCutting, BeginCounting, End, CallsOf, FailuresOf};
    return &faults;
}
