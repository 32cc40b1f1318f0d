// Memory and threads that run out end a connection, or fail a call, as any failure does.

#include "KesraNTC/KesraNTC.h"
#include "tests/support/GameClient.h"
#include "tests/support/LogDirectory.h"
#include "tests/support/Until.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <new>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <vector>

namespace
{

/// Allocations of at least so many bytes fail, on every thread.
std::atomic<std::size_t> FailsFrom{~std::size_t{0}};
/// Those fail that say so by null instead of an exception, as the making of events does.
std::atomic<bool> FailsByNull{false};

} // namespace

[[gnu::noinline]] void* operator new(std::size_t size)
{
    void* memory = size < FailsFrom ? std::malloc(size) : nullptr;
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return size < FailsFrom && !FailsByNull ? std::malloc(size) : nullptr;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

using Test::BytesOf;
using Test::GameClient;
using Test::Peer;
using Test::Until;

namespace
{

class NoMemory
{
public:
    explicit NoMemory(std::size_t from) { FailsFrom = from; }
    ~NoMemory() { FailsFrom = ~std::size_t{0}; }
};

/// The process may take hardly more address space than it has: enough for small things, not for a stack.
class NoAddressSpace
{
public:
    NoAddressSpace()
    {
        getrlimit(RLIMIT_AS, &Before);
        rlimit tight = Before;
        tight.rlim_cur = InUse() + (1 << 20);
        setrlimit(RLIMIT_AS, &tight);
    }
    ~NoAddressSpace() { setrlimit(RLIMIT_AS, &Before); }

    static std::size_t InUse()
    {
        std::size_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        return pages * 4096;
    }

private:
    rlimit Before{};
};

class Exhaustion : public testing::Test
{
protected:
    void ExpectEndForMemory()
    {
        EXPECT_TRUE(Game.WaitForReceiveThread(60000));
        EXPECT_EQ(Game.Disconnections, 1);
        EXPECT_EQ(Game.GetEndReason(), END_NO_MEMORY);
        EXPECT_TRUE(Log.HasLine("error!!! WSAGetOverlappedResult() : error 8"));
    }

    LogDirectory Log;
    Peer Server;
    GameClient Game;
};

/// A list that says it has ten thousand elements.
CNTPacket ListOf(short count)
{
    CNTPacket packet;
    packet << static_cast<unsigned short>(Kesra::SC_MONSTER_LIST) << static_cast<unsigned short>(0) << count;
    return packet;
}

TEST_F(Exhaustion, DecodingOnTheReceiveThread)
{
    Game.ProcessOnRecvThread = true;
    ASSERT_TRUE(Game.ConnectTo(Server));
    const NoMemory none(100000);
    Server.Send(BytesOf(ListOf(10000)));
    ExpectEndForMemory();
}

TEST_F(Exhaustion, DecodingOnTheGamesThread)
{
    ASSERT_TRUE(Game.ConnectTo(Server));
    Server.Send(BytesOf(ListOf(10000)) + BytesOf(::Test::Chat("behind")));
    Until("both have come", [&] { return Game.GetQueuedPackets() == 2; });
    {
        const NoMemory none(100000);
        EXPECT_THROW(Game.ProcessQueuedMessageFromServer(), std::bad_alloc);
    }
    Game.ProcessQueuedMessageFromServer();
    EXPECT_EQ(Game.Stub.Lines.size(), 1U);
}

TEST_F(Exhaustion, AReplyThatDoesNotFit)
{
    ASSERT_TRUE(Game.ConnectTo(Server));
    std::thread answering([&] {
        EXPECT_EQ(Server.Receive(12).size(), 12U);
        CNTPacket reply;
        reply << static_cast<unsigned short>(Kesra::GS_REPLY_10002) << static_cast<unsigned short>(0)
              << static_cast<short>(1) << static_cast<unsigned short>(5) << static_cast<short>(10000);
        Server.Send(BytesOf(reply));
    });
    CString account("a");
    CString password("b");
    unsigned short value = 0;
    unsigned long result = 77;
    std::vector<TAvatar> avatars;
    std::vector<TPrivData> privData;
    {
        const NoMemory none(100000);
        EXPECT_EQ(Game.Requests.CS_Logon(account, password, value, avatars, privData, result),
                  GS_REPLY_ERROR);
    }
    answering.join();
    EXPECT_EQ(value, 5);
    EXPECT_EQ(result, 3U);
    EXPECT_TRUE(Game.IsConnected());
}

TEST_F(Exhaustion, ARequestWithoutARecord)
{
    ASSERT_TRUE(Game.ConnectTo(Server));
    unsigned long result = 77;
    const NoMemory none(sizeof(CNestedReply));
    EXPECT_EQ(Game.Requests.CS_CancelDeleteAvatar(1, result), GS_REPLY_ERROR);
    EXPECT_EQ(result, 77U) << "nothing was sent";
    EXPECT_TRUE(Game.IsConnected());
    EXPECT_EQ(Game.GetStatistics().PacketsSent, 0U);
}

TEST_F(Exhaustion, EndingNeedsNoMemory)
{
    ASSERT_TRUE(Game.ConnectTo(Server));
    const NoMemory none(0);
    EXPECT_EQ(Game.GetEndReason(), END_NONE);
    Game.Disconnect();
    Game.WaitForEnd();
    EXPECT_EQ(Game.GetEndReason(), END_CLOSED_HERE);
}

/// In a process of its own: the stacks of threads that have ended are used again.
TEST_F(Exhaustion, AThreadThatCannotBeStarted)
{
    if (NoAddressSpace::InUse() > (std::size_t{1} << 40))
        GTEST_SKIP() << "a sanitizer has reserved the address space";
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto tryIt = [this] {
        Game.SetServerAddr("127.0.0.1");
        Game.SetServerPort(Server.Port());
        {
            const NoAddressSpace none;
            EXPECT_FALSE(Game.ConnectToServer());
        }
        EXPECT_FALSE(Game.IsConnected());
        EXPECT_EQ(Game.Disconnections, 0);
        EXPECT_TRUE(Log.HasLine("ConnectToServer() : error 8"));
        Server.Accept();
        EXPECT_TRUE(Game.ConnectTo(Server)) << "and later it can";
        std::_Exit(HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(tryIt(), testing::ExitedWithCode(0), "");
}

TEST_F(Exhaustion, AClientWithoutItsEvents)
{
    class Plain : public CNTMainClient
    {
    public:
        void ProcessDisconnection() override { ADD_FAILURE() << "there was no connection"; }
    };
    FailsByNull = true;
    Plain client;
    FailsByNull = false;
    client.Startup();
    client.SetServerAddr("127.0.0.1");
    client.SetServerPort(Server.Port());
    EXPECT_FALSE(client.ConnectToServer());
    EXPECT_FALSE(client.IsConnected());
    EXPECT_TRUE(Log.HasLine("socket() Failed : 8 "));
}

} // namespace
