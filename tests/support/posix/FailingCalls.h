#pragma once

#include "tests/interposed/Calls.h"

#include <atomic>

using SystemCall = Interposed::Call;

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

/// Calls in which threads wait for descriptors, and calls of `recv` that may wait, of the whole process.
extern std::atomic<int> WaitingPolls;
extern std::atomic<int> BlockingReceives;
using Interposed::MappedBytes;
