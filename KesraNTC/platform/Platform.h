#pragma once

// The operating system under its Win32 names: the real headers on Windows, our own layer elsewhere.
#ifdef _WIN32
// mbctype.h defines macros with names that this header uses.
#include <type_traits>
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <winsock2.h>
#include <ws2tcpip.h>
// Winsock comes before the rest of Windows.
#include <comdef.h>
#include <direct.h>
#include <io.h>
#include <mbctype.h>
#include <mbstring.h>
#include <oleauto.h>
#include <process.h>
#include <windows.h>
#else
#include "KesraNTC/platform/posix/Automation.h"
#include "KesraNTC/platform/posix/Clock.h"
#include "KesraNTC/platform/posix/CodePages.h"
#include "KesraNTC/platform/posix/CriticalSections.h"
#include "KesraNTC/platform/posix/Events.h"
#include "KesraNTC/platform/posix/FileTimes.h"
#include "KesraNTC/platform/posix/Files.h"
#include "KesraNTC/platform/posix/Handles.h"
#include "KesraNTC/platform/posix/Interlocked.h"
#include "KesraNTC/platform/posix/Messages.h"
#include "KesraNTC/platform/posix/Multibyte.h"
#include "KesraNTC/platform/posix/Sockets.h"
#include "KesraNTC/platform/posix/Threads.h"
#include "KesraNTC/platform/posix/Types.h"
#endif
