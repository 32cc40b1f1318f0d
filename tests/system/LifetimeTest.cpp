// Every connection is its own: it begins and ends once, and what belongs to an ended one never touches a
// newer one.

#include "KesraNTC/KesraNTC.h"
#include "tests/support/DeafListener.h"
#include "tests/support/GameClient.h"
#include "tests/support/LogDirectory.h"
#include "tests/support/Until.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

using namespace Kesra;
using Test::Await;
using Test::BytesOf;
using Test::Chat;
using Test::DeafListener;
using Test::GameClient;
using Test::Peer;
using Test::Until;

namespace
{

/// Counts how often it is disconnected by whom.
class CountingClient : public GameClient
{
public:
    ~CountingClient() override { StopReceiving(); }
    void Disconnect() override
    {
        ++Calls;
        GameClient::Disconnect();
    }

    std::atomic<int> Calls{0};
};

class Lifetime : public testing::Test
{
protected:
    void ExpectItWorks(GameClient& game, Peer& server)
    {
        game.Stub.Lines.clear();
        server.Send(BytesOf(Chat("still here")));
        Until("the line has come", [&] {
            game.ProcessQueuedMessageFromServer();
            return !game.Stub.Lines.empty();
        });
    }

    LogDirectory Log;
    Peer Server;
};

TEST_F(Lifetime, AnOldRequestLeavesTheNextConnectionAlone)
{
    CountingClient game;
    game.Requests.SetReplyTimeLimit(300);
    ASSERT_TRUE(game.ConnectTo(Server));
    std::thread asking([&] {
        unsigned long result = 0;
        EXPECT_EQ(game.Requests.CS_CancelDeleteAvatar(1, result), GS_REPLY_ERROR);
    });
    Until("the request waits", [&] { return game.GetStatistics().RequestsInFlight == 1; });
    Peer next;
    ASSERT_TRUE(game.ConnectTo(next));
    asking.join();
    EXPECT_EQ(game.Calls, 1) << "its failure is told as ever";
    EXPECT_TRUE(game.IsConnected());
    EXPECT_EQ(game.GetEndReason(), END_NONE);
    ExpectItWorks(game, next);
}

TEST_F(Lifetime, ARequestThatTimesOutEndsItsOwn)
{
    CountingClient game;
    game.Requests.SetReplyTimeLimit(100);
    ASSERT_TRUE(game.ConnectTo(Server));
    EXPECT_EQ(game.GetEndReason(), END_NONE);
    unsigned long result = 0;
    EXPECT_EQ(game.Requests.CS_CancelDeleteAvatar(1, result), GS_REPLY_ERROR);
    EXPECT_FALSE(game.IsConnected());
    game.WaitForEnd();
    EXPECT_EQ(game.Disconnections, 1);
    EXPECT_EQ(game.GetEndReason(), END_REQUEST_TIMED_OUT);
}

/// The end of the first is told late, when the game has long connected anew on its own thread.
TEST_F(Lifetime, DisconnectWhenToldLateLeavesANewerOneAlone)
{
    GameClient game;
    EventHandle isTold{EventHandle::AutoReset};
    EventHandle isReplaced{EventHandle::AutoReset};
    EventHandle isDone{EventHandle::AutoReset};
    END_REASON reason = END_NONE;
    game.OnDisconnection = [&] {
        if (game.Disconnections != 1)
            return;
        isTold.Set();
        Await("it is replaced", isReplaced);
        reason = game.GetEndReason();
        game.Disconnect();
        EXPECT_FALSE(game.ConnectToServer()) << "it has been replaced";
        isDone.Set();
    };
    ASSERT_TRUE(game.ConnectTo(Server));
    Server.Close();
    ASSERT_TRUE(Await("the end is told", isTold));
    Peer next;
    ASSERT_TRUE(game.ConnectTo(next));
    isReplaced.Set();
    ASSERT_TRUE(Await("it has tried", isDone));
    EXPECT_EQ(reason, END_SERVER_CLOSED) << "of the connection that it tells of";
    EXPECT_TRUE(Log.HasLine("ConnectToServer() : error 10037"));
    EXPECT_TRUE(game.IsConnected());
    EXPECT_EQ(game.GetEndReason(), END_NONE);
    ExpectItWorks(game, next);
}

TEST_F(Lifetime, OneEndMayTryServerAfterServer)
{
    GameClient game;
    Peer second;
    Peer third;
    const unsigned short nobody = Peer().Port();
    game.OnDisconnection = [&] {
        if (game.Disconnections != 1)
            return;
        for (int i = 0; i < 3; ++i) {
            game.SetServerPort(nobody);
            EXPECT_FALSE(game.ConnectToServer());
            game.SetServerPort(second.Port());
            EXPECT_TRUE(game.ConnectToServer()) << i;
            game.Disconnect();
            EXPECT_FALSE(game.IsConnected());
        }
        game.SetServerPort(third.Port());
        EXPECT_TRUE(game.ConnectToServer());
    };
    ASSERT_TRUE(game.ConnectTo(Server));
    Server.Close();
    ASSERT_TRUE(Until("all ends are told", [&] { return game.Disconnections == 4; }));
    third.Accept();
    ExpectItWorks(game, third);
    EXPECT_FALSE(Log.HasLine("ConnectToServer() : error 10037"));
    game.Disconnect();
    game.WaitForEnd();
    EXPECT_EQ(game.Disconnections, 5);
}

TEST_F(Lifetime, EveryBeginningHasOneEnd)
{
    GameClient game;
    game.SetServerAddr("127.0.0.1");
    game.SetServerPort(Server.Port());
    int begun = 0;
    std::atomic<bool> isOver{false};
    std::thread resetting([&] {
        while (!isOver) {
            Server.Accept();
            Server.Reset();
        }
    });
    for (int i = 0; i < 300; ++i) {
        begun += game.ConnectToServer();
        if (i % 3 == 0)
            game.Disconnect();
        else if (i % 3 == 1)
            game.WaitForEnd();
    }
    game.WaitForEnd();
    EXPECT_EQ(game.Disconnections, begun);
    EXPECT_GT(begun, 0);
    isOver = true;
    game.ConnectToServer();
    resetting.join();
}

/// Is deleted in its own ProcessDisconnection.
class Ephemeral : public CNTMainClient
{
public:
    Ephemeral(unsigned short port, EventHandle& gone, std::function<void(Ephemeral&)> before)
        : Gone(gone), Before(std::move(before))
    {
        Startup();
        SetServerAddr("127.0.0.1");
        SetServerPort(port);
    }
    ~Ephemeral() override
    {
        StopReceiving();
        Gone.Set();
    }
    void ProcessDisconnection() override
    {
        Before(*this);
        delete this;
    }

private:
    EventHandle& Gone;
    std::function<void(Ephemeral&)> Before;
};

TEST_F(Lifetime, DeletedWhileAnotherThreadConnects)
{
    for (int i = 0; i < 10; ++i) {
        DeafListener deaf;
        EventHandle isTold{EventHandle::AutoReset};
        EventHandle gone{EventHandle::AutoReset};
        auto* game = new Ephemeral(Server.Port(), gone, [&](Ephemeral& self) {
            isTold.Set();
            // Its first step is to close the old socket.
            Until("another thread connects", [&] { return !self.IsConnected(); });
        });
        ASSERT_TRUE(game->ConnectToServer());
        Server.Accept();
        Server.Close();
        ASSERT_TRUE(Await("the end is told", isTold));
        game->SetServerPort(deaf.Port());
        EXPECT_FALSE(game->ConnectToServer());
        EXPECT_TRUE(Await("it is deleted", gone));
    }
}

TEST_F(Lifetime, DeletedAsSoonAsItHasBegun)
{
    for (int i = 0; i < 50; ++i) {
        EventHandle gone{EventHandle::AutoReset};
        auto* game = new Ephemeral(Server.Port(), gone, [](Ephemeral&) {});
        std::thread resetting([this] {
            Server.Accept();
            Server.Reset();
        });
        const bool begun = game->ConnectToServer();
        resetting.join();
        if (!begun)
            delete game;
        EXPECT_TRUE(Await("it is deleted", gone));
    }
}

class Connecting : public Lifetime
{
protected:
    Connecting()
    {
        Game.SetServerAddr("127.0.0.1");
        Game.SetServerPort(Deaf.Port());
        Attempt = std::thread([this] { HasConnected = Game.ConnectToServer(); });
    }
    ~Connecting() override
    {
        if (Attempt.joinable())
            Attempt.join();
    }

    DeafListener Deaf;
    CountingClient Game;
    std::atomic<bool> HasConnected{false};
    std::thread Attempt;
};

TEST_F(Connecting, DisconnectEndsIt)
{
    // However early or late it comes.
    Until("the attempt has ended", [&] {
        Game.Disconnect();
        return Log.HasLine("ConnectToServer() : error 10004");
    });
    Attempt.join();
    EXPECT_FALSE(HasConnected);
    EXPECT_FALSE(Game.IsConnected());
    EXPECT_EQ(Game.Disconnections, 0);
}

TEST_F(Connecting, ARequestMeanwhileFailsAtOnceAndTouchesNothing)
{
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(Game.Requests.CS_EnterSession(), GS_OK);
    EXPECT_EQ(Game.Calls, 20);
    EXPECT_TRUE(Log.HasLine("Send Error!!!"));
    EXPECT_FALSE(Log.HasLine("ConnectToServer() : error 10004")) << "it goes on";
    Until("the attempt has ended", [&] {
        Game.Disconnect();
        return Log.HasLine("ConnectToServer() : error 10004");
    });
}

TEST_F(Connecting, GivesUpAfterTwentySeconds)
{
    const DWORD start = ::GetTickCount();
    Attempt.join();
    EXPECT_GE(::GetTickCount() - start, 19000U);
    EXPECT_FALSE(HasConnected);
    EXPECT_TRUE(Log.HasLine("ConnectToServer() : error 10060"));
}

TEST_F(Lifetime, ASocketThatTheGameConnectedItself)
{
    GameClient game;
    const SOCKET socket = static_cast<SOCKET>(game.CreateSocket());
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(Server.Port());
    address.sin_addr.s_addr = inet_addr("127.0.0.1");
    ASSERT_EQ(connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0)
        << "the call waits";
    Server.Accept();
    EXPECT_TRUE(game.RecvFromServer());
    ExpectItWorks(game, Server);
    EXPECT_EQ(game.Requests.CS_EnterSession(), GS_OK);
    EXPECT_EQ(Server.Receive(4).size(), 4U);
    Until("it is counted", [&] { return game.GetSendBytes() == 4; });

    int noDelay = 0;
    int size = sizeof noDelay;
    game.SetNoDelay(true);
    getsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<char*>(&noDelay), &size);
    EXPECT_EQ(noDelay, 0) << "its options are the game's";
    game.Disconnect();
    game.WaitForEnd();
    EXPECT_EQ(game.Disconnections, 1);
}

TEST_F(Lifetime, SmallPacketsLeaveAtOnceUnlessSetOtherwise)
{
    const auto isNoDelay = [](GameClient& game) {
        int value = 0;
        int size = sizeof value;
        getsockopt(static_cast<SOCKET>(game.GetSocket()), IPPROTO_TCP, TCP_NODELAY,
                   reinterpret_cast<char*>(&value), &size);
        return value;
    };
    GameClient game;
    ASSERT_TRUE(game.ConnectTo(Server));
    EXPECT_EQ(isNoDelay(game), 1);
    game.SetNoDelay(false);
    EXPECT_EQ(isNoDelay(game), 0);
    ASSERT_TRUE(game.ConnectTo(Server));
    EXPECT_EQ(isNoDelay(game), 0);
}

TEST_F(Lifetime, TellsWhyItEnded)
{
    GameClient game;
    EXPECT_EQ(game.GetEndReason(), END_NONE);
    ASSERT_TRUE(game.ConnectTo(Server));
    Server.Close();
    game.WaitForEnd();
    EXPECT_EQ(game.GetEndReason(), END_SERVER_CLOSED);
    game.Disconnect();
    EXPECT_EQ(game.GetEndReason(), END_SERVER_CLOSED) << "the first reason counts";
    ASSERT_TRUE(game.ConnectTo(Server));
    EXPECT_EQ(game.GetEndReason(), END_NONE);
    game.Disconnect();
    game.WaitForEnd();
    EXPECT_EQ(game.GetEndReason(), END_CLOSED_HERE);
    ASSERT_TRUE(game.ConnectTo(Server));
    Server.Send(std::string("\xE2\x2E\x01\x00", 4));
    game.WaitForEnd();
    EXPECT_EQ(game.GetEndReason(), END_MALFORMED);
    ASSERT_TRUE(game.ConnectTo(Server));
    Server.Reset();
    game.WaitForEnd();
    EXPECT_EQ(game.GetEndReason(), END_RESET);
    EXPECT_EQ(game.GetEndError(), 10054U);
}

unsigned long long Microseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<unsigned long long>(
        std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

TEST_F(Lifetime, StatisticsAreThoseOfTheConnection)
{
    GameClient game;
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(game.ConnectTo(Server));
        std::thread answering([&] {
            for (int i = 0; i < 3; ++i) {
                CNTPacket asked;
                const std::string bytes = Server.Receive(8);
                ASSERT_EQ(bytes.size(), 8U);
                asked.Write(bytes.data(), 8);
                asked.SetBufPoint(4);
                short serial = 0;
                asked >> serial;
                Server.Send(BytesOf(::Test::Reply(serial, 0)));
            }
        });
        unsigned long result = 0;
        EXPECT_EQ(game.GetStatistics().Replies, 0U) << "of the one before";
        const unsigned long long begun = Microseconds();
        EXPECT_EQ(game.Requests.CS_CancelDeleteAvatar(1, result), GS_OK);
        const CNTStatistics first = game.GetStatistics();
        EXPECT_LE(first.LastReplyTime, static_cast<double>(Microseconds() - begun) / 1000);
        EXPECT_EQ(first.LongestReplyTime, first.LastReplyTime);
        EXPECT_EQ(first.AverageReplyTime, first.LastReplyTime);
        for (int i = 1; i < 3; ++i)
            EXPECT_EQ(game.Requests.CS_CancelDeleteAvatar(1, result), GS_OK);
        answering.join();
        const CNTStatistics seen = game.GetStatistics();
        EXPECT_EQ(seen.PacketsSent, 3U);
        EXPECT_EQ(seen.BytesSent, 24U);
        EXPECT_EQ(seen.PacketsReceived, 3U);
        EXPECT_EQ(seen.BytesReceived, 30U);
        EXPECT_EQ(seen.Replies, 3U);
        EXPECT_EQ(seen.RequestsInFlight, 0U);
        EXPECT_GT(seen.LastReplyTime, 0.0);
        EXPECT_GE(seen.LongestReplyTime, seen.AverageReplyTime);
    }
}

} // namespace
