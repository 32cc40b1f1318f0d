// The collection of packets from a stream, without a socket: bytes are put where a read would put them.

#include "KesraNTC/base/private/Korean.h"
#include "KesraNTC/net/CNetClientIO.h"
#include "tests/support/LogDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace Kesra;

namespace
{

class Reassembly : public testing::Test
{
protected:
    Reassembly() { Io.Init(); }

    /// What a read of so many bytes does.
    unsigned long Deliver(const std::string& bytes)
    {
        EXPECT_LE(Io.RecvSize + bytes.size(), sizeof Io.Buf);
        std::copy(bytes.begin(), bytes.end(), Io.GetBuf() + Io.RecvSize);
        return Io.CollectPacket(bytes.size());
    }
    static std::string Header(unsigned number, unsigned size)
    {
        return {static_cast<char>(number & 0xFF), static_cast<char>(number >> 8),
                static_cast<char>(size & 0xFF), static_cast<char>(size >> 8)};
    }
    void Complete()
    {
        CNTPacket packet;
        EXPECT_TRUE(Io.MakeCompletePacket(packet));
        EXPECT_EQ(Io.RemainSize, 4U);
    }

    LogDirectory Log;
    CNetClientIO Io;
};

TEST_F(Reassembly, StartsWithFourBytesWantedAndRoomForThirtyPackets)
{
    EXPECT_EQ(Io.RemainSize, 4U);
    EXPECT_EQ(Io.RecvSize, 0U);
    EXPECT_FALSE(Io.IsConnected());
    EXPECT_GE(Io.PacketQueue.capacity(), 30U);
    EXPECT_EQ(Io.GetOverlappedIN()->IoType, 0);
    EXPECT_EQ(Io.GetOverlappedOUT()->IoType, 1);
    Io.AttachClientToOVERLAPPED(77);
    EXPECT_EQ(Io.GetOverlappedIN()->Client, 77U);
    EXPECT_EQ(Io.GetOverlappedOUT()->Client, 77U);
}

TEST_F(Reassembly, PacketsInPieces)
{
    const std::string header = Header(2002, 10);
    EXPECT_EQ(Deliver(header.substr(0, 1)), 5U);
    EXPECT_EQ(Io.RemainSize, 3U);
    EXPECT_EQ(Deliver(header.substr(1, 1)), 5U);
    EXPECT_EQ(Io.RemainSize, 2U);
    EXPECT_EQ(Deliver(header.substr(2)), 5U);
    EXPECT_EQ(Io.RemainSize, 6U);
    EXPECT_EQ(Deliver("abcd"), 5U);
    EXPECT_EQ(Io.RemainSize, 2U);
    EXPECT_EQ(Deliver("ef"), 0U);
    Complete();
    EXPECT_EQ(Deliver(Header(2003, 4)), 0U) << "a header alone is a packet";
    Complete();

    ASSERT_EQ(Io.PacketQueue.size(), 2U);
    EXPECT_EQ(Io.PacketQueue[0].GetBufSize(), 10);
    EXPECT_EQ(Io.PacketQueue[0].GetBufPoint(), 0);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(Io.PacketQueue[0].GetBuf()), 10), header + "abcdef")
        << "as it arrived";
    EXPECT_EQ(Io.PacketQueue[1].GetBufSize(), 4);
    EXPECT_EQ(Log.Log(), "");
}

TEST_F(Reassembly, SizesThatCannotBe)
{
    EXPECT_EQ(Deliver(Header(2002, 4096)), 5U);
    EXPECT_EQ(Io.RemainSize, 4092U);
    for (const unsigned size : {4097U, 65535U, 3U, 0U}) {
        Io.Init();
        Log.Clear();
        EXPECT_EQ(Deliver(Header(2002, size)), 2U) << size;
        EXPECT_TRUE(Log.HasLine(std::string("메시지가 너무 길다. 패킷번호 : "_949) + "2002 --- " +
                                std::string("메시지길이 : "_949) + std::to_string(size)));
    }
}

TEST_F(Reassembly, StrangeNumbersAreLoggedAndTaken)
{
    for (const unsigned number : {101U, 62000U}) {
        EXPECT_EQ(Deliver(Header(number, 4)), 0U);
        Complete();
    }
    EXPECT_EQ(Log.Log(), "");
    for (const unsigned number : {100U, 62001U}) {
        EXPECT_EQ(Deliver(Header(number, 4)), 0U);
        Complete();
        EXPECT_TRUE(Log.HasLine(std::string("패킷의 메시지 번호가 이상하다. 메시지 번호 : "_949) +
                                std::to_string(number)));
    }
    EXPECT_EQ(Io.PacketQueue.size(), 4U);
}

TEST_F(Reassembly, MoreThanWasAskedFor)
{
    EXPECT_EQ(Deliver(Header(2002, 8) + "x"), 2U);
    EXPECT_TRUE(Log.HasLine(std::string("헤더길이가 4바이트 보다 크다"_949)));
    Io.Init();
    EXPECT_EQ(Deliver(Header(2002, 8)), 5U);
    EXPECT_EQ(Io.CollectPacket(5), 2U);
    EXPECT_TRUE(Log.HasLine(std::string("원하는 길이보다 더 긴 메시지가 왔다. 메시지 길이 : "_949) + "5"));
}

TEST_F(Reassembly, NothingIsReadPastTheBuffer)
{
    Io.RecvSize = 4000;
    Io.RemainSize = 97;
    EXPECT_FALSE(Io.IssueNetRead());
    EXPECT_TRUE(Log.HasLine(std::string("Recv Buffer가 꽉차서 IssueNetRead 그냥 리턴한다.."_949)));
    char byte = 0;
    EXPECT_EQ(Io.SendPacket(&byte, 4097), 2U);
}

TEST_F(Reassembly, CountersAddAndReset)
{
    Io.AddRecvBytes(5);
    Io.AddRecvBytes(6);
    Io.AddSendBytes(7);
    EXPECT_EQ(Io.GetRecvBytes(), 11U);
    EXPECT_EQ(Io.GetSendBytes(), 7U);
    Io.InitRecvBytes();
    EXPECT_EQ(Io.GetRecvBytes(), 0U);
    EXPECT_EQ(Io.GetSendBytes(), 7U);
}

TEST_F(Reassembly, ACopyHoldsWhatWasQueuedAndCollected)
{
    EXPECT_EQ(Deliver(Header(2003, 4)), 0U);
    Complete();
    EXPECT_EQ(Deliver(Header(2002, 9)), 5U);
    const CNetClientIO copy(Io);
    EXPECT_EQ(copy.PacketQueue.size(), 1U);
    EXPECT_EQ(copy.RemainSize, 5U);
    EXPECT_EQ(copy.OverlappedIN.hEvent, Io.OverlappedIN.hEvent);
    EXPECT_EQ(copy.Socket, Io.Socket);
}

} // namespace
