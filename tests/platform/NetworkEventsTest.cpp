#include "KesraNTC/platform/private/EventHandle.h"
#include "tests/platform/SocketFixture.h"

#include <array>
#include <thread>

namespace
{

using Kesra::EventHandle;

constexpr DWORD Limit = 10000;

class NetworkEventsTest : public SocketTest
{
protected:
    int Select(long events)
    {
        return WSAEventSelect(Client, Event.Get(), events) == 0 ? 0 : WSAGetLastError();
    }

    int BeginConnecting() { return Server.Connect(Client) == 0 ? 0 : WSAGetLastError(); }

    // What was recorded since the last time.
    WSANETWORKEVENTS Enumerate()
    {
        WSANETWORKEVENTS events{};
        EXPECT_EQ(0, WSAEnumNetworkEvents(Client, Event.Get(), &events));
        return events;
    }

    void ExpectConnected()
    {
        ASSERT_TRUE(Event.Wait(Limit));
        const WSANETWORKEVENTS events = Enumerate();
        ASSERT_EQ(FD_CONNECT, events.lNetworkEvents);
        ASSERT_EQ(0, events.iErrorCode[FD_CONNECT_BIT]);
        EXPECT_FALSE(Event.Wait(0));
        Peer.emplace(Server.Accept());
    }

    // The error that the end of the connection was told with; -1 when it was not told.
    int AwaitClose()
    {
        if (!Event.Wait(Limit))
            return -1;
        const WSANETWORKEVENTS events = Enumerate();
        return events.lNetworkEvents == FD_CLOSE ? events.iErrorCode[FD_CLOSE_BIT] : -1;
    }

    void ExpectReset()
    {
        const int error = AwaitClose();
        // Wine tells the end, but not always that it was a reset.
        EXPECT_TRUE(error == WSAECONNRESET || (KESRANTC_UNDER_WINE && error >= 0)) << error;
    }

    // Closing a socket that has unread data resets its connection.
    void PeerResets()
    {
        WSABUF buffer{4, const_cast<char*>("left")};
        DWORD sent = 0;
        ASSERT_EQ(0, WSASend(Client, &buffer, 1, &sent, 0, nullptr, nullptr));
        char data[1];
        ReceiveAll(*Peer, data, 1);
        Peer->Close();
    }

    EventHandle Event{EventHandle::AutoReset};
};

TEST_F(NetworkEventsTest, TheEndOfAnAttemptIsToldOnce)
{
    ASSERT_EQ(0, Select(FD_CONNECT | FD_CLOSE));
    EXPECT_FALSE(Event.Wait(0));
    EXPECT_EQ(0, Enumerate().lNetworkEvents);
    ASSERT_EQ(WSAEWOULDBLOCK, BeginConnecting());
    ExpectConnected();
    EXPECT_EQ(0, Enumerate().lNetworkEvents);
    EXPECT_EQ(WSAEISCONN, BeginConnecting());

    char data[4];
    Operation read;
    ASSERT_EQ(WSA_IO_PENDING, read.Receive(Client, data, 4));
    PeerSends("data");
    EXPECT_EQ(0, read.Harvest(Client));
    EXPECT_EQ("data", std::string(data, read.Transferred));
}

TEST_F(NetworkEventsTest, AThreadThatWaitsAlreadyHearsOfALaterAttempt)
{
    ASSERT_EQ(0, Select(FD_CONNECT | FD_CLOSE));
    EventHandle waiting{EventHandle::AutoReset};
    std::thread waiter([&] {
        waiting.Set();
        EXPECT_TRUE(Event.Wait(Limit));
    });
    EXPECT_TRUE(waiting.Wait(Limit));
    EXPECT_EQ(WSAEWOULDBLOCK, BeginConnecting());
    waiter.join();
    const WSANETWORKEVENTS events = Enumerate();
    EXPECT_EQ(FD_CONNECT, events.lNetworkEvents);
    EXPECT_EQ(0, events.iErrorCode[FD_CONNECT_BIT]);
}

TEST_F(NetworkEventsTest, AnAttemptThatBeganBeforeIsToldToo)
{
    u_long on = 1;
    ASSERT_EQ(0, ioctlsocket(Client, FIONBIO, &on));
    ASSERT_EQ(WSAEWOULDBLOCK, BeginConnecting());
    ASSERT_EQ(0, Select(FD_CONNECT));
    ExpectConnected();
}

TEST_F(NetworkEventsTest, ARefusedAttemptIsToldWithItsError)
{
    ASSERT_EQ(0, Select(FD_CONNECT | FD_CLOSE));
    Server.Close();
    ASSERT_EQ(WSAEWOULDBLOCK, BeginConnecting());
    ASSERT_TRUE(Event.Wait(Limit));
    const WSANETWORKEVENTS events = Enumerate();
    EXPECT_EQ(FD_CONNECT, events.lNetworkEvents);
    EXPECT_EQ(WSAECONNREFUSED, events.iErrorCode[FD_CONNECT_BIT]);
    EXPECT_EQ(0, Enumerate().lNetworkEvents);
    EXPECT_FALSE(Event.Wait(1));
}

TEST_F(NetworkEventsTest, AResetIsToldWithDataUnreadAndToTheReadsBehindIt)
{
    ASSERT_EQ(0, Select(FD_CONNECT | FD_CLOSE));
    ASSERT_EQ(WSAEWOULDBLOCK, BeginConnecting());
    ExpectConnected();
    PeerSends("unread");
    EXPECT_FALSE(Event.Wait(1));
    PeerResets();
    ExpectReset();
    EXPECT_EQ(0, Enumerate().lNetworkEvents);
    EXPECT_FALSE(Event.Wait(0));
    // Windows forgets unread data.
    if (KESRANTC_UNDER_WINE)
        return;
    char data[16];
    Operation read;
    ASSERT_TRUE(HasBegun(read.Receive(Client, data, sizeof data)));
    ASSERT_EQ(0, read.Harvest(Client));
    EXPECT_EQ("unread", std::string(data, read.Transferred));
    ASSERT_TRUE(HasBegun(read.Receive(Client, data, sizeof data)));
    EXPECT_EQ(WSAECONNRESET, read.Harvest(Client));
    EXPECT_EQ(WSAECONNRESET, read.Send(Client, data, 1));
}

TEST_F(NetworkEventsTest, AConnectionShutInBothDirectionsIsToldWithoutAnError)
{
    ASSERT_EQ(0, Select(FD_CLOSE));
    ASSERT_EQ(WSAEWOULDBLOCK, BeginConnecting());
    Peer.emplace(Server.Accept());
    EXPECT_FALSE(Event.Wait(1));
    ASSERT_EQ(0, shutdown(Client, SD_SEND));
    EXPECT_FALSE(Event.Wait(1));
    Peer->Close();
    EXPECT_EQ(0, AwaitClose());
}

TEST_F(NetworkEventsTest, WhatHoldsAlreadyIsToldAtOnce)
{
    Connect();
    char data[4];
    Operation read;
    ASSERT_EQ(WSA_IO_PENDING, read.Receive(Client, data, 4));
    PeerResets();
    EXPECT_EQ(WSAECONNRESET, read.Harvest(Client));
    // Each call asks anew; Wine tells the end once, and the read had it.
    for (int i = 0; i < (KESRANTC_UNDER_WINE ? 0 : 2); ++i) {
        ASSERT_EQ(0, Select(FD_CLOSE));
        EXPECT_TRUE(Event.Wait(0));
        const WSANETWORKEVENTS events = Enumerate();
        EXPECT_EQ(FD_CLOSE, events.lNetworkEvents);
        EXPECT_EQ(WSAECONNRESET, events.iErrorCode[FD_CLOSE_BIT]);
    }
}

TEST_F(NetworkEventsTest, TheAssociationEndsWhenAskedTo)
{
    ASSERT_EQ(0, Select(FD_CLOSE));
    u_long off = 0;
    EXPECT_EQ(SOCKET_ERROR, ioctlsocket(Client, FIONBIO, &off));
    EXPECT_EQ(WSAEINVAL, WSAGetLastError());
    EXPECT_EQ(0, WSAEventSelect(Client, nullptr, 0));
    EXPECT_EQ(0, ioctlsocket(Client, FIONBIO, &off));
    Connect();
    PeerResets();
    EXPECT_FALSE(Event.Wait(1));
    EXPECT_EQ(0, Enumerate().lNetworkEvents);
}

TEST_F(NetworkEventsTest, BadArgumentsAreRefused)
{
    EXPECT_EQ(SOCKET_ERROR, WSAEventSelect(Client, nullptr, FD_CLOSE));
    EXPECT_EQ(WSAEINVAL, WSAGetLastError());
    const SOCKET closed = TestSocket();
    WSANETWORKEVENTS events;
    EXPECT_EQ(SOCKET_ERROR, WSAEventSelect(closed, Event.Get(), FD_CLOSE));
    EXPECT_EQ(WSAENOTSOCK, WSAGetLastError());
    EXPECT_EQ(SOCKET_ERROR, WSAEnumNetworkEvents(closed, nullptr, &events));
    EXPECT_EQ(WSAENOTSOCK, WSAGetLastError());
    // Windows has more kinds of network events, and events that serve many; Wine believes every pointer.
    if (KESRANTC_UNDER_WINE)
        return;
    EXPECT_EQ(SOCKET_ERROR, WSAEnumNetworkEvents(Client, nullptr, nullptr));
    EXPECT_EQ(WSAEFAULT, WSAGetLastError());
    constexpr long Read = 1;
    EXPECT_EQ(WSAEINVAL, Select(Read | FD_CLOSE));
    ASSERT_EQ(0, Select(FD_CLOSE));
    const TestSocket other;
    EXPECT_EQ(SOCKET_ERROR, WSAEventSelect(other, Event.Get(), FD_CLOSE));
    EXPECT_EQ(WSAEINVAL, WSAGetLastError());
}

// The socket is closed while a thread waits for its event, which serves the next socket at once.
TEST_F(NetworkEventsTest, ClosingEndsTheAssociationUnderAWaiter)
{
    constexpr int Rounds = 200;
    const EventHandle stop(EventHandle::ManualReset);
    EventHandle waiting{EventHandle::AutoReset};
    std::thread waiter([&] {
        const std::array<HANDLE, 2> events{stop.Get(), Event.Get()};
        DWORD index = WAIT_OBJECT_0 + 1;
        while (index == WAIT_OBJECT_0 + 1) {
            waiting.Set();
            index = WaitForMultipleObjects(2, events.data(), FALSE, Limit);
        }
        EXPECT_EQ(WAIT_OBJECT_0, index);
    });
    EXPECT_TRUE(waiting.Wait(Limit));
    for (int i = 0; i < Rounds && !HasFailure(); ++i) {
        TestSocket socket;
        ASSERT_EQ(0, WSAEventSelect(socket, Event.Get(), FD_CONNECT | FD_CLOSE));
        EXPECT_EQ(SOCKET_ERROR, Server.Connect(socket));
        EXPECT_EQ(WSAEWOULDBLOCK, WSAGetLastError());
        // Some are closed while they connect.
        if (i % 2 == 0)
            Server.Accept();
    }
    stop.Set();
    waiter.join();
}

} // namespace
