#pragma once

namespace Kesra
{

/// Writes the prefix and the text of a Winsock error code to the log; codes without a text are not logged.
void LogSocketError(const char* prefix, int error);

} // namespace Kesra
