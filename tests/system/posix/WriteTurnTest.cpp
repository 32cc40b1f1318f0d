// A stream so dense that a read is always complete must not keep the outbox from being emptied.

#include "KesraNTC/KesraNTC.h"
#include "tests/support/GameClient.h"

#include <gtest/gtest.h>

#include <string>

using namespace Kesra;
using ::Test::Await;
using ::Test::BytesOf;
using ::Test::Chat;

namespace
{

TEST(DenseStream, LeavesTheWriteItsTurn)
{
    ::Test::Peer server{asio::socket_base::receive_buffer_size(CNTPacket::Capacity)};
    ::Test::GameClient game;
    EventHandle isInside{EventHandle::AutoReset};
    EventHandle mayLeave{EventHandle::AutoReset};
    EventHandle isHandled{EventHandle::AutoReset};
    unsigned long sentAtLast = 0;
    game.Stub.OnChat = [&] {
        if (game.Stub.Lines.back() == "first") {
            isInside.Set();
            Await("it may leave", mayLeave);
        } else if (game.Stub.Lines.back() == "last") {
            sentAtLast = game.GetSendBytes(); // asking for the rest would send it
            isHandled.Set();
        }
    };
    game.ProcessOnRecvThread = true;
    ASSERT_TRUE(game.ConnectTo(server));
    server.Send(BytesOf(Chat("first")));
    ASSERT_TRUE(Await("the handler is entered", isInside));

    // The receive thread stands still: a write waits for it, for which there is room again, and behind it the
    // whole stream.
    std::size_t sent = 0;
    for (std::string bytes(CNTPacket::Capacity, 'x'); game.GetUnsentBytes() == 0; sent += bytes.size())
        ASSERT_EQ(game.SendPacket(bytes.data(), CNTPacket::Capacity), CNetIO::SendStarted);
    const std::size_t taken = sent - game.GetUnsentBytes();
    EXPECT_EQ(server.Receive(taken).size(), taken);
    std::string stream;
    while (stream.size() < 60000)
        stream += BytesOf(Chat(std::string(180, '.')));
    server.Send(stream + BytesOf(Chat("last")));
    // The read that is outstanding ends before the write is looked after.
    ::Test::Until("the read has ended", [&] {
        DWORD received = 0;
        DWORD flags = 0;
        return WSAGetOverlappedResult(static_cast<SOCKET>(game.GetSocket()), &game.OverlappedIN, &received,
                                      FALSE, &flags) != FALSE;
    });
    mayLeave.Set();
    ASSERT_TRUE(Await("the last line is handled", isHandled));
    EXPECT_EQ(sentAtLast, sent);
}

} // namespace
