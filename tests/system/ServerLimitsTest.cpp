// What the server grants its clients all together, and what happens beyond.
#include "ServerTalk.h"

#include <gtest/gtest.h>

#include <list>
#include <memory>

using namespace Kesra;
using namespace ServerTalk;

TEST(ServerLimits, WhoeverComesBeyondTheLastConnectionIsTurnedAway)
{
    ServerOptions options = QuietOptions();
    options.Limits.Connections = 2;
    GameServer server(options);
    RawPeer first(server.GetPort());
    auto second = std::make_unique<RawPeer>(server.GetPort());
    ExpectServed(first);
    ExpectServed(*second);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(RawPeer(server.GetPort()).ReadToEnd().empty());
    EXPECT_TRUE(server.WaitFor([](const ServerCounters& c) { return c.TurnedAway == 3; }));
    EXPECT_TRUE(Logged(server, "all 2 connections are in use, more are turned away"));
    ExpectServed(first);

    // A place that becomes free is given away again.
    second.reset();
    bool served = false;
    for (int tries = 0; tries < 10'000 && !served; ++tries) {
        RawPeer next(server.GetPort());
        next.Send(Request(CS_DELETE_AVATAR, Serial, short{0}));
        served = !next.ReadPacket().empty();
    }
    EXPECT_TRUE(served);
    EXPECT_TRUE(Logged(server, " connections were turned away"));
}

TEST(ServerLimits, AConnectionWithoutALogonHasToGo)
{
    ServerOptions options = QuietOptions();
    options.Limits.LogonTime = std::chrono::milliseconds(300);
    GameServer server(options);
    RawPeer player(server.GetPort());
    EXPECT_EQ(Ask(player, LogonRequest(), GS_REPLY_10002), 0U);
    RawPeer silent(server.GetPort());
    RawPeer guessing(server.GetPort());
    server.AddAccount("master", "secret", true);
    EXPECT_NE(Ask(guessing, LogonRequest("master", "guessed"), GS_REPLY_10002), 0U);
    EXPECT_TRUE(silent.ReadToEnd().empty());
    guessing.ReadToEnd();
    EXPECT_TRUE(Logged(server, "no logon within"));
    // Who came before them and has logged on stays.
    ExpectServed(player);
    EXPECT_EQ(server.GetCounters().Ended, 2U);
}

/// The room for all peers together runs out long before one of them alone would be dropped.
TEST(ServerLimits, AmongManySlowReadersTheSlowestGoes)
{
    ServerOptions options = QuietOptions();
    options.Limits.QueuedBytes = 1024 * 1024;
    GameServer server(options);
    constexpr unsigned peers = 4;
    std::list<RawPeer> slow;
    for (unsigned i = 0; i < peers; ++i)
        ExpectServed(slow.emplace_back(server.GetPort())); // so that the IDs are 1, 2, ...
    const CNTPacket packet = MessageOf(SC_EVENT18001, char{1}, std::string(4000, 'x'));
    // The buffers of the system take the first megabytes of each.
    const unsigned long long most = 100'000;
    unsigned long long pushed = 0;
    while (server.GetCounters().Ended == 0 && pushed < most)
        server.Push(static_cast<PeerID>(1 + pushed++ % peers), packet);
    ASSERT_LT(pushed, most);
    EXPECT_EQ(server.GetCounters().Ended, 1U);
    EXPECT_TRUE(Logged(server, "bytes wait for all peers together, more than the 1048576 allowed"));
    EXPECT_FALSE(Logged(server, "does not read")) << "that is the limit of one peer alone";
    ExpectServing(server);

    // What the others were sent is still theirs.
    server.PushAll(MessageOf(SC_EVENT29002));
    unsigned whole = 0;
    for (RawPeer& peer : slow)
        whole += ReadUntil(peer, SC_EVENT29002).empty() ? 0 : 1;
    EXPECT_EQ(whole, peers - 1);
}
