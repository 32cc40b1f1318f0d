// What waits to be sent or drained takes pages of the system, and gives them back.

#include "KesraNTC/KesraNTC.h"
#include "KesraNTC/net/private/IoState.h"
#include "tests/platform/SocketFixture.h"
#include "tests/support/posix/FailingCalls.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

using namespace Kesra;

namespace
{

/// As it lies in the address space, its size in front.
constexpr long BlockBytes = 64 * 1024 + 4096;

class Game : public CNTMainClient
{
public:
    ~Game() override { StopReceiving(); }
    void ProcessDisconnection() override {}

    /// As if so many packets of 100 bytes had come from a socket.
    void Take(int packets)
    {
        for (int i = 0; i < packets; ++i) {
            const unsigned char header[] = {1, 0, 100, 0};
            std::copy(std::begin(header), std::end(header), Buf);
            PacketSize = 100;
            CNTPacket packet;
            MakeCompletePacket(packet);
        }
    }
};

TEST(BacklogStorage, GoesBackWithTheFloodAndADenseStreamKeepsTwoBlocks)
{
    constexpr int Flood = 5000;
    Game game;
    const long before = MappedBytes;
    for (const long kept : {0L, BlockBytes, 2 * BlockBytes, 2 * BlockBytes}) {
        game.Take(Flood);
        EXPECT_EQ(game.GetQueuedBytes(), 100UL * Flood);
        EXPECT_GT(MappedBytes - before, 400000);
        game.ProcessQueuedMessageFromServer();
        EXPECT_EQ(MappedBytes - before, kept);
    }
    // One that is filled and one that is drained; quiet frames give both back.
    game.ProcessQueuedMessageFromServer();
    game.ProcessQueuedMessageFromServer();
    EXPECT_EQ(MappedBytes, before);
    game.Take(Flood);
    game.ProcessQueuedMessageFromServer();
    EXPECT_EQ(MappedBytes, before) << "one flood by itself keeps nothing";
}

class OutboxStorage : public SocketTest
{
protected:
    static constexpr unsigned long Packet = 4096;

    OutboxStorage()
    {
        Connect();
        u_long on = 1;
        EXPECT_EQ(0, ioctlsocket(Client, FIONBIO, &on));
        const int little = Packet;
        EXPECT_EQ(0, setsockopt(Client, SOL_SOCKET, SO_SNDBUF, reinterpret_cast<const char*>(&little),
                                sizeof little));
    }

    bool Send(Outbox& outbox, const std::string& bytes)
    {
        const Held sending(Lock, SendRole);
        return outbox.Send(bytes.data(), static_cast<unsigned long>(bytes.size()), 1 << 20, Progress);
    }
    std::size_t Unsent(Outbox& outbox)
    {
        const Held sending(Lock, SendRole);
        return outbox.GetUnsent();
    }
    void Fill(Outbox& outbox)
    {
        while (Unsent(outbox) < 100000)
            ASSERT_TRUE(Send(outbox, std::string(Packet, 'x')));
    }

    CLock Lock;
    SendProgress Progress;
};

TEST_F(OutboxStorage, GoesBackWhenAllIsSentOrDropped)
{
    const long before = MappedBytes;
    Outbox outbox(Client);
    ASSERT_NO_FATAL_FAILURE(Fill(outbox));
    EXPECT_GE(MappedBytes - before, 2 * BlockBytes);
    ::Test::Until("all is sent", [&] {
        char taken[1 << 15];
        EXPECT_GT(recv(*Peer, taken, sizeof taken, 0), 0);
        const Held sending(Lock, SendRole);
        return !outbox.Advance(Progress, true) || outbox.GetUnsent() == 0;
    });
    EXPECT_EQ(MappedBytes, before);

    ASSERT_NO_FATAL_FAILURE(Fill(outbox));
    EXPECT_GE(MappedBytes - before, 2 * BlockBytes);
    Client.Close();
    const Held sending(Lock, SendRole);
    outbox.Drop();
    EXPECT_EQ(MappedBytes, before) << "what is dropped, too";
}

/// A packet of which a part has left cannot be taken back. Whoever finds that, whoever waits for the write's
/// event is told, for only the receive thread ends a connection.
TEST_F(OutboxStorage, ASenderThatRunsOutOfMemoryInAPacketTellsTheReceiveThread)
{
    Outbox outbox(Client);
    const std::string large(16 << 20, 'x');
    const Failing memory(SystemCall::MapMemory, ENOMEM);
    EXPECT_FALSE(Send(outbox, large));
    EXPECT_GT(Progress.Sent, 0U);
    EXPECT_EQ(Progress.Error, WSA_NOT_ENOUGH_MEMORY);
    EXPECT_TRUE(outbox.GetEvent().Wait(0));
    EXPECT_FALSE(Send(outbox, "x")) << "then and ever after";
    EXPECT_EQ(Unsent(outbox), 0U);

    // Now nothing of it leaves: the next one may.
    while (send(Client, "x", 1, 0) > 0) {
    }
    Outbox other(Client);
    Progress = {};
    EXPECT_FALSE(Send(other, "x"));
    EXPECT_EQ(Progress.Error, WSA_NOT_ENOUGH_MEMORY);
    EXPECT_FALSE(other.GetEvent().Wait(0));
}

} // namespace
