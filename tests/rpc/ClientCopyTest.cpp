#include "KesraNTC/KesraNTC.h"
#include "KesraNTC/rpc/CNTStub_Quiet.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace
{

class Plain : public CNTMainClient
{
public:
    void ProcessDisconnection() override {}
    unsigned long ProcessPacketFromServer(CNTPacket& packet) override
    {
        Seen.push_back(packet.GetBuf()[0]);
        return 0;
    }
    /// As if a packet with this number had come.
    void Take(unsigned char number)
    {
        const unsigned char header[] = {number, 0, CNTPacket::HeaderSize, 0};
        std::memcpy(Buf, header, sizeof header);
        PacketSize = sizeof header;
        CNTPacket packet;
        MakeCompletePacket(packet);
    }

    std::vector<int> Seen;
};

void ExpectCopyOf(const Plain& original, Plain& copy)
{
    EXPECT_TRUE(copy.ProcessOnRecvThread);
    EXPECT_EQ(copy.Proxy, original.Proxy);
    EXPECT_EQ(copy.Stub, original.Stub);
    EXPECT_EQ(copy.ServerPort, 7001U);
    EXPECT_STREQ(copy.ServerAddr, "10.1.2.3");
    EXPECT_EQ(copy.NetTime, 11U);
    EXPECT_EQ(copy.ServerTime, 12U);
    EXPECT_EQ(copy.Latency, 13U);
    EXPECT_TRUE(copy.ConnectTime == original.ConnectTime);
    EXPECT_TRUE(copy.TrafficTime == original.TrafficTime);
    EXPECT_EQ(copy.GetSendBytes(), 14U);
    EXPECT_EQ(copy.GetRecvBytes(), 15U);
    EXPECT_EQ(copy.RecvSize, 2U);
    EXPECT_EQ(copy.RemainSize, 3U);
    EXPECT_EQ(copy.RecvStage, 1U);
    EXPECT_EQ(copy.PacketSize, 5U);
    EXPECT_EQ(copy.Buf[7], 'b');
    EXPECT_EQ(copy.OverlappedIN.hEvent, original.OverlappedIN.hEvent);
    EXPECT_EQ(copy.OverlappedOUT.hEvent, original.OverlappedOUT.hEvent);
    EXPECT_EQ(copy.GetQueuedPackets(), 40U);
    EXPECT_EQ(copy.GetQueuedBytes(), 160U);
    copy.ProcessQueuedMessageFromServer();
    ASSERT_EQ(copy.Seen.size(), 40U);
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(copy.Seen[static_cast<std::size_t>(i)], i);
    EXPECT_EQ(copy.GetQueuedPackets(), 0U);
}

TEST(ClientCopy, HasTheValuesTheAttachmentsAndTheQueue)
{
    CNTProxy_CLToGS proxy;
    CNTStub_Quiet stub;
    Plain original;
    original.ProcessOnRecvThread = true;
    EXPECT_TRUE(original.Attach(&proxy));
    EXPECT_TRUE(original.Attach(&stub));
    EXPECT_TRUE(original.SetServerAddr("10.1.2.3"));
    EXPECT_FALSE(original.SetServerAddr("a.name.of.more.than.29.letters"));
    EXPECT_STREQ(original.ServerAddr, "10.1.2.3");
    original.SetServerPort(7001);
    original.SetNetTime(11);
    original.ServerTime = 12;
    original.SetLatency(13);
    original.ConnectTime = COLEDateTime(2020, 1, 2, 3, 4, 5);
    original.TrafficTime = COLEDateTime(2021, 1, 2, 3, 4, 5);
    original.AddSendBytes(14);
    original.AddRecvBytes(15);
    for (int i = 0; i < 40; ++i)
        original.Take(static_cast<unsigned char>(i));
    original.RecvSize = 2;
    original.RemainSize = 3;
    original.RecvStage = 1;
    original.PacketSize = 5;
    original.Buf[7] = 'b';

    Plain copy(original);
    Plain assigned;
    assigned.Take(99);
    assigned = original;
    Plain& same = original;
    original = same;
    ExpectCopyOf(original, copy);
    ExpectCopyOf(original, assigned);
    ExpectCopyOf(original, original);
}

} // namespace
