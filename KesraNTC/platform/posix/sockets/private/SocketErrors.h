#pragma once

#include "KesraNTC/platform/posix/sockets/Sockets.h"

namespace Kesra
{

/// The Winsock number of an errno value.
int SocketErrorFromErrno(int code);

/// Sets the thread's last error and returns SOCKET_ERROR.
int FailSocketCall(int socketError);

} // namespace Kesra
