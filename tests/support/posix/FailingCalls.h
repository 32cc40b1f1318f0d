#pragma once

#include <atomic>

/// The calls of the system that a test can let fail.
enum class SystemCall {
    Connect,
    Poll,
    WaitingPoll,
    GetSocketOption,
    ResolveName,
    MapMemory,
    NewWithoutThrow,
    New,
    SetDetached,
    SetStackSize,
    CreateThread,
    Count
};

/// While it lives this call fails on the thread that made it, with this errno, so many times. One at a time
/// per call and thread.
class Failing
{
public:
    static constexpr int Always = 1 << 30;

    Failing(SystemCall call, int error, int times = Always);
    Failing(const Failing&) = delete;
    Failing& operator=(const Failing&) = delete;
    ~Failing();

    /// How often the call has failed so far.
    int GetFailures() const;

private:
    const SystemCall Call;
    const int Times;
};

/// While it lives `connect` does its work on the calling thread and then says that a signal interrupted it.
class InterruptedConnect
{
public:
    InterruptedConnect();
    ~InterruptedConnect();
};

/// Calls in which threads wait for descriptors, and calls of `recv` that may wait, of the whole process.
extern std::atomic<int> WaitingPolls;
extern std::atomic<int> BlockingReceives;
/// Bytes of the pages that the library has taken from the system and not given back.
extern std::atomic<long> MappedBytes;
