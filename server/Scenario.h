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

/// Reads a scenario, one message per line (docs/server.md); throws std::runtime_error naming the wrong line.
std::vector<ScenarioStep> ParseScenario(std::string_view text);

} // namespace Kesra
