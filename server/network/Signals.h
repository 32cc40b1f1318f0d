#pragma once

namespace Kesra
{

/// Blocks until the process is asked to end (SIGINT, SIGTERM).
void WaitForEndSignal();

/// Writing to a pipe that nobody reads any more fails from now on, where it would end the process.
void IgnoreBrokenPipes();

} // namespace Kesra
