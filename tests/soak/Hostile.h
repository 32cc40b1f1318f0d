#pragma once

#include "tests/soak/Traveller.h"

#include <cstddef>

namespace Soak
{

/// How many kinds of hostile servers there are.
std::size_t HostileKinds();

/// Visits a hostile server of that kind and comes back, or throws.
void VisitHostile(Traveller& traveller, std::size_t kind);

} // namespace Soak
