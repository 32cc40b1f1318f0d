#pragma once

namespace Kesra
{

/// Blocks until the process is asked to end (SIGINT, SIGTERM).
void WaitForEndSignal();

} // namespace Kesra
