// Peers that have vanished without a word. A socket filter that drops everything stands for the cut cable.
#if __has_include(<linux/filter.h>)

#include "ServerTalk.h"

#include <gtest/gtest.h>

#include <linux/filter.h>
#include <sys/socket.h>

using namespace Kesra;
using namespace ServerTalk;

namespace
{

/// Nothing reaches the peer any more: its system acknowledges and answers nothing.
bool CutOff(RawPeer& peer)
{
    sock_filter drop{BPF_RET | BPF_K, 0, 0, 0};
    const sock_fprog program{1, &drop};
    return setsockopt(static_cast<int>(peer.Handle()), SOL_SOCKET, SO_ATTACH_FILTER, &program,
                      sizeof program) == 0;
}

class ServerTimeout : public testing::Test
{
protected:
    static ServerOptions OneSecond()
    {
        ServerOptions options = QuietOptions();
        options.Limits.PeerTimeout = std::chrono::seconds(1);
        return options;
    }
    void SetUp() override
    {
        ASSERT_EQ(Ask(Lost, LogonRequest("lost"), GS_REPLY_10002), 0U);
        ASSERT_EQ(Ask(Idle, LogonRequest("idle"), GS_REPLY_10002), 0U);
        ASSERT_TRUE(CutOff(Lost));
    }
    void ExpectOnlyTheLostOneDropped()
    {
        EXPECT_TRUE(server.WaitFor([](const ServerCounters& c) { return c.Ended == 1; }));
        EXPECT_TRUE(Logged(server, "connection 1 (127.0.0.1:" + std::to_string(Lost.Port()) +
                                       "): the peer has not answered for 1 s"));
        ExpectServed(Idle);
        EXPECT_EQ(server.GetCounters().Ended, 1U);
    }

    GameServer server{OneSecond()};
    RawPeer Lost{server.GetPort()};
    RawPeer Idle{server.GetPort()}; // silent as well, but its system answers
};

} // namespace

TEST_F(ServerTimeout, AnIdlePeerThatAnswersNoProbeIsDropped)
{
    ExpectOnlyTheLostOneDropped();
}

TEST_F(ServerTimeout, APeerThatAcknowledgesNothingIsDropped)
{
    // Bytes on their way keep the probes from being sent; their own time decides.
    server.PushAll(MessageOf(SC_EVENT29002));
    ExpectOnlyTheLostOneDropped();
}

#endif
