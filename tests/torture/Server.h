#pragma once

#include "tests/torture/Outcome.h"

#include <sys/types.h>

namespace Torture
{

// What the client's chat lines ask for; each begins with its number on its connection, counted from 1.
//   "N push K"   K numbered chat lines, with lists and clock messages in between
//   "N rest"     for a while nothing is read
//   "N close", "N reset"   the connection ends
// CS_CancelDeleteAvatar pushes as many lines as its value says and then answers how many chat lines have
// come.

/// A server in a process of its own, in which nothing fails. It ends with the process that started it.
struct ServerProcess {
    pid_t Process = -1;
    unsigned short Port = 0;
};

/// What it finds wrong goes into the outcome, which the processes share.
ServerProcess StartServer(Outcome& outcome);

} // namespace Torture
