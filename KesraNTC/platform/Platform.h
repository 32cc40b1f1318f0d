#pragma once

// The operating system under its Win32 names: the real headers on Windows, our own layer elsewhere.
#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#if defined(_WINSOCKAPI_) && !defined(_WINSOCK2API_)
// A game has included <windows.h> already: winsock2.h replaces its older Winsock all the same, but warns.
#undef _WINSOCKAPI_
#endif
#include <winsock2.h>
#include <ws2tcpip.h>
// Winsock comes before the rest of Windows.
#include <comdef.h>
#include <direct.h>
#include <io.h>
#include <mstcpip.h>
#include <oleauto.h>
#include <process.h>
#include <windows.h>
// Not every version of the headers has it.
#ifndef TCP_MAXRT
#define TCP_MAXRT 5
#endif
#else
#include "KesraNTC/platform/posix/Handles.h"
#include "KesraNTC/platform/posix/Types.h"
#include "KesraNTC/platform/posix/automation/Automation.h"
#include "KesraNTC/platform/posix/files/Clock.h"
#include "KesraNTC/platform/posix/files/FileTimes.h"
#include "KesraNTC/platform/posix/files/Files.h"
#include "KesraNTC/platform/posix/memory/VirtualMemory.h"
#include "KesraNTC/platform/posix/sockets/NetworkEvents.h"
#include "KesraNTC/platform/posix/sockets/Sockets.h"
#include "KesraNTC/platform/posix/text/CodePages.h"
#include "KesraNTC/platform/posix/text/Messages.h"
#include "KesraNTC/platform/posix/text/Multibyte.h"
#include "KesraNTC/platform/posix/waiting/CriticalSections.h"
#include "KesraNTC/platform/posix/waiting/Events.h"
#include "KesraNTC/platform/posix/waiting/Threads.h"
#endif
