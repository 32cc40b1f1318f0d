// What the game does not drain is bounded: reading stops, and TCP holds the server back.

#include "KesraNTC/KesraNTC.h"
#include "tests/support/GameClient.h"
#include "tests/support/LogDirectory.h"
#include "tests/support/Until.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

using namespace Kesra;
using Test::BytesOf;
using Test::Chat;
using Test::GameClient;
using Test::Peer;
using Test::Until;

namespace
{

constexpr unsigned long Limit = 256 * 1024;
/// What may come on top of the limit: one read-ahead of the socket and the packet in progress.
constexpr unsigned long Above = 40 * 1024;

class Backlog : public testing::Test
{
protected:
    Backlog()
    {
        Client->SetBacklogLimit(Limit);
        EXPECT_TRUE(Client->ConnectTo(Server));
    }
    ~Backlog() override
    {
        Client.reset();
        if (Flooding.joinable())
            Flooding.join();
    }

    static std::string Line(unsigned i) { return std::to_string(i) + std::string(180, '.'); }
    /// The server sends numbered lines until they are all out or the client is gone.
    void Flood(unsigned lines)
    {
        Flooding = std::thread([this, lines] {
            std::string part;
            for (unsigned i = 0; i < lines; ++i) {
                part += BytesOf(Chat(Line(i)));
                if (part.size() > 50000 || i + 1 == lines) {
                    Server.Send(part);
                    part.clear();
                }
            }
        });
    }
    bool WaitUntilPaused()
    {
        return Until(
            "reading has stopped", [&] { return Client->GetQueuedBytes() > Limit; });
    }
    void ExpectEndWhilePaused(const char* line, END_REASON reason)
    {
        Until("the end is told", [&] { return Client->Disconnections == 1; });
        Client->WaitForEnd();
        EXPECT_EQ(Client->Disconnections, 1);
        EXPECT_TRUE(Log.HasLine(line));
        EXPECT_EQ(Client->GetEndReason(), reason);
    }

    LogDirectory Log;
    Peer Server;
    std::unique_ptr<GameClient> Client = std::make_unique<GameClient>();
    std::thread Flooding;
};

TEST_F(Backlog, IsBoundedAndLosesNothing)
{
    constexpr unsigned lines = 30000;
    Flood(lines);
    ASSERT_TRUE(WaitUntilPaused());
    EXPECT_GT(Client->GetQueuedPackets(), 30U);
    EXPECT_EQ(Client->GetStatistics().QueuedBytes, Client->GetQueuedBytes());
    EXPECT_EQ(Client->GetStatistics().QueuedPackets, Client->GetQueuedPackets());
    Until("all lines are there", [&] {
        EXPECT_LE(Client->GetQueuedBytes(), Limit + Above);
        Client->ProcessQueuedMessageFromServer();
        return Client->Stub.Lines.size() >= lines;
    });
    EXPECT_EQ(Client->GetQueuedPackets(), 0U);
    EXPECT_EQ(Client->GetQueuedBytes(), 0U);
    ASSERT_EQ(Client->Stub.Lines.size(), lines);
    for (unsigned i = 0; i < lines; ++i)
        ASSERT_EQ(Client->Stub.Lines[i], Line(i));
    EXPECT_EQ(Client->GetStatistics().PacketsReceived, lines);
}

TEST_F(Backlog, WhilePausedTheOutboxIsEmptied)
{
    Flood(30000);
    ASSERT_TRUE(WaitUntilPaused());
    Client->SetSendBuffer(CNTPacket::Capacity);
    std::string bytes(CNTPacket::Capacity, 'b');
    std::size_t sent = 0;
    while (Client->GetUnsentBytes() < 100000) {
        ASSERT_EQ(Client->SendPacket(bytes.data(), CNTPacket::Capacity), CNetIO::SendStarted);
        sent += bytes.size();
    }
    EXPECT_EQ(Server.Receive(sent).size(), sent);
    Until("the outbox is empty", [&] { return Client->GetUnsentBytes() == 0; });
    EXPECT_GT(Client->GetQueuedBytes(), Limit) << "and still nothing is read";
}

TEST_F(Backlog, DisconnectIsNoticedWhilePaused)
{
    Flood(30000);
    ASSERT_TRUE(WaitUntilPaused());
    Client->Disconnect();
    ExpectEndWhilePaused("error!!! WSAGetOverlappedResult() : error 995", END_CLOSED_HERE);
}

TEST_F(Backlog, AResetIsNoticedWhilePaused)
{
    // As much as reaches the client without a server that waits to send more.
    Flood(2200);
    Flooding.join();
    ASSERT_TRUE(WaitUntilPaused());
    Server.Reset();
    ExpectEndWhilePaused("error!!! WSAGetOverlappedResult() : error 10054", END_RESET);
    EXPECT_EQ(Client->GetEndError(), 10054U);
}

TEST_F(Backlog, DestructionDoesNotWaitForTheGameToDrain)
{
    Flood(30000);
    ASSERT_TRUE(WaitUntilPaused());
    Client.reset();
}

TEST_F(Backlog, AWaitingRequestIsAnsweredAllTheSame)
{
    Flood(30000);
    ASSERT_TRUE(WaitUntilPaused());
    std::thread answering([&] {
        EXPECT_EQ(Server.Receive(8).size(), 8U);
        Flooding.join();
        Server.Send(BytesOf(::Test::Reply(1, 7)) + BytesOf(Chat("behind")));
    });
    unsigned long result = 0;
    EXPECT_EQ(Client->Requests.CS_CancelDeleteAvatar(1, result), GS_OK);
    EXPECT_EQ(result, 7U);
    answering.join();
    Until("the last line has come", [&] {
        Client->ProcessQueuedMessageFromServer();
        return Client->Stub.Lines.back() == "behind";
    });
    EXPECT_EQ(Client->Stub.Threads.back(), std::this_thread::get_id())
        << "what follows the reply is the game's";
    EXPECT_EQ(Client->Stub.Lines.size(), 30001U);
}

TEST_F(Backlog, AHigherLimitIsFeltAtOnce)
{
    Flood(30000);
    ASSERT_TRUE(WaitUntilPaused());
    Client->SetBacklogLimit(64 * 1024 * 1024);
    Until("all is read", [&] { return Client->GetQueuedPackets() == 30000; });
}

class Drain : public testing::Test
{
protected:
    Drain()
    {
        EXPECT_TRUE(Game.ConnectTo(Server));
        Game.Stub.OnChat = [this] {
            if (Game.Stub.Lines.back() == ThrowAt)
                throw std::runtime_error(ThrowAt);
        };
    }
    void Receive(int lines)
    {
        std::string bytes;
        for (int i = 0; i < lines; ++i)
            bytes += BytesOf(Chat(std::to_string(i)));
        const unsigned long before = Game.GetQueuedPackets();
        Server.Send(bytes);
        Until("the lines have come",
              [&] { return Game.GetQueuedPackets() == before + static_cast<unsigned long>(lines); });
    }

    Peer Server;
    GameClient Game;
    std::string ThrowAt = "none";
};

TEST_F(Drain, AnExceptionLeavesWhatIsBehindInItsOrder)
{
    for (const char* thrower : {"0", "17", "40", "99"}) {
        Game.Stub.Lines.clear();
        Receive(100);
        ThrowAt = thrower;
        EXPECT_THROW(Game.ProcessQueuedMessageFromServer(), std::runtime_error);
        const auto handled = static_cast<unsigned long>(std::stoi(thrower)) + 1;
        EXPECT_EQ(Game.Stub.Lines.size(), handled) << "the packet counts as handled";
        EXPECT_EQ(Game.GetQueuedPackets(), 100 - handled);
        ThrowAt = "none";
        Receive(3);
        Game.ProcessQueuedMessageFromServer();
        EXPECT_EQ(Game.GetQueuedPackets(), 0U);
        ASSERT_EQ(Game.Stub.Lines.size(), 103U);
        for (std::size_t i = 0; i < 103; ++i)
            EXPECT_EQ(Game.Stub.Lines[i], std::to_string(i < 100 ? i : i - 100)) << thrower;
    }
}

TEST_F(Drain, AnExceptionBehindOneComesInItsTurn)
{
    Receive(50);
    ThrowAt = "45";
    EXPECT_THROW(Game.ProcessQueuedMessageFromServer(), std::runtime_error);
    Receive(2);
    ThrowAt = "48";
    EXPECT_THROW(Game.ProcessQueuedMessageFromServer(), std::runtime_error);
    ThrowAt = "0";
    EXPECT_THROW(Game.ProcessQueuedMessageFromServer(), std::runtime_error);
    EXPECT_EQ(Game.GetQueuedPackets(), 1U);
    ThrowAt = "none";
    Game.ProcessQueuedMessageFromServer();
    EXPECT_EQ(Game.Stub.Lines.size(), 52U);
    EXPECT_EQ(Game.Stub.Lines.back(), "1");
}

/// Packets that came in one go are taken as if one by one: a handler's Disconnect ends them.
TEST_F(Drain, DisconnectOnTheReceiveThreadEndsWhatCameWithIt)
{
    GameClient other;
    Peer server;
    other.ProcessOnRecvThread = true;
    other.Stub.OnChat = [&] {
        if (other.Stub.Lines.back() == "enough")
            other.Disconnect();
    };
    ASSERT_TRUE(other.ConnectTo(server));
    server.Send(BytesOf(Chat("one")) + BytesOf(Chat("enough")) + BytesOf(Chat("three")) +
                BytesOf(Chat("four")));
    ASSERT_TRUE(::Test::Await("the end is told", other.Disconnected));
    other.ProcessQueuedMessageFromServer();
    EXPECT_EQ(other.Stub.Lines, (std::vector<std::string>{"one", "enough"}));
}

} // namespace
