#include "KesraNTC/base/CString.h"
#include "KesraNTC/net/CNTPacket.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

constexpr unsigned short AnyNumber = 2002;

CNTPacket Begun(unsigned short number = AnyNumber)
{
    CNTPacket packet;
    packet << number << static_cast<unsigned short>(0);
    return packet;
}

/// The packet as its receiver holds it: same bytes, position 0, header read.
CNTPacket Received(const CNTPacket& sent)
{
    CNTPacket packet;
    packet.Write(sent.GetBuf(), sent.GetBufSize());
    packet.SetBufPoint(0);
    unsigned short number = 0;
    unsigned short size = 0;
    packet >> number >> size;
    EXPECT_EQ(size, sent.GetBufSize());
    return packet;
}

std::vector<int> Bytes(const CNTPacket& packet, unsigned from = 0)
{
    return std::vector<int>(packet.GetBuf() + from, packet.GetBuf() + packet.GetBufSize());
}

TEST(Packet, FreshOneIsEmptyAndZero)
{
    CNTPacket packet('x');
    EXPECT_EQ(packet.GetBufSize(), 0);
    EXPECT_EQ(packet.GetBufPoint(), 0);
    EXPECT_TRUE(packet.IsBufEmpty());
    for (int i = 0; i < CNTPacket::Capacity; ++i)
        ASSERT_EQ(packet.GetBuf()[i], 0);
}

TEST(Packet, HeaderIsPlainAndKeepsTheSize)
{
    CNTPacket packet = Begun(1002);
    EXPECT_EQ(Bytes(packet), (std::vector<int>{0xEA, 0x03, 4, 0}));
    packet << 7;
    EXPECT_EQ(Bytes(packet), (std::vector<int>{0xEA, 0x03, 8, 0, 7 ^ 0x3C, 0, 0, 0}));
    EXPECT_FALSE(packet.IsBufEmpty());
}

TEST(Packet, EveryWidthIsScrambledFromItsOwnFirstByte)
{
    CNTPacket packet = Begun();
    packet << true << static_cast<short>(0x0102) << static_cast<long>(-2) << 0x0102030405060708.0p0;
    const std::vector<int> bytes = Bytes(packet, 4);
    EXPECT_EQ(bytes[0], 1 ^ 0x3C);
    EXPECT_EQ(bytes[1], 0x02 ^ 0x3C);
    EXPECT_EQ(bytes[2], 0x01);
    EXPECT_EQ(bytes[3], 0xFE ^ 0x3C);
    EXPECT_EQ(bytes[4], 0xFF);
    EXPECT_EQ(bytes.size(), 1U + 2U + 4U + 8U);

    double value = 0x0102030405060708.0p0;
    unsigned char image[8];
    std::memcpy(image, &value, sizeof image);
    for (unsigned i = 0; i < sizeof image; ++i)
        EXPECT_EQ(bytes[7 + i], i % 4 == 0 ? image[i] ^ 0x3C : image[i]) << i;
}

TEST(Packet, TheThreePlainNumbers)
{
    for (const unsigned short number : std::initializer_list<unsigned short>{747, 486})
        EXPECT_EQ(Bytes(Begun(number) << 5, 4), (std::vector<int>{5, 0, 0, 0})) << number;
    CNTPacket packet = Begun(508);
    packet << 5;
    EXPECT_EQ(packet.GetBuf()[4], 5 ^ 0x3C);
    CNTPacket received = Received(packet);
    int value = 0;
    received >> value;
    EXPECT_EQ(value, 5 ^ 0x3C);
}

TEST(Packet, EveryTypeComesBack)
{
    CNTPacket packet = Begun();
    const SYSTEMTIME time{2003, 7, 2, 15, 8, 9, 10, 999};
    packet << 'c' << static_cast<unsigned char>(200) << true << static_cast<short>(-3)
           << static_cast<unsigned short>(65000) << -5 << 4000000000U << static_cast<long>(-7)
           << static_cast<unsigned long>(4000000001U) << 1.5F << -2.25 << time << "text"
           << std::string("more");

    CNTPacket received = Received(packet);
    char c = 0;
    unsigned char uc = 0;
    bool b = false;
    short s = 0;
    unsigned short us = 0;
    int i = 0;
    unsigned u = 0;
    long l = 0;
    unsigned long ul = 0;
    float f = 0;
    double d = 0;
    SYSTEMTIME t{};
    CString text;
    std::string more("old");
    received >> c >> uc >> b >> s >> us >> i >> u >> l >> ul >> f >> d >> t >> text >> more;
    EXPECT_EQ(c, 'c');
    EXPECT_EQ(uc, 200);
    EXPECT_TRUE(b);
    EXPECT_EQ(s, -3);
    EXPECT_EQ(us, 65000);
    EXPECT_EQ(i, -5);
    EXPECT_EQ(u, 4000000000U);
    EXPECT_EQ(l, -7);
    EXPECT_EQ(ul, 4000000001U);
    EXPECT_EQ(f, 1.5F);
    EXPECT_EQ(d, -2.25);
    EXPECT_EQ(std::memcmp(&t, &time, sizeof t), 0);
    EXPECT_STREQ(text, "text");
    EXPECT_EQ(text.GetLength(), 4);
    EXPECT_EQ(more, "more");
    EXPECT_EQ(received.GetBufPoint(), received.GetBufSize());
}

TEST(Packet, ReadingTwiceScramblesAgain)
{
    CNTPacket packet = Received(Begun() << 1000);
    int first = 0;
    int second = 0;
    packet >> first;
    packet.SetBufPoint(4);
    packet >> second;
    EXPECT_EQ(first, 1000);
    EXPECT_EQ(second, 1000 ^ 0x3C);
}

TEST(Packet, HoldsExactly4096Bytes)
{
    CNTPacket packet = Begun();
    const std::vector<unsigned char> payload(4092, 0xAA);
    EXPECT_TRUE(packet.Write(payload.data(), 4092));
    EXPECT_EQ(packet.GetBufSize(), 4096);
    const CNTPacket full = packet;
    EXPECT_FALSE(packet.Write("x", 1));
    packet << 'x' << static_cast<short>(1) << 1 << 1.0;
    packet.WriteString("never");
    EXPECT_EQ(packet.GetBufSize(), 4096);
    EXPECT_EQ(std::memcmp(packet.GetBuf(), full.GetBuf(), 4096), 0);
}

TEST(Packet, ValuesThatDoNotFitAreLeftOutOneByOne)
{
    CNTPacket packet = Begun();
    const std::vector<unsigned char> payload(4089, 0);
    packet.Write(payload.data(), 4089);
    packet << 1.0 << 7 << static_cast<short>(9);
    EXPECT_EQ(packet.GetBufSize(), 4095);
    packet.SetBufPoint(4093);
    short value = 0;
    packet >> value;
    EXPECT_EQ(value, 9);

    CNTPacket text = Begun();
    text.WriteString(std::string(4091, 'x').c_str());
    EXPECT_EQ(text.GetBufSize(), 6) << "the length stays, the text does not fit";
}

TEST(Packet, AShortReadSetsTheLowBytesOnly)
{
    CNTPacket packet = Received(Begun() << static_cast<short>(0x1234));
    int value = 0x7F7F7F7F;
    packet >> value;
    EXPECT_EQ(value, 0x7F7F1234);
    packet >> value;
    EXPECT_EQ(value, 0x7F7F1234);

    CNTPacket negative = Received(Begun() << static_cast<short>(-1));
    long wide = 0;
    negative >> wide;
    EXPECT_EQ(wide, 0xFFFF);
    double untouched = 1.5;
    negative >> untouched;
    EXPECT_EQ(untouched, 1.5);
    EXPECT_EQ(negative.Read(&value, 4), 0);
}

TEST(Packet, ReadsNeverPassTheBuffer)
{
    CNTPacket packet = Begun();
    packet.SetBufSize(65535);
    packet.SetBufPoint(4094);
    unsigned char bytes[16];
    EXPECT_EQ(packet.Read(bytes, 16), 2);
    packet.SetBufPoint(60000);
    EXPECT_EQ(packet.Read(bytes, 16), 0);
    EXPECT_EQ(packet.SkipRead(10), 0);
    EXPECT_FALSE(packet.Write(bytes, 1));
    int value = 3;
    packet >> value;
    EXPECT_EQ(value, 3);
    const CNTPacket copy = packet;
    EXPECT_EQ(copy.GetBufSize(), 65535);
}

TEST(Packet, StringsOfEveryKind)
{
    CNTPacket packet = Begun();
    packet.WriteString("");
    EXPECT_EQ(Bytes(packet, 4), (std::vector<int>{0x3C, 0}));
    packet.WriteString(nullptr);
    EXPECT_EQ(packet.GetBufSize(), 8);
    packet.WriteString("abcde");
    EXPECT_EQ(Bytes(packet, 8), (std::vector<int>{5 ^ 0x3C, 0, 'a' ^ 0x3C, 'b', 'c', 'd', 'e' ^ 0x3C}));

    CNTPacket received = Received(packet);
    CString kept("kept");
    received >> kept;
    EXPECT_STREQ(kept, "kept") << "an empty text changes nothing";
    received.SkipRead(2);
    CString shared = kept;
    received >> kept;
    EXPECT_STREQ(kept, "abcde");
    EXPECT_STREQ(shared, "kept") << "the buffer was shared";
}

TEST(Packet, ATruncatedTextEndsWithThePacket)
{
    CNTPacket packet = Begun();
    packet << static_cast<unsigned short>(60000) << 'h' << 'i';
    packet.SetBufPoint(4);
    CString text("old text");
    packet.ReadString(text);
    EXPECT_EQ(text.GetLength(), 2);
    EXPECT_LT(text.GetAllocLength(), 100);
    packet.SetBufPoint(packet.GetBufSize());
    std::string nothing("old");
    packet >> nothing;
    EXPECT_EQ(nothing, "");
}

TEST(Packet, CopiesTakeTheValidBytesOnly)
{
    CNTPacket source = Begun();
    source << static_cast<short>(1) << 2;
    source.SetBufPoint(6);
    CNTPacket target;
    std::memset(target.GetBuf(), 0x55, CNTPacket::Capacity);
    target = source;
    EXPECT_EQ(target.GetBufSize(), 10);
    EXPECT_EQ(target.GetBufPoint(), 6);
    EXPECT_EQ(std::memcmp(target.GetBuf(), source.GetBuf(), 10), 0);
    EXPECT_EQ(target.GetBuf()[10], 0x55);
}

TEST(Packet, ConcreteUndoesItself)
{
    CNTPacket packet;
    unsigned char bytes[] = {1, 2, 3, 4, 5, 6};
    packet.Concrete(bytes, sizeof bytes);
    EXPECT_EQ(bytes[0], 1 ^ 0x3C);
    EXPECT_EQ(bytes[1], 2);
    EXPECT_EQ(bytes[4], 5 ^ 0x3C);
    packet.Concrete(bytes, sizeof bytes);
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EQ(bytes[4], 5);
}

} // namespace
