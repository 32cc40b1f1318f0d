#pragma once

#include "tests/torture/Cases.h"

#include <array>
#include <string>

namespace Torture
{

/// What a run of cases came to; plain memory that processes share.
struct Totals {
    unsigned Cases = 0;
    unsigned Hit = 0; ///< in which a call has failed
    unsigned Faulty = 0;
    unsigned long long Connections = 0;
    unsigned long long Reconnects = 0;
    unsigned long long Pushes = 0;
    unsigned long long Chats = 0;
    std::array<unsigned long long, CallCount> Calls{};
    std::array<unsigned long long, CallCount> Failures{};
    NameList Escaped{};
};

/// Plays each case in a process of its own and reports the faulty ones.
class Runner
{
public:
    explicit Runner(unsigned short port);

    /// False, and a line that says why, when the case has broken a promise, crashed or not ended.
    bool Run(const Case& tortured);
    /// How often a session without failures makes each call.
    std::array<unsigned, CallCount> Count();

    const Totals& GetTotals() const { return Sums; }

private:
    std::string Play(const Case* tortured);
    [[noreturn]] void PlayHere(const Case* tortured);
    void Add();

    const unsigned short Port;
    Outcome* const Shared;
    Totals Sums;
};

} // namespace Torture
