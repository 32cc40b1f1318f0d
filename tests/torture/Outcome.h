#pragma once

#include "tests/torture/Faults.h"

#include <array>
#include <atomic>

namespace Torture
{

/// Names of calls, separated by commas.
using NameList = std::array<char, 300>;

/// What one process finds out and another one reads: plain memory that both share.
struct Outcome {
    std::array<char, 64> Stage{};  ///< what is being done
    std::array<char, 300> Fault{}; ///< the first promise that was broken; empty for none
    NameList Escaped{};            ///< the calls that std::bad_alloc has left
    std::atomic<bool> IsFaulty{false};
    std::array<unsigned, CallCount> Calls{};
    std::array<unsigned, CallCount> Failures{};
    unsigned Connections = 0;
    unsigned Reconnects = 0;
    unsigned Pushes = 0;
    unsigned Chats = 0;
};

/// Notes the first fault; any thread.
[[gnu::format(printf, 2, 3)]] void Blame(Outcome& outcome, const char* format, ...);

/// Adds the names that the list does not have yet.
void AddNames(NameList& list, const char* names);

/// Memory, zeroed, that this process shares with those it forks from now on. Throws std::bad_alloc.
void* MakeShared(std::size_t size);

} // namespace Torture
