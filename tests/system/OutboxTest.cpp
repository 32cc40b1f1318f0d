// No send waits for the peer: what it does not take waits in the outbox, and what does not fit there has
// failed.

#include "KesraNTC/KesraNTC.h"
#include "KesraNTC/base/private/Korean.h"
#include "tests/support/GameClient.h"
#include "tests/support/LogDirectory.h"
#include "tests/support/Until.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

using namespace Kesra;
using Test::Await;
using Test::BytesOf;
using Test::Chat;
using Test::GameClient;
using Test::Peer;
using Test::Until;

namespace
{

constexpr std::size_t PacketBytes = CNTPacket::Capacity;

class Outbox : public testing::Test
{
protected:
    Outbox()
    {
        EXPECT_TRUE(Game.ConnectTo(Server));
        Game.SetSendBuffer(PacketBytes);
    }

    static std::string Bytes(unsigned i) { return std::string(PacketBytes, static_cast<char>(i % 251)); }
    /// Sends packets, each of bytes of its own, until one is refused. Returns how many were not.
    unsigned Fill()
    {
        unsigned taken = 0;
        while (Game.SendPacket(Bytes(taken).data(), PacketBytes) == CNetIO::SendStarted)
            ++taken;
        return taken;
    }
    void ExpectFilled(unsigned taken)
    {
        for (unsigned i = 0; i < taken; ++i)
            ASSERT_TRUE(Server.Receive(PacketBytes) == Bytes(i)) << i << " of " << taken;
    }

    LogDirectory Log;
    Peer Server{asio::socket_base::receive_buffer_size(PacketBytes)};
    GameClient Game;
};

TEST_F(Outbox, IsBoundedAndKeepsTheOrderWhenThePeerDoesNotRead)
{
    Game.SetOutboxLimit(40 * PacketBytes);
    const unsigned taken = Fill();
    EXPECT_LE(Game.GetUnsentBytes(), 40 * PacketBytes);
    EXPECT_GT(Game.GetUnsentBytes(), 39 * PacketBytes);
    EXPECT_GT(Game.GetStatistics().UnsentBytes, 39 * PacketBytes);
    EXPECT_EQ(Game.GetEndReason(), END_OUTBOX_FULL);
    EXPECT_TRUE(Game.IsConnected()) << "what it means is decided by whoever sends";

    ExpectFilled(taken);
    Until("all is sent", [&] { return Game.GetUnsentBytes() == 0; });
    EXPECT_EQ(Game.GetSendBytes(), taken * PacketBytes) << "every byte is counted once";
    EXPECT_EQ(Game.GetStatistics().BytesSent, taken * PacketBytes);
    EXPECT_EQ(Game.GetStatistics().PacketsSent, taken);
    EXPECT_EQ(Game.SendPacket(Bytes(0).data(), PacketBytes), CNetIO::SendStarted) << "there is room again";
}

TEST_F(Outbox, ARequestThatDoesNotFitDisconnects)
{
    Game.SetOutboxLimit(PacketBytes);
    Fill();
    CString text(std::string(4000, 'x').c_str());
    // The part of a packet that waits may leave room for one more.
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(Game.Requests.CS_Error(text), GS_OK);
    EXPECT_FALSE(Game.IsConnected());
    EXPECT_EQ(Game.GetUnsentBytes(), 0U) << "Disconnect drops what waits";
    Game.WaitForEnd();
    EXPECT_EQ(Game.Disconnections, 1);
    EXPECT_EQ(Game.GetEndReason(), END_OUTBOX_FULL);
    EXPECT_TRUE(Log.HasLine("Send Error!!!"));
}

/// The answers are the client's own, and it is the game's frame that sends them.
TEST_F(Outbox, AServerThatOnlySendsClockMessagesJamsNobody)
{
    Game.SetOutboxLimit(PacketBytes);
    CNTPacket clock;
    clock << static_cast<unsigned short>(SC_SET_NET_TIME) << static_cast<unsigned short>(0) << 5U << 6U;
    std::string many;
    for (int i = 0; i < 1000; ++i)
        many += BytesOf(clock);
    std::atomic<bool> isOver{false};
    std::thread sending([&] {
        while (!isOver)
            Server.Send(many);
    });
    Until("the answers do not fit any more", [&] {
        Game.ProcessQueuedMessageFromServer();
        return !Game.IsConnected();
    });
    isOver = true;
    Game.WaitForEnd();
    // With both directions full the systems may take long to tell the server.
    shutdown(Server.Descriptor(), SD_BOTH);
    sending.join();
    Game.ProcessQueuedMessageFromServer();
    EXPECT_EQ(Game.GetEndReason(), END_OUTBOX_FULL);
    const std::string line = "Send Error!!! NetTime보내다가에러 났다"_949;
    const std::string log = Log.Log();
    const std::size_t first = log.find(line);
    ASSERT_NE(first, std::string::npos);
    EXPECT_EQ(log.find(line, first + 1), std::string::npos) << "only the first of a connection";

    unsigned long estimate = 1;
    Game.CS_ResponseNetTime(estimate);
    EXPECT_NE(Log.Log().find(line, first + 1), std::string::npos) << "a direct one is logged every time";
}

/// The receive thread may sit in a handler, so that senders and those who wait empty the outbox themselves.
TEST_F(Outbox, IsEmptiedByWhoeverSendsOrAsks)
{
    EventHandle isInside{EventHandle::AutoReset};
    EventHandle mayLeave{EventHandle::AutoReset};
    Game.Stub.OnChat = [&] {
        isInside.Set();
        Await("it may leave", mayLeave);
    };
    Game.ProcessOnRecvThread = true;
    Server.Send(BytesOf(Chat("stay")));
    ASSERT_TRUE(Await("the handler is entered", isInside));
    Game.SetOutboxLimit(30 * PacketBytes);
    const unsigned taken = Fill();
    std::thread reading([&] { ExpectFilled(taken); });
    Until("the thread that paces itself has emptied it", [&] { return Game.GetUnsentBytes() == 0; });
    reading.join();
    mayLeave.Set();
}

/// A system may cancel what an ended thread has begun to write.
TEST_F(Outbox, LeavesWhenItsSenderHasEnded)
{
    Game.SetOutboxLimit(30 * PacketBytes);
    unsigned taken = 0;
    std::thread([&] { taken = Fill(); }).join();
    ExpectFilled(taken);
    EXPECT_FALSE(Game.WaitForReceiveThread(0)) << "the connection has ended";
}

TEST_F(Outbox, NobodyWaitsForItsEnd)
{
    GameClient other;
    Peer silent{asio::socket_base::receive_buffer_size(PacketBytes)};
    ASSERT_TRUE(other.ConnectTo(silent));
    std::thread sending([&] {
        CNTPacket packet;
        packet.SetBufSize(CNTPacket::Capacity);
        while (other.SendToServer(packet) == CNetIO::SendStarted || other.IsConnected())
            std::this_thread::yield();
    });
    Until("it is full", [&] { return other.GetEndReason() == END_OUTBOX_FULL; });
    other.Disconnect();
    sending.join();
    other.WaitForEnd();
    EXPECT_EQ(other.Disconnections, 1);
}

/// Without a receive thread a send is one overlapped operation of the caller's own data.
TEST(BareSocket, SendsWithItsWriteBlock)
{
    WSADATA data;
    ASSERT_EQ(WSAStartup(0x0202, &data), 0);
    Peer server;
    const SOCKET socket = WSASocketA(AF_INET, SOCK_STREAM, 0, nullptr, 0, WSA_FLAG_OVERLAPPED);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(server.Port());
    address.sin_addr.s_addr = inet_addr("127.0.0.1");
    ASSERT_EQ(connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    server.Accept();

    CNetIO io;
    EXPECT_FALSE(io.IsConnected()) << "before Init";
    io.Close();
    io.SetSocket(static_cast<unsigned int>(socket));
    EXPECT_TRUE(io.IsConnected());
    io.SetSocket(static_cast<unsigned int>(INVALID_SOCKET));
    io.Init();
    io.SetSocket(static_cast<unsigned int>(socket));
    char bytes[] = "by itself";
    ASSERT_EQ(io.SendPacket(bytes, sizeof bytes), CNetIO::SendStarted);
    EXPECT_EQ(WaitForSingleObject(io.GetOverlappedOUT()->hEvent, 60000), WAIT_OBJECT_0);
    DWORD sent = 0;
    DWORD flags = 0;
    EXPECT_TRUE(WSAGetOverlappedResult(socket, io.GetOverlappedOUT(), &sent, FALSE, &flags));
    EXPECT_EQ(sent, sizeof bytes);
    EXPECT_EQ(io.GetSendBytes(), 0U) << "the caller counts";
    EXPECT_EQ(server.Receive(sizeof bytes), std::string(bytes, sizeof bytes));

    u_long available = 0;
    char byte = 0;
    std::thread answering([&] { server.Send("x"); });
    EXPECT_EQ(recv(static_cast<SOCKET>(io.GetSocket()), &byte, 1, 0), 1)
        << "its calls still wait " << available;
    answering.join();
    io.Close();
    EXPECT_FALSE(io.IsConnected());
    WSACleanup();
}

} // namespace
