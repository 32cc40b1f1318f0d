// A server that neither acknowledges nor answers: its socket drops everything that arrives.

#include "KesraNTC/KesraNTC.h"
#include "KesraNTC/platform/posix/sockets/private/SocketSlot.h"
#include "tests/support/GameClient.h"
#include "tests/support/LogDirectory.h"

#include <gtest/gtest.h>

#include <linux/filter.h>

#include <sys/socket.h>

using Test::BytesOf;
using Test::GameClient;
using Test::Peer;

namespace
{

class SilentPeer : public testing::Test
{
protected:
    SilentPeer() { Game.SetSilenceLimit(2); }

    /// From now on the server is as good as unplugged.
    void Unplug()
    {
        sock_filter dropAll{BPF_RET | BPF_K, 0, 0, 0};
        const sock_fprog program{1, &dropAll};
        ASSERT_EQ(::setsockopt(Server.Descriptor(), SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program),
                  0);
    }
    void ExpectTheEnd()
    {
        EXPECT_TRUE(Game.WaitForReceiveThread(60000));
        EXPECT_EQ(Game.Disconnections, 1);
        EXPECT_EQ(Game.GetEndReason(), END_SILENT_PEER);
        EXPECT_EQ(Game.GetEndError(), 10060U);
        EXPECT_TRUE(Log.HasLine("error!!! WSAGetOverlappedResult() : error 10060"));
    }

    LogDirectory Log;
    Peer Server;
    GameClient Game;
};

TEST_F(SilentPeer, EndsAnIdleConnection)
{
    ASSERT_TRUE(Game.ConnectTo(Server));
    Unplug();
    ExpectTheEnd();
}

TEST_F(SilentPeer, EndsAConnectionWithBytesInFlight)
{
    ASSERT_TRUE(Game.ConnectTo(Server));
    Unplug();
    EXPECT_EQ(Game.Requests.CS_EnterSession(), GS_OK);
    ExpectTheEnd();
}

TEST_F(SilentPeer, EndsOneWhoseReadingHasPaused)
{
    Game.SetBacklogLimit(0);
    ASSERT_TRUE(Game.ConnectTo(Server));
    Server.Send(BytesOf(::Test::Chat("paused now")));
    Game.WaitForBytes(::Test::Chat("paused now").GetBufSize());
    Unplug();
    ExpectTheEnd();
}

TEST_F(SilentPeer, IsAskedAfterHalfTheLimitAndTenTimesMore)
{
    const auto option = [this](int level, int name) {
        int value = -1;
        socklen_t size = sizeof value;
        const auto* place = Kesra::SocketSlot::Find(static_cast<SOCKET>(Game.GetSocket()));
        EXPECT_EQ(::getsockopt(place->GetDescriptor(), level, name, &value, &size), 0);
        return value;
    };
    Game.SetSilenceLimit(60);
    ASSERT_TRUE(Game.ConnectTo(Server));
    EXPECT_EQ(option(SOL_SOCKET, SO_KEEPALIVE), 1);
    EXPECT_EQ(option(IPPROTO_TCP, TCP_KEEPIDLE), 30);
    EXPECT_EQ(option(IPPROTO_TCP, TCP_KEEPINTVL), 3);
    EXPECT_EQ(option(IPPROTO_TCP, TCP_KEEPCNT), 10);
    EXPECT_EQ(option(IPPROTO_TCP, TCP_USER_TIMEOUT), 60000);
    Game.SetSilenceLimit(0);
    EXPECT_EQ(option(SOL_SOCKET, SO_KEEPALIVE), 0);
    EXPECT_EQ(option(IPPROTO_TCP, TCP_USER_TIMEOUT), 0);
}

TEST_F(SilentPeer, ALaterLimitActsAtOnce)
{
    Game.SetSilenceLimit(0);
    ASSERT_TRUE(Game.ConnectTo(Server));
    Unplug();
    Game.SetSilenceLimit(2);
    ExpectTheEnd();
}

} // namespace
