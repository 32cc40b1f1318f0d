#pragma once

#include "KesraNTC/platform/posix/sockets/Sockets.h"

constexpr int FD_CONNECT_BIT = 4;
constexpr int FD_CLOSE_BIT = 5;
constexpr int FD_MAX_EVENTS = 10;
constexpr long FD_CONNECT = 1 << FD_CONNECT_BIT;
constexpr long FD_CLOSE = 1 << FD_CLOSE_BIT;

using WSAEVENT = HANDLE;

/// Which events were recorded, and each one's outcome at the index of its bit: 0 or the error.
struct WSANETWORKEVENTS {
    long lNetworkEvents;
    int iErrorCode[FD_MAX_EVENTS];
};
using LPWSANETWORKEVENTS = WSANETWORKEVENTS*;

/// From now on `event` is set when one of `networkEvents` is recorded: FD_CONNECT when an attempt to connect
/// that `connect` left under way has ended; FD_CLOSE when the connection has failed or is shut in both
/// directions, whatever data is still unread. Other events are refused with WSAEINVAL. Makes the socket
/// non-blocking, forgets what was recorded before and records at once what holds already; `networkEvents` 0
/// ends it. Threads that wait for the event do the watching. An event serves one socket or overlapped
/// operation. Closing the socket ends it, too, and does not set the event.
KESRANTC_API int WSAEventSelect(SOCKET socket, WSAEVENT event, long networkEvents);

/// Hands out what was recorded, which is forgotten with that, and resets `event` unless it is null.
KESRANTC_API int WSAEnumNetworkEvents(SOCKET socket, WSAEVENT event, WSANETWORKEVENTS* networkEvents);
