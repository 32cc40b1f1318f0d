#include "KesraNTC/platform/posix/sockets/private/SocketSlot.h"
#include "KesraNTC/platform/private/EventHandle.h"
#include "tests/platform/SocketFixture.h"
#include "tests/support/posix/FailingCalls.h"

#include <cerrno>
#include <thread>
#include <vector>

namespace
{

using Kesra::EventHandle;

constexpr DWORD Limit = 10000;

using FailuresTest = SocketTest;

int SystemOption(SOCKET socket, int level, int option)
{
    int value = -1;
    socklen_t size = sizeof value;
    const int descriptor = Kesra::SocketSlot::Find(socket)->GetDescriptor();
    EXPECT_EQ(0, ::getsockopt(descriptor, level, option, &value, &size));
    return value;
}

TEST_F(FailuresTest, AnInterruptedConnectGoesOnToItsEnd)
{
    {
        const Failing interrupted(SystemCall::Connect, EINTR);
        const Failing again(SystemCall::Poll, EINTR, 3);
        EXPECT_EQ(0, Server.Connect(Client));
        EXPECT_EQ(3, again.GetFailures());
    }
    EXPECT_EQ(4, send(Client, "data", 4, 0));
    {
        const Failing interrupted(SystemCall::Connect, EINTR);
        const Failing poll(SystemCall::Poll, ENOMEM);
        const TestSocket socket;
        EXPECT_EQ(SOCKET_ERROR, Server.Connect(socket));
        EXPECT_EQ(WSAENOBUFS, WSAGetLastError());
    }
    const Failing interrupted(SystemCall::Connect, EINTR);
    const TestSocket socket;
    const Failing option(SystemCall::GetSocketOption, ENOBUFS);
    EXPECT_EQ(SOCKET_ERROR, Server.Connect(socket));
    EXPECT_EQ(WSAENOBUFS, WSAGetLastError());
}

TEST_F(FailuresTest, AConnectThatCannotBeginIsNotUnderWay)
{
    u_long on = 1;
    ASSERT_EQ(0, ioctlsocket(Client, FIONBIO, &on));
    const Failing refused(SystemCall::Connect, EAGAIN);
    EXPECT_EQ(SOCKET_ERROR, Server.Connect(Client));
    EXPECT_EQ(WSAENOBUFS, WSAGetLastError());
}

TEST_F(FailuresTest, OptionsThatCannotBeReadSaySo)
{
    const Failing option(SystemCall::GetSocketOption, ENOBUFS);
    for (const int name : {SO_DONTLINGER, SO_KEEPALIVE, SO_SNDBUF}) {
        int value = 0;
        int size = sizeof value;
        EXPECT_EQ(SOCKET_ERROR, getsockopt(Client, SOL_SOCKET, name, reinterpret_cast<char*>(&value), &size));
        EXPECT_EQ(WSAENOBUFS, WSAGetLastError());
    }
    int error = 0;
    int size = sizeof error;
    // It answers what is wrong with the socket: that, for one.
    EXPECT_EQ(0, getsockopt(Client, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size));
    EXPECT_EQ(WSAENOBUFS, error);
}

TEST_F(FailuresTest, AWaitGoesOnWhereTheSystemCannotPoll)
{
    Connect();
    char data[4];
    Operation read;
    {
        ASSERT_EQ(WSA_IO_PENDING, read.Receive(Client, data, 4));
        PeerSends("data");
        const Failing interrupted(SystemCall::WaitingPoll, EINTR, 3);
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(read.Event(), Limit));
        EXPECT_EQ(0, read.Result(Client));
        EXPECT_EQ(3, interrupted.GetFailures());
    }
    // What has come is found even if it never can, and without spinning meanwhile.
    ASSERT_EQ(WSA_IO_PENDING, read.Receive(Client, data, 4));
    const Failing poll(SystemCall::WaitingPoll, ENOMEM);
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(read.Event(), 50));
    EXPECT_LE(poll.GetFailures(), 11);
    PeerSends("data");
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(read.Event(), Limit));
    EXPECT_EQ(0, read.Result(Client));
}

TEST_F(FailuresTest, AResolverThatNeverHasEnoughMemoryIsGivenUp)
{
    std::thread fresh([] {
        {
            const Failing memory(SystemCall::NewWithoutThrow, ENOMEM);
            EXPECT_EQ(nullptr, gethostbyname("localhost"));
            EXPECT_EQ(WSANO_RECOVERY, WSAGetLastError());
        }
        {
            const Failing resolver(SystemCall::ResolveName, ERANGE);
            EXPECT_EQ(nullptr, gethostbyname("localhost"));
            EXPECT_EQ(WSANO_RECOVERY, WSAGetLastError());
            // 1 KiB doubles to 64.
            EXPECT_EQ(7, resolver.GetFailures());
        }
        EXPECT_NE(nullptr, gethostbyname("localhost"));
    });
    fresh.join();
}

TEST_F(FailuresTest, ReadingAheadWithoutMemoryFailsTheRead)
{
    Connect();
    char data[4];
    Operation read;
    const Failing memory(SystemCall::MapMemory, ENOMEM);
    ASSERT_EQ(WSA_IO_PENDING, read.Receive(Client, data, 4));
    ASSERT_TRUE(WaitForSingleObject(read.Event(), Limit) == WAIT_OBJECT_0);
    EXPECT_EQ(WSAENOBUFS, read.Result(Client));
    EXPECT_EQ(nullptr, VirtualAlloc(nullptr, 1, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    EXPECT_EQ(ERROR_NOT_ENOUGH_MEMORY, GetLastError());
}

TEST_F(FailuresTest, WithoutMemoryThereIsNoEventAndNoSocketButAnError)
{
    const Failing memory(SystemCall::NewWithoutThrow, ENOMEM);
    const HANDLE event = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    EXPECT_EQ(nullptr, event);
    EXPECT_EQ(ERROR_NOT_ENOUGH_MEMORY, GetLastError());
    EXPECT_EQ(WAIT_FAILED, WaitForSingleObject(event, INFINITE));
    EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());

    // More than the places that other tests have left behind.
    constexpr std::size_t Most = 700;
    std::vector<TestSocket> sockets;
    sockets.reserve(Most);
    while (sockets.size() < Most && (sockets.empty() || sockets.back() != INVALID_SOCKET))
        sockets.emplace_back();
    EXPECT_EQ(INVALID_SOCKET, sockets.back());
    EXPECT_EQ(WSAENOBUFS, WSAGetLastError());
}

// The thread waits for the first time, and others wake it, when nothing can be allocated any more.
TEST_F(FailuresTest, AWaitNeedsNoMemory)
{
    const EventHandle event(EventHandle::AutoReset);
    const EventHandle answer(EventHandle::AutoReset);
    std::thread fresh([&] {
        const Failing memory(SystemCall::NewWithoutThrow, ENOMEM);
        const Failing throwing(SystemCall::New, ENOMEM);
        EXPECT_FALSE(event.Wait(1));
        answer.Set();
        EXPECT_TRUE(event.Wait(Limit));
    });
    EXPECT_TRUE(answer.Wait(Limit));
    event.Set();
    fresh.join();
}

/// The lowest number that a new descriptor would get.
int NextDescriptor()
{
    const int next = dup(0);
    close(next);
    return next;
}

TEST_F(FailuresTest, AFileWithoutAnObjectIsClosedAgain)
{
    const int next = NextDescriptor();
    const Failing memory(SystemCall::NewWithoutThrow, ENOMEM);
    EXPECT_EQ(INVALID_HANDLE_VALUE, CreateFileA("/dev/null", GENERIC_READ, FILE_SHARE_READ, nullptr,
                                                OPEN_EXISTING, FILE_ATTRIBUTE_ARCHIVE, nullptr));
    EXPECT_EQ(ERROR_NOT_ENOUGH_MEMORY, GetLastError());
    EXPECT_EQ(next, NextDescriptor());
}

/// In a process of its own: what is made at the first use lasts.
TEST_F(FailuresTest, WhatCannotBeMadeAtTheFirstUseIsMadeLater)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto tryIt = [this] {
        const auto wide = [] {
            WCHAR character = 0;
            MultiByteToWideChar(949, 0, "\xB0\xA1", 2, &character, 1);
            return character;
        };
        Connect();
        const int next = NextDescriptor();
        std::thread([&] {
            const Failing converter(SystemCall::OpenConverter, EMFILE);
            const Failing key(SystemCall::CreateKey, EAGAIN);
            EXPECT_EQ(u'?', wide());
            EXPECT_EQ(nullptr, gethostbyname("localhost"));
            char data[4];
            Operation read;
            ASSERT_EQ(WSA_IO_PENDING, read.Receive(Client, data, 4));
            EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(read.Event(), 1));
            PeerSends("data");
            EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(read.Event(), Limit));
        }).join();
        EXPECT_EQ(next, NextDescriptor());
        EXPECT_EQ(0xAC00, wide());
        EXPECT_NE(nullptr, gethostbyname("localhost"));
        std::_Exit(HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(tryIt(), testing::ExitedWithCode(0), "");
}

TEST_F(FailuresTest, KeepAliveTimesAreWholeSecondsOfTheSystem)
{
    const auto set = [&](tcp_keepalive values) {
        DWORD returned = 1;
        EXPECT_EQ(0, WSAIoctl(Client, SIO_KEEPALIVE_VALS, &values, sizeof values, nullptr, 0, &returned,
                              nullptr, nullptr));
        EXPECT_EQ(0U, returned);
    };
    set({1, 30000, 1001});
    EXPECT_EQ(1, SystemOption(Client, SOL_SOCKET, SO_KEEPALIVE));
    EXPECT_EQ(30, SystemOption(Client, IPPROTO_TCP, TCP_KEEPIDLE));
    EXPECT_EQ(2, SystemOption(Client, IPPROTO_TCP, TCP_KEEPINTVL));
    EXPECT_EQ(10, SystemOption(Client, IPPROTO_TCP, TCP_KEEPCNT));
    set({1, 0, 0xFFFFFFFF});
    EXPECT_EQ(1, SystemOption(Client, IPPROTO_TCP, TCP_KEEPIDLE));
    EXPECT_EQ(32767, SystemOption(Client, IPPROTO_TCP, TCP_KEEPINTVL));
    set({0, 0, 0});
    EXPECT_EQ(0, SystemOption(Client, SOL_SOCKET, SO_KEEPALIVE));
    const int seconds = 30;
    EXPECT_EQ(0, setsockopt(Client, IPPROTO_TCP, TCP_MAXRT, reinterpret_cast<const char*>(&seconds),
                            sizeof seconds));
    EXPECT_EQ(30000, SystemOption(Client, IPPROTO_TCP, TCP_USER_TIMEOUT));
}

void SetArgument(void* event)
{
    static_cast<const EventHandle*>(event)->Set();
}

TEST(ThreadFailures, EveryStepThatFailsIsReported)
{
    const EventHandle ran(EventHandle::AutoReset);
    void* argument = const_cast<EventHandle*>(&ran);
    constexpr auto Failed = static_cast<std::uintptr_t>(-1);
    for (const SystemCall call :
         {SystemCall::SetDetached, SystemCall::SetStackSize, SystemCall::CreateThread}) {
        const Failing step(call, EPERM);
        errno = 0;
        EXPECT_EQ(Failed, _beginthread(SetArgument, 1 << 20, argument));
        EXPECT_EQ(EPERM, errno);
        EXPECT_EQ(1, step.GetFailures());
    }
    {
        const Failing memory(SystemCall::NewWithoutThrow, ENOMEM);
        EXPECT_EQ(Failed, _beginthread(SetArgument, 0, argument));
        EXPECT_EQ(ENOMEM, errno);
    }
    EXPECT_FALSE(ran.Wait(0));
    // As the real one rounds it up.
    ASSERT_NE(Failed, _beginthread(SetArgument, 1, argument));
    EXPECT_TRUE(ran.Wait(Limit));
}

} // namespace
