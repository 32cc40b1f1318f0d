#pragma once

#include "tests/interposed/Calls.h"

#include <cstdint>

// What the preloaded library offers to the program that it is preloaded into.

namespace Torture
{

using Interposed::Call;
using Interposed::CallCount;

/// One call fails when it is made for the First time, counted from 1, and every time after that if Onwards.
struct Plan {
    Call Which;
    int Error;
    unsigned First;
    bool Onwards;
};

/// Only calls that come out of the watched library count and fail.
struct Faults {
    /// Watches the library whose file's name contains this; false when it is not loaded.
    bool (*Watch)(const char* library);
    void (*Begin)(const Plan& plan);
    /// Sends and receives move few bytes at a time, say EAGAIN and EINTR in between, and take their time.
    void (*BeginCutting)(std::uint64_t seed);
    /// Counts and lets everything happen.
    void (*BeginCounting)();
    void (*End)();
    unsigned (*CallsOf)(Call call);
    unsigned (*FailuresOf)(Call call);
};

} // namespace Torture

/// The preloaded library's; null where it is not preloaded.
extern "C" [[gnu::weak]] const Torture::Faults* KesraTortureFaults() noexcept;
