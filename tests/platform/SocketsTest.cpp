#include "KesraNTC/platform/private/EventHandle.h"
#include "tests/platform/SocketFixture.h"

#include <cstring>
#include <thread>

namespace
{

int IntOption(SOCKET socket, int option, int level = SOL_SOCKET)
{
    int value = -2;
    int size = sizeof value;
    EXPECT_EQ(0, getsockopt(socket, level, option, reinterpret_cast<char*>(&value), &size));
    return value;
}

int SetIntOption(SOCKET socket, int option, int value, int level = SOL_SOCKET)
{
    return setsockopt(socket, level, option, reinterpret_cast<const char*>(&value), sizeof value);
}

int SetKeepAlive(SOCKET socket, tcp_keepalive values, DWORD size = sizeof(tcp_keepalive))
{
    DWORD returned = 0;
    return WSAIoctl(socket, SIO_KEEPALIVE_VALS, &values, size, nullptr, 0, &returned, nullptr, nullptr);
}

void SetNonBlocking(SOCKET socket)
{
    u_long on = 1;
    ASSERT_EQ(0, ioctlsocket(socket, FIONBIO, &on));
}

TEST_F(SocketTest, OptionsReadBackAsTheyWereSet)
{
    for (const int value : {0, 1, 1503, 20000}) {
        EXPECT_EQ(0, SetIntOption(Client, SO_RCVTIMEO, value));
        EXPECT_EQ(value, IntOption(Client, SO_RCVTIMEO));
        EXPECT_EQ(0, SetIntOption(Client, SO_SNDTIMEO, value + 1));
        EXPECT_EQ(value + 1, IntOption(Client, SO_SNDTIMEO));
    }
    for (const int value : {0, 500, 4096, 20001, 65536}) {
        EXPECT_EQ(0, SetIntOption(Client, SO_SNDBUF, value));
        EXPECT_EQ(value, IntOption(Client, SO_SNDBUF));
        EXPECT_EQ(0, SetIntOption(Client, SO_RCVBUF, value));
        EXPECT_EQ(value, IntOption(Client, SO_RCVBUF));
    }
    EXPECT_EQ(0, SetIntOption(Client, SO_DONTLINGER, 1));
    EXPECT_EQ(0, IntOption(Client, SO_ERROR));
}

TEST_F(SocketTest, KeepAliveTakesItsTimes)
{
    EXPECT_EQ(0, SetKeepAlive(Client, {1, 30000, 1500}));
    EXPECT_EQ(0, SetKeepAlive(Client, {0, 0, 0}));
    EXPECT_EQ(0, SetKeepAlive(Client, {1, 1, 0xFFFFFFFF}));
    EXPECT_EQ(SOCKET_ERROR, SetKeepAlive(Client, {1, 30000, 1500}, sizeof(u_long)));
    EXPECT_EQ(WSAEFAULT, WSAGetLastError());
    EXPECT_EQ(SOCKET_ERROR, SetKeepAlive(INVALID_SOCKET, {1, 30000, 1500}));
    EXPECT_EQ(WSAENOTSOCK, WSAGetLastError());
}

TEST_F(SocketTest, TheRetransmissionLimitReadsBackAsItWasSet)
{
    if (KESRANTC_UNDER_WINE) {
        // Wine does not know the option.
        EXPECT_EQ(SOCKET_ERROR, SetIntOption(Client, TCP_MAXRT, 30, IPPROTO_TCP));
        return;
    }
    EXPECT_EQ(0, IntOption(Client, TCP_MAXRT, IPPROTO_TCP));
    for (const int seconds : {30, 3000000, -1, 0}) {
        EXPECT_EQ(0, SetIntOption(Client, TCP_MAXRT, seconds, IPPROTO_TCP));
        EXPECT_EQ(seconds, IntOption(Client, TCP_MAXRT, IPPROTO_TCP));
    }
    EXPECT_EQ(SOCKET_ERROR, SetIntOption(Client, TCP_MAXRT, -2, IPPROTO_TCP));
    EXPECT_EQ(0, SetIntOption(Client, TCP_NODELAY, 1, IPPROTO_TCP));
    EXPECT_EQ(1, IntOption(Client, TCP_NODELAY, IPPROTO_TCP));
}

// A peer that leaves the window shut acknowledges nothing new: only this limit, not keep-alive, ends that.
TEST_F(SocketTest, APeerThatTakesNothingFailsTheConnectionAtTheRetransmissionLimit)
{
    Connect();
    if (KESRANTC_UNDER_WINE)
        return;
    ASSERT_EQ(0, SetIntOption(Client, TCP_MAXRT, 1, IPPROTO_TCP));
    const Kesra::EventHandle ended(Kesra::EventHandle::AutoReset);
    ASSERT_EQ(0, WSAEventSelect(Client, ended.Get(), FD_CLOSE));
    const std::string text(64 * 1024, 'x');
    while (send(Client, text.data(), text.size(), 0) > 0) {
    }
    ASSERT_EQ(WSAEWOULDBLOCK, WSAGetLastError());
    ASSERT_TRUE(::Test::Await("the connection fails", ended));
    WSANETWORKEVENTS events{};
    ASSERT_EQ(0, WSAEnumNetworkEvents(Client, ended.Get(), &events));
    EXPECT_EQ(FD_CLOSE, events.lNetworkEvents);
    EXPECT_EQ(WSAETIMEDOUT, events.iErrorCode[FD_CLOSE_BIT]);
    EXPECT_EQ(SOCKET_ERROR, send(Client, "x", 1, 0));
    EXPECT_EQ(WSAETIMEDOUT, WSAGetLastError());
}

TEST_F(SocketTest, WhatIsNoSocketFailsEveryCall)
{
    const SOCKET closed = TestSocket();
    char data[4];
    int size = sizeof data;
    for (const SOCKET socket : {closed, static_cast<SOCKET>(INVALID_SOCKET)}) {
        WSASetLastError(0);
        EXPECT_EQ(SOCKET_ERROR, closesocket(socket));
        EXPECT_EQ(WSAENOTSOCK, WSAGetLastError());
        EXPECT_EQ(SOCKET_ERROR, shutdown(socket, SD_BOTH));
        EXPECT_EQ(SOCKET_ERROR, SetIntOption(socket, SO_SNDBUF, 4096));
        EXPECT_EQ(SOCKET_ERROR, getsockopt(socket, SOL_SOCKET, SO_SNDBUF, data, &size));
        EXPECT_EQ(SOCKET_ERROR, recv(socket, data, 4, 0));
        EXPECT_EQ(SOCKET_ERROR, Server.Connect(socket));
        Operation operation;
        EXPECT_EQ(WSAENOTSOCK, operation.Receive(socket, data, 4));
        EXPECT_EQ(WSAENOTSOCK, operation.Send(socket, data, 4));
    }
}

TEST_F(SocketTest, AShutdownBeforeTheConnectionIsRefusedAndForgotten)
{
    EXPECT_EQ(SOCKET_ERROR, shutdown(Client, SD_BOTH));
    EXPECT_EQ(WSAENOTCONN, WSAGetLastError());
    ASSERT_EQ(0, Server.Connect(Client));
    EXPECT_EQ(4, send(Client, "data", 4, 0));
}

TEST_F(SocketTest, ARefusedConnectionAndAnUnconnectedSocketSayWhy)
{
    char data[4] = {};
    EXPECT_EQ(SOCKET_ERROR, send(Client, data, 4, 0));
    // Wine passes on the broken pipe of the system below it.
    EXPECT_EQ(KESRANTC_UNDER_WINE ? WSAECONNRESET : WSAENOTCONN, WSAGetLastError());
    Operation operation;
    EXPECT_EQ(WSAENOTCONN, operation.Receive(Client, data, 4));
    Server.Close();
    EXPECT_EQ(SOCKET_ERROR, Server.Connect(Client));
    EXPECT_EQ(WSAECONNREFUSED, WSAGetLastError());
}

TEST_F(SocketTest, ReceivingGivesUpAfterItsTimeOut)
{
    Connect();
    char data[4];
    ASSERT_EQ(0, SetIntOption(Client, SO_RCVTIMEO, 10));
    EXPECT_EQ(SOCKET_ERROR, recv(Client, data, 4, 0));
    EXPECT_EQ(WSAETIMEDOUT, WSAGetLastError());
}

TEST_F(SocketTest, ANonBlockingSocketTakesWhatFitsAndTheRestGoesOverlapped)
{
    Connect();
    SetNonBlocking(Client);
    char received = 0;
    EXPECT_EQ(SOCKET_ERROR, recv(Client, &received, 1, 0));
    EXPECT_EQ(WSAEWOULDBLOCK, WSAGetLastError());

    const std::string text(3000, 'x');
    WSABUF buffer{static_cast<ULONG>(text.size()), const_cast<char*>(text.data())};
    std::size_t total = 0;
    DWORD sent = 0;
    while (WSASend(Client, &buffer, 1, &sent, 0, nullptr, nullptr) == 0)
        total += sent;
    ASSERT_EQ(WSAEWOULDBLOCK, WSAGetLastError());
    Operation rest;
    const int begun = rest.Send(Client, text.data(), text.size());
    EXPECT_TRUE(begun == 0 || begun == WSA_IO_PENDING);
    total += text.size();

    std::thread reader([&] {
        std::string all(total, '\0');
        ReceiveAll(*Peer, all.data(), static_cast<int>(total));
        EXPECT_EQ(std::string::npos, all.find_first_not_of('x'));
    });
    EXPECT_EQ(0, rest.Harvest(Client));
    EXPECT_EQ(text.size(), rest.Transferred);
    reader.join();
}

TEST_F(SocketTest, NamesResolveOrFailWithAnError)
{
    const hostent* found = gethostbyname("localhost");
    ASSERT_NE(nullptr, found);
    ASSERT_EQ(AF_INET, found->h_addrtype);
    in_addr address;
    std::memcpy(&address, found->h_addr_list[0], sizeof address);
    EXPECT_EQ(inet_addr("127.0.0.1"), address.s_addr);

    WSASetLastError(0);
    // Too long for a name, so that nobody needs to be asked.
    EXPECT_EQ(nullptr, gethostbyname((std::string(70, 'a') + ".invalid").c_str()));
    EXPECT_GE(WSAGetLastError(), WSAHOST_NOT_FOUND);
    EXPECT_EQ(INADDR_NONE, inet_addr("localhost"));
}

TEST(Winsock, WantsToBeStarted)
{
    WSADATA data;
    EXPECT_EQ(WSAVERNOTSUPPORTED, WSAStartup(0, &data));
    EXPECT_EQ(INVALID_SOCKET, WSASocketA(AF_INET, SOCK_STREAM, 0, nullptr, 0, WSA_FLAG_OVERLAPPED));
    EXPECT_EQ(WSANOTINITIALISED, WSAGetLastError());
    EXPECT_EQ(SOCKET_ERROR, WSACleanup());
}

} // namespace
