#pragma once

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/rpc/MessageNumbers.h"

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Kesra
{

/// Answers what object ID an avatar's name stands for; "me" is whoever started the scenario.
using NameResolver = std::function<unsigned long(const std::string& name)>;

/// One message of a scenario: `Wait` after the one before, to `Target`.
struct ScenarioStep {
    std::chrono::milliseconds Wait{0};
    std::string Target; ///< "all", "me" or an avatar's name
    MessageNumber Number{};
    std::string Values;
    int Line = 0;

    /// Builds the message; throws std::runtime_error when a value does not fit its field.
    CNTPacket Build(const NameResolver& resolve) const;
};

struct Scenario {
    std::string Name; ///< of its file, say; may be empty
    std::vector<ScenarioStep> Steps;
    std::chrono::milliseconds FinalWait{0}; ///< behind the last step

    /// All its waits together.
    std::chrono::milliseconds Length() const;
    /// How a message names one of its lines: "gates.txt:4", or "line 4" when the scenario has no name.
    std::string Place(int line) const;
};

/// Reads a scenario, one message per line (docs/server.md); throws std::runtime_error naming the wrong line
/// and value and what would fit.
Scenario ParseScenario(std::string_view text, const std::string& name = {});

} // namespace Kesra
