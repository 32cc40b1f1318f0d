// A whole client against a peer that follows the test's script: how connections begin, carry on and end.

#include "KesraNTC/KesraNTC.h"
#include "KesraNTC/base/private/Korean.h"
#include "tests/support/GameClient.h"
#include "tests/support/LogDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

using namespace Kesra;
using Test::Await;
using Test::BytesOf;
using Test::Chat;
using Test::GameClient;
using Test::Peer;
using Test::Reply;
using Test::Until;

namespace
{

class Connection : public testing::Test
{
protected:
    bool Logged(const std::string& part) { return Log.Log().find(part) != std::string::npos; }

    LogDirectory Log;
    Peer Server;
    GameClient Game;
};

TEST_F(Connection, RefusedPort)
{
    const unsigned short port = Peer().Port();
    Game.SetServerAddr("127.0.0.1");
    Game.SetServerPort(port);
    EXPECT_FALSE(Game.ConnectToServer());
    EXPECT_FALSE(Game.IsConnected());
    EXPECT_EQ(Log.Log(), "ConnectToServer() : error 10061\r\n\r\n");
    EXPECT_EQ(Game.Disconnections, 0);
}

TEST_F(Connection, NameThatDoesNotResolve)
{
    Game.SetServerAddr("no.such.host.invalid");
    EXPECT_FALSE(Game.ConnectToServer());
    EXPECT_FALSE(Game.IsConnected());
    EXPECT_EQ(Log.Log(), std::string("서버 어드레스를 찾을 수 엄다"_949) + "\r\n\r\n");
}

TEST_F(Connection, NameThatResolves)
{
    EXPECT_TRUE(Game.SetServerAddr("localhost"));
    EXPECT_FALSE(Game.SetServerAddr(nullptr));
    EXPECT_FALSE(Game.SetServerAddr("a.name.of.more.than.29.letters"));
    Game.SetServerPort(0x70000U + Server.Port());
    ASSERT_TRUE(Game.ConnectToServer());
    EXPECT_EQ(Log.Log(), "ConnectToServer() : Success\r\n\r\n");
}

TEST_F(Connection, PushedMessagesWaitForTheGameThread)
{
    const COLEDateTime before = COLEDateTime::GetTickCount();
    ASSERT_TRUE(Game.ConnectTo(Server));
    EXPECT_TRUE(before <= Game.ConnectTime && before <= Game.TrafficTime);
    const std::string bytes = BytesOf(Chat("one")) + BytesOf(Chat("two"));
    Server.Send(bytes);
    Game.WaitForBytes(bytes.size());
    EXPECT_TRUE(Game.Stub.Lines.empty());
    EXPECT_EQ(Game.ProcessQueuedMessageFromServer(), 0U);
    EXPECT_EQ(Game.Stub.Lines, (std::vector<std::string>{"one", "two"}));
    EXPECT_EQ(Game.ProcessQueuedMessageFromServer(), 0U);
    EXPECT_EQ(Game.Stub.Lines.size(), 2U);
    EXPECT_EQ(Game.Stub.Threads[0], std::this_thread::get_id());
}

TEST_F(Connection, ABurstArrivesWholeAndInOrder)
{
    ASSERT_TRUE(Game.ConnectTo(Server));
    std::string bytes;
    std::vector<std::string> sent;
    for (int i = 0; i < 3000; ++i) {
        sent.push_back(std::string(static_cast<std::size_t>(i) % 190, 'x') + std::to_string(i));
        bytes += BytesOf(Chat(sent.back()));
    }
    std::thread sending([&] { Server.Send(bytes); });
    Until("all lines are there", [&] {
        Game.ProcessQueuedMessageFromServer();
        return Game.Stub.Lines.size() >= sent.size();
    });
    sending.join();
    EXPECT_EQ(Game.Stub.Lines, sent);
}

TEST_F(Connection, OnTheReceiveThreadWhenAsked)
{
    Game.ProcessOnRecvThread = true;
    ASSERT_TRUE(Game.ConnectTo(Server));
    Server.Send(BytesOf(Chat("hello")));
    ASSERT_TRUE(Await("the line is heard", Game.Stub.Heard));
    Game.Disconnect();
    Game.WaitForEnd();
    EXPECT_EQ(Game.Stub.Lines, (std::vector<std::string>{"hello"}));
    EXPECT_NE(Game.Stub.Threads[0], std::this_thread::get_id());
}

/// The stream of two packets, closed by the server at every byte: what was whole is delivered, and the end is
/// told once.
TEST_F(Connection, ServerClosesAtEveryByte)
{
    const std::string first = BytesOf(Chat("first"));
    const std::string bytes = first + BytesOf(Chat("second"));
    for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
        Game.Stub.Lines.clear();
        Game.Disconnections = 0;
        ASSERT_TRUE(Game.ConnectTo(Server)) << "also after a packet that was cut";
        Server.Send(bytes.substr(0, cut));
        Server.Close();
        Game.WaitForEnd();
        EXPECT_EQ(Game.Disconnections, 1) << cut;
        Game.ProcessQueuedMessageFromServer();
        const std::size_t whole = cut < first.size() ? 0U : cut < bytes.size() ? 1U : 2U;
        EXPECT_EQ(Game.Stub.Lines.size(), whole) << cut;
        EXPECT_TRUE(Game.IsConnected()) << "the game closes the socket";
    }
}

TEST_F(Connection, ServerResets)
{
    ASSERT_TRUE(Game.ConnectTo(Server));
    Server.Reset();
    Game.WaitForEnd();
    EXPECT_EQ(Game.Disconnections, 1);
    EXPECT_TRUE(Logged("error!!! WSAGetOverlappedResult() : error 10054\r\n"));
}

TEST_F(Connection, MalformedHeaderEndsIt)
{
    for (const unsigned size : {0U, 1U, 2U, 3U, 4097U, 65535U}) {
        Game.Disconnections = 0;
        Log.Clear();
        ASSERT_TRUE(Game.ConnectTo(Server));
        const char header[] = {static_cast<char>(0xE2), 0x2E, static_cast<char>(size & 0xFF),
                               static_cast<char>(size >> 8)};
        Server.Send(std::string_view(header, sizeof header));
        Game.WaitForEnd();
        EXPECT_EQ(Game.Disconnections, 1) << size;
        EXPECT_TRUE(Logged(std::string("메시지가 너무 길다. 패킷번호 : "_949) + "12002"));
        EXPECT_TRUE(Logged("error!!! CollectPacket() : error \r\n"));
    }
}

TEST_F(Connection, DisconnectFromAnotherThreadWhileReceiving)
{
    ASSERT_TRUE(Game.ConnectTo(Server));
    std::thread([this] { Game.Disconnect(); }).join();
    Game.WaitForEnd();
    EXPECT_FALSE(Game.IsConnected());
    EXPECT_EQ(Game.Disconnections, 1);
    EXPECT_TRUE(Logged("error!!! WSAGetOverlappedResult() : error "));
    EXPECT_EQ(Server.Receive(1), "");
    Game.Disconnect();
    EXPECT_EQ(Game.Disconnections, 1);
}

TEST_F(Connection, ConnectingAgainReplacesTheConnection)
{
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(Game.ConnectTo(Server));
        EXPECT_TRUE(i == 0 || Await("the end of the one before is told", Game.Disconnected));
        EXPECT_EQ(Game.Disconnections, i);
        Server.Send(BytesOf(Chat(std::to_string(i))));
        Game.WaitForBytes(Chat("0").GetBufSize());
        Game.InitRecvBytes();
        Game.ProcessQueuedMessageFromServer();
    }
    EXPECT_EQ(Game.Stub.Lines.size(), 5U);
}

TEST_F(Connection, ConnectingAgainWhenToldOfTheEnd)
{
    Peer next;
    Game.OnDisconnection = [&] {
        if (Game.Disconnections == 1) {
            Game.SetServerPort(next.Port());
            EXPECT_TRUE(Game.ConnectToServer());
        }
    };
    ASSERT_TRUE(Game.ConnectTo(Server));
    Server.Close();
    ASSERT_TRUE(Await("the end is told", Game.Disconnected));
    next.Accept();
    next.Send(BytesOf(Chat("again")));
    Game.WaitForBytes(Chat("again").GetBufSize());
    Game.ProcessQueuedMessageFromServer();
    EXPECT_EQ(Game.Stub.Lines, (std::vector<std::string>{"again"}));
}

/// A thread whose connection was replaced may still be in ProcessDisconnection when everything ends.
TEST_F(Connection, TheThreadsOfReplacedConnectionsAreWaitedFor)
{
    EventHandle isTold{EventHandle::AutoReset};
    EventHandle mayGoOn{EventHandle::AutoReset};
    Game.OnDisconnection = [&] {
        if (Game.Disconnections == 1) {
            isTold.Set();
            Await("it may go on", mayGoOn);
        }
    };
    ASSERT_TRUE(Game.ConnectTo(Server));
    Server.Close();
    ASSERT_TRUE(Await("the first end is told", isTold));
    ASSERT_TRUE(Game.ConnectTo(Server));
    Game.Disconnect();
    Until("the second end is told", [&] { return Game.Disconnections == 2; });
    EXPECT_FALSE(Game.WaitForReceiveThread(1)) << "the first is still told";
    mayGoOn.Set();
    Game.WaitForEnd();
}

TEST_F(Connection, TheEndOfOneMayConnectAnother)
{
    Peer elsewhere;
    GameClient other;
    EventHandle isOver{EventHandle::AutoReset};
    Game.OnDisconnection = [&] {
        if (Game.Disconnections == 1) {
            EXPECT_FALSE(Game.ConnectToServer()) << "it has been replaced";
            EXPECT_TRUE(other.ConnectTo(elsewhere));
            isOver.Set();
        }
    };
    ASSERT_TRUE(Game.ConnectTo(Server));
    ASSERT_TRUE(Game.ConnectTo(Server));
    ASSERT_TRUE(Await("the other is connected", isOver));
    EXPECT_TRUE(Game.IsConnected());
    EXPECT_TRUE(other.IsConnected());
}

TEST_F(Connection, TheReceiveProcedureMayRunOnAThreadOfTheGame)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(Server.Port());
    address.sin_addr.s_addr = inet_addr("127.0.0.1");
    const SOCKET socket = static_cast<SOCKET>(Game.CreateSocket());
    connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    Server.Accept();
    Server.Send(BytesOf(Chat("hello")));
    Server.Close();
    std::thread(CNTBaseClient::RecvFromServer_Proc, &Game).join();
    EXPECT_EQ(Game.Disconnections, 1);
    Game.ProcessQueuedMessageFromServer();
    EXPECT_EQ(Game.Stub.Lines, (std::vector<std::string>{"hello"}));
}

TEST_F(Connection, AHandlerMayConnectElsewhere)
{
    Peer next;
    Game.Stub.OnChat = [&] {
        Game.SetServerPort(next.Port());
        EXPECT_TRUE(Game.ConnectToServer());
        EXPECT_EQ(Game.ProcessQueuedMessageFromServer(), 0U) << "already dispatching";
    };
    ASSERT_TRUE(Game.ConnectTo(Server));
    Server.Send(BytesOf(Chat("go there")));
    Game.WaitForBytes(Chat("go there").GetBufSize());
    Game.ProcessQueuedMessageFromServer();
    next.Accept();
    EXPECT_TRUE(Await("the end is told", Game.Disconnected));
    EXPECT_EQ(Game.Disconnections, 1);
    EXPECT_TRUE(Game.IsConnected());
}

/// The game connects anew on its own thread while its ProcessDisconnection does the same: whoever is replaced
/// leaves the newer connection alone, and one that works remains.
TEST_F(Connection, ConnectingAnewFromBothSides)
{
    std::atomic<bool> isOver{false};
    Game.OnDisconnection = [&] {
        if (!isOver)
            Game.ConnectToServer();
    };
    ASSERT_TRUE(Game.ConnectTo(Server));
    std::thread accepting([&] {
        while (!isOver)
            Server.Accept();
    });
    for (int i = 0; i < 40; ++i) {
        if (i % 2 == 0)
            Game.Disconnect();
        EXPECT_TRUE(Game.ConnectToServer());
    }
    isOver = true;
    EXPECT_TRUE(Game.ConnectToServer());
    accepting.join();
    EXPECT_TRUE(Game.IsConnected());
}

TEST_F(Connection, DestroyedWhileConnected)
{
    /// Without a destructor of its own that would disconnect first.
    class Careless : public CNTMainClient
    {
    public:
        void ProcessDisconnection() override { ADD_FAILURE() << "called on an object that is gone"; }
    };
    for (int i = 0; i < 20; ++i) {
        Careless careless;
        careless.Startup();
        careless.SetServerAddr("127.0.0.1");
        careless.SetServerPort(Server.Port());
        ASSERT_TRUE(careless.ConnectToServer());
        Server.Accept();
    }
    EXPECT_EQ(Server.Receive(1), "");
}

TEST_F(Connection, DeletedWhenToldOfTheEnd)
{
    class Ephemeral : public CNTMainClient
    {
    public:
        explicit Ephemeral(EventHandle& gone) : Gone(gone) {}
        ~Ephemeral() override { Gone.Set(); }
        void ProcessDisconnection() override { delete this; }

    private:
        EventHandle& Gone;
    };
    EventHandle gone{EventHandle::AutoReset};
    auto* client = new Ephemeral(gone);
    client->Startup();
    client->SetServerAddr("127.0.0.1");
    client->SetServerPort(Server.Port());
    ASSERT_TRUE(client->ConnectToServer());
    Server.Accept();
    Server.Close();
    EXPECT_TRUE(Await("it is deleted", gone));
}

TEST_F(Connection, SendingMoreThanTheSocketsHold)
{
    ASSERT_TRUE(Game.ConnectTo(Server));
    constexpr unsigned packets = 4000;
    constexpr unsigned bytesEach = CNTPacket::Capacity;
    std::thread sending([&] {
        for (unsigned i = 0; i < packets; ++i) {
            const std::vector<unsigned char> payload(bytesEach - 4, static_cast<unsigned char>(i));
            CNTPacket packet;
            packet << static_cast<unsigned short>(2002) << static_cast<unsigned short>(0);
            packet.Write(payload.data(), bytesEach - 4);
            Game.WaitForRoom(bytesEach);
            ASSERT_EQ(Game.SendToServer(packet), 0U);
        }
    });
    for (unsigned i = 0; i < packets; ++i) {
        const std::string bytes = Server.Receive(bytesEach);
        ASSERT_EQ(bytes.size(), bytesEach);
        ASSERT_EQ(static_cast<unsigned char>(bytes[5]), static_cast<unsigned char>(i)) << i;
    }
    sending.join();
    // The last bytes may have gone out as an overlapped write that the receive thread accounts for.
    Until("all is counted", [&] { return Game.GetSendBytes() >= packets * bytesEach; });
    EXPECT_EQ(Game.GetSendBytes(), packets * bytesEach);
    Game.InitSendBytes();
    EXPECT_EQ(Game.GetSendBytes(), 0U);
}

/// Every packet has to wait for room, and what the server sends makes the receive thread look each time
/// whether the write has completed: none may be taken for the one before.
TEST_F(Connection, EveryByteLeavesOnceWhileTheServerTalks)
{
    constexpr unsigned packets = 1500;
    constexpr unsigned bytesEach = CNTPacket::Capacity;
    Peer slow{asio::socket_base::receive_buffer_size(bytesEach)};
    ASSERT_TRUE(Game.ConnectTo(slow));
    Game.SetSendBuffer(bytesEach);
    std::string received;
    std::thread talking([&] {
        std::string part;
        do {
            slow.Send(BytesOf(Chat("word")));
            part = slow.Receive(std::min<std::size_t>(3000, packets * bytesEach - received.size()));
            received += part;
        } while (!part.empty());
    });
    char data[bytesEach];
    std::string sent;
    for (unsigned i = 0; i < packets; ++i) {
        std::memset(data, static_cast<int>(i % 251), sizeof data);
        sent.append(data, sizeof data);
        Game.WaitForRoom(sizeof data);
        if (Game.SendPacket(data, sizeof data) != CNetIO::SendStarted) {
            ADD_FAILURE() << "packet " << i << " was not taken";
            Game.Disconnect();
            break;
        }
    }
    talking.join();
    Until("all is counted", [&] { return !Game.IsConnected() || Game.GetSendBytes() >= sent.size(); });
    EXPECT_EQ(Game.GetSendBytes(), sent.size());
    EXPECT_TRUE(received == sent) << received.size() << " bytes of " << sent.size();
}

/// Disconnect ends the read, which tells the receive thread, before it ends the write: a connection that
/// begins in between must not meet the old one's write.
TEST_F(Connection, ConnectingAgainWhileAWriteIsOutstanding)
{
    class Writer : public GameClient
    {
    public:
        /// Until a write is outstanding; false when a send fails.
        bool Fill()
        {
            char data[CNTPacket::Capacity] = {};
            while (GetUnsentBytes() == 0)
                if (SendPacket(data, sizeof data) != SendStarted)
                    return false;
            return true;
        }
    };
    for (int round = 0; round < 20; ++round) {
        Peer silent;
        Writer writer;
        EventHandle isTold{EventHandle::AutoReset};
        bool isFilled = false;
        writer.OnDisconnection = [&] {
            if (writer.Disconnections == 1) {
                isFilled = writer.ConnectToServer() && writer.Fill();
                isTold.Set();
            }
        };
        ASSERT_TRUE(writer.ConnectTo(silent));
        writer.SetSendBuffer(CNTPacket::Capacity);
        ASSERT_TRUE(writer.Fill());
        writer.Disconnect();
        ASSERT_TRUE(Await("the end is told", isTold));
        EXPECT_TRUE(isFilled) << round;
    }
}

TEST_F(Connection, SendsThatCannotBe)
{
    CNTPacket packet;
    packet << static_cast<unsigned short>(2002) << static_cast<unsigned short>(0);
    EXPECT_EQ(Game.SendToServer(packet), 2U) << "not connected";
    ASSERT_TRUE(Game.ConnectTo(Server));
    CNTPacket large;
    large.SetBufSize(4097);
    EXPECT_EQ(Game.SendToServer(large), 2U);
    EXPECT_EQ(Game.GetSendBytes(), 0U);
    large.SetBufSize(4096);
    EXPECT_EQ(Game.SendToServer(large), 0U);
    EXPECT_EQ(Server.Receive(4096).size(), 4096U);
    packet.SetBufSize(0);
    EXPECT_EQ(Game.SendToServer(packet), 0U);
    EXPECT_TRUE(Logged("0 사이즈의 패킷을 송신했당!!!"_949)) << "nothing was sent";
}

TEST_F(Connection, AFailedRequestIsLoggedAndStillHandedOver)
{
    CNTProxy_CLToGS unattached;
    EXPECT_EQ(unattached.CS_EnterSession(), GS_OK);
    EXPECT_TRUE(Logged("Send Error!!!\r\n"));
    CNTPacket packet;
    EXPECT_FALSE(unattached.Send(packet));
    EXPECT_TRUE(CNTProxy().Send(packet));
    ASSERT_TRUE(Game.ConnectTo(Server));
    EXPECT_TRUE(Game.Requests.Send(packet));
    Game.Disconnect();
    Game.WaitForEnd();
    Log.Clear();
    EXPECT_EQ(Game.Requests.CS_EnterSession(), GS_OK);
    EXPECT_TRUE(Logged("Send Error!!!\r\n"));
    EXPECT_FALSE(Game.Requests.Send(packet));
}

TEST_F(Connection, RepliesComeWhilePushedMessagesKeepTheirOrder)
{
    ASSERT_TRUE(Game.ConnectTo(Server));
    std::thread answering([&] {
        for (short serial = 1; serial <= 50; ++serial) {
            ASSERT_EQ(Server.Receive(8).size(), 8U);
            const CNTPacket reply = Reply(serial, 100U + static_cast<unsigned>(serial));
            Server.Send(BytesOf(Chat("before")) + BytesOf(reply));
        }
    });
    for (unsigned i = 1; i <= 50; ++i) {
        unsigned long result = 0;
        ASSERT_EQ(Game.Requests.CS_CancelDeleteAvatar(1, result), GS_OK);
        EXPECT_EQ(result, 100U + i);
    }
    answering.join();
    Game.Disconnect();
    Game.WaitForEnd();
    EXPECT_EQ(Game.Stub.Lines.size(), 50U);
    EXPECT_NE(Game.Stub.Threads[0], std::this_thread::get_id());
}

class ShortLimit : public Connection
{
protected:
    ShortLimit() { Game.Requests.SetReplyTimeLimit(150); }
};

TEST_F(ShortLimit, AReplyThatNeverComes)
{
    ASSERT_TRUE(Game.ConnectTo(Server));
    unsigned long result = 0;
    EXPECT_EQ(Game.Requests.CS_CancelDeleteAvatar(1, result), GS_REPLY_ERROR);
    EXPECT_EQ(result, 3U);
    EXPECT_FALSE(Game.IsConnected());
    Game.WaitForEnd();
    EXPECT_EQ(Game.Disconnections, 1);
    EXPECT_EQ(Game.Requests.GetPendingCount(), 0);
}

TEST_F(ShortLimit, ALateReplyAndAnAlienOneAreDropped)
{
    /// Stays connected when a reply is missing.
    class Patient : public CNTProxy_CLToGS
    {
    public:
        void ProcessProxyError() override {}
    };
    Patient requests;
    requests.SetReplyTimeLimit(150);
    Game.Attach(&requests);
    ASSERT_TRUE(Game.ConnectTo(Server));
    unsigned long result = 0;
    EXPECT_EQ(requests.CS_CancelDeleteAvatar(1, result), GS_REPLY_ERROR);
    requests.SetReplyTimeLimit(20000);
    std::thread answering([&] {
        Server.Receive(16);
        Server.Send(BytesOf(Reply(1, 7)) + BytesOf(Reply(999, 8)) + BytesOf(Reply(2, 9)));
    });
    EXPECT_EQ(requests.CS_CancelDeleteAvatar(1, result), GS_OK);
    EXPECT_EQ(result, 9U);
    answering.join();
    Game.Disconnect();
    Game.WaitForEnd();
}

TEST_F(ShortLimit, AskedFromAHandlerItRunsOut)
{
    GS_RESULT outcome = GS_OK;
    Game.Stub.OnChat = [&] {
        unsigned long result = 0;
        outcome = Game.Requests.CS_CancelDeleteAvatar(1, result);
    };
    ASSERT_TRUE(Game.ConnectTo(Server));
    Server.Send(BytesOf(Chat("ask")));
    Game.WaitForBytes(Chat("ask").GetBufSize());
    std::thread answering([&] {
        if (Server.Receive(8).size() == 8)
            Server.Send(BytesOf(Reply(1, 7)));
    });
    Game.ProcessQueuedMessageFromServer();
    EXPECT_EQ(outcome, GS_REPLY_ERROR);
    answering.join();
}

TEST_F(Connection, TheRealReplyLimitIsTwentySeconds)
{
    ASSERT_TRUE(Game.ConnectTo(Server));
    unsigned long result = 0;
    const DWORD start = ::GetTickCount();
    EXPECT_EQ(Game.Requests.CS_CancelDeleteAvatar(1, result), GS_REPLY_ERROR);
    EXPECT_GE(::GetTickCount() - start, 19900U);
}

TEST_F(Connection, TrafficCountersAreResetAfterFiveSeconds)
{
    ASSERT_TRUE(Game.ConnectTo(Server));
    Game.Requests.CS_EnterSession();
    EXPECT_EQ(Game.GetSendBytes(), 4U);
    const COLEDateTime now = COLEDateTime::GetTickCount();
    Game.TrafficTime = now + COLEDateTimeSpan(1, 0, 0, 0);
    Game.UpdateFrame();
    EXPECT_EQ(Game.GetSendBytes(), 4U);
    Game.TrafficTime = now - COLEDateTimeSpan(0, 0, 0, 6);
    Game.UpdateFrame();
    EXPECT_EQ(Game.GetSendBytes(), 0U);
}

std::ptrdiff_t Entries(const char* folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

TEST_F(Connection, LeavesNoDescriptor)
{
    const char* descriptors = "/proc/self/fd";
    if (!std::filesystem::exists(descriptors))
        GTEST_SKIP() << "this system does not list descriptors";
    const auto cycle = [this] {
        GameClient client;
        ASSERT_TRUE(client.ConnectTo(Server));
        client.Disconnect();
        client.WaitForEnd();
        Server.Close();
    };
    cycle();
    const std::ptrdiff_t before = Entries(descriptors);
    for (int i = 0; i < 20; ++i)
        cycle();
    // A receive thread gives its own descriptor back as it exits, just after its client's wait for it.
    Until("no descriptor is left", [&] { return Entries(descriptors) <= before; });
}

} // namespace
