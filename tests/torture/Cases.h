#pragma once

#include "tests/torture/Faults.h"
#include "tests/torture/Session.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace Torture
{

/// One run of a session: with one call failing, or with every transfer cut if there is no plan.
struct Case {
    std::optional<Plan> Failing;
    std::uint64_t Seed = 0;

    /// As the command line takes it: "send:EPIPE:17:once", "recv:EAGAIN:3:onwards", "cut:99".
    std::string Name() const;
    Demand Wanted() const;
    bool IsMemoryShort() const;
};

const char* NameOf(Call call);

/// Throws std::runtime_error for a name that is none.
Case CaseNamed(const std::string& name);

/// Every call with every error it knows, once and onwards, at up to `most` places each among the calls that a
/// session makes, besides so many sessions that are cut.
std::vector<Case> MakeCases(const std::array<unsigned, CallCount>& callsOfASession, unsigned most,
                            unsigned cuts, std::uint64_t seed);

} // namespace Torture
