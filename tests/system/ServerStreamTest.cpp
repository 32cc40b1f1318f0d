// What only bare sockets can show of the server: malformed, fragmented and broken streams.
#include "RawPeer.h"

#include "server/GameServer.h"
#include "server/Network.h"
#include "server/RequestTable.h"
#include "server/Writers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

using namespace Kesra;

namespace
{

using Bytes = RawPeer::Bytes;

Bytes BytesOf(const CNTPacket& packet)
{
    return {packet.GetBuf(), packet.GetBuf() + packet.GetBufSize()};
}

template <class... Fields> Bytes Request(MessageNumber number, const Fields&... fields)
{
    return BytesOf(MessageOf(number, fields...));
}

Bytes Header(unsigned short number, unsigned short size)
{
    Bytes bytes(4);
    std::memcpy(bytes.data(), &number, 2);
    std::memcpy(bytes.data() + 2, &size, 2);
    return bytes;
}

unsigned short NumberOf(const Bytes& packet)
{
    unsigned short number = 0;
    if (packet.size() >= sizeof number)
        std::memcpy(&number, packet.data(), sizeof number);
    return number;
}

/// A packet ready for reading its payload.
CNTPacket PayloadOf(const Bytes& bytes)
{
    CNTPacket packet;
    packet.Write(bytes.data(), static_cast<unsigned short>(bytes.size()));
    packet.SetBufPoint(CNTPacket::HeaderSize);
    return packet;
}

constexpr unsigned short Serial = 7;

Bytes LogonRequest(const char* account = "mina")
{
    return Request(CS_LOGON, Serial, account, "secret");
}

/// The result code of a reply that holds a serial and nothing else before it.
unsigned long ResultOf(const Bytes& bytes)
{
    CNTPacket packet = PayloadOf(bytes);
    unsigned short serial = 0;
    unsigned long result = 0;
    packet >> serial >> result;
    EXPECT_EQ(serial, Serial);
    return result;
}

/// Skips pushed messages up to the next one of that number; empty when the connection ends first.
Bytes ReadUntil(RawPeer& peer, unsigned short number)
{
    Bytes packet = peer.ReadPacket();
    while (!packet.empty() && NumberOf(packet) != number)
        packet = peer.ReadPacket();
    return packet;
}

void LogonAndPlay(RawPeer& peer, const char* account, const char* nickname)
{
    peer.Send(LogonRequest(account));
    peer.Send(Request(CS_CREATE_AVATAR, Serial, short{0}, nickname, short{1}));
    peer.Send(Request(CS_TRY_ON_SESSION, Serial, short{0}, short{1}));
    peer.Send(Request(CS_ENTER_SESSION));
    ASSERT_FALSE(ReadUntil(peer, SC_WORLD_OBJECT_LISTS).empty());
}

/// The server still serves: a fresh connection gets an answer.
void ExpectServing(GameServer& server)
{
    RawPeer peer(server.GetPort());
    peer.Send(Request(CS_DELETE_AVATAR, Serial, short{0}));
    EXPECT_EQ(NumberOf(peer.ReadPacket()), GS_REPLY_10004);
}

ServerOptions QuietOptions()
{
    ServerOptions options;
    options.ClockInterval = std::chrono::milliseconds(0);
    return options;
}

} // namespace

TEST(ServerStream, DropsMalformedHeadersAndNobodyElse)
{
    GameServer server(QuietOptions());
    RawPeer bystander(server.GetPort());
    unsigned dropped = 0;
    for (const int size : {0, 1, 2, 3, 4097, 65535}) {
        RawPeer peer(server.GetPort());
        peer.Send(LogonRequest());
        peer.Send(Header(CS_CHAT, static_cast<unsigned short>(size)));
        peer.ReadToEnd();
        ++dropped;
        EXPECT_TRUE(server.WaitFor([&](const ServerCounters& c) { return c.Malformed == dropped; })) << size;
    }
    EXPECT_TRUE(server.WaitFor([&](const ServerCounters& c) { return c.Ended == dropped; }));
    bystander.Send(LogonRequest("bystander"));
    EXPECT_EQ(NumberOf(bystander.ReadPacket()), GS_REPLY_10002);
}

TEST(ServerStream, SurvivesClientsThatVanishAtAnyByte)
{
    GameServer server(QuietOptions());
    const Bytes logon = LogonRequest();
    unsigned gone = 0;
    for (std::size_t cut = 0; cut <= logon.size(); ++cut) {
        for (const bool abruptly : {false, true}) {
            RawPeer peer(server.GetPort());
            peer.Send(logon.data(), cut);
            abruptly ? peer.Reset() : peer.Close();
            ++gone;
            ASSERT_TRUE(server.WaitFor([&](const ServerCounters& c) { return c.Ended == gone; })) << cut;
        }
    }
    // Nobody is left logged on: the account can be used again.
    RawPeer peer(server.GetPort());
    peer.Send(logon);
    CNTPacket reply = PayloadOf(peer.ReadPacket());
    unsigned short serial = 0;
    unsigned short value = 0;
    short avatars = 0;
    short privData = 0;
    unsigned long result = 1;
    reply >> serial >> value >> avatars >> privData >> result;
    EXPECT_EQ(serial, Serial);
    EXPECT_EQ(result, static_cast<unsigned long>(Result::Done));
}

TEST(ServerStream, TellsTheOthersWhenAPlayerVanishesInsideAPacket)
{
    GameServer server(QuietOptions());
    RawPeer stays(server.GetPort());
    LogonAndPlay(stays, "stays", "Stays");
    auto vanishes = std::make_unique<RawPeer>(server.GetPort());
    LogonAndPlay(*vanishes, "vanishes", "Vanishes");
    CNTPacket announced = PayloadOf(ReadUntil(stays, SC_AVATAR));
    TAvatar avatar;
    announced >> avatar;

    const Bytes chat = Request(CS_CHAT, "half of a sentence");
    vanishes->Send(chat.data(), chat.size() / 2);
    vanishes->Reset();
    CNTPacket left = PayloadOf(ReadUntil(stays, SC_WORLD14011));
    unsigned long id = 0;
    left >> id;
    EXPECT_EQ(id, avatar.GetID());
}

TEST(ServerStream, TakesPacketsInAnyPieces)
{
    GameServer server(QuietOptions());
    RawPeer peer(server.GetPort());
    for (const unsigned char octet : LogonRequest())
        peer.Send(&octet, 1);
    EXPECT_EQ(NumberOf(peer.ReadPacket()), GS_REPLY_10002);

    // More than the server's buffer holds at once, so that packets also straddle its end.
    constexpr int requests = 5000;
    Bytes dense;
    const Bytes one = Request(CS_CREATE_AVATAR, Serial, short{9}, "Nobody", short{1});
    for (int i = 0; i < requests; ++i)
        dense.insert(dense.end(), one.begin(), one.end());
    peer.Send(dense);
    for (int i = 0; i < requests; ++i) {
        const Bytes reply = ReadUntil(peer, GS_REPLY_10003);
        ASSERT_EQ(ResultOf(reply), static_cast<unsigned long>(Result::BadArgument)) << i;
    }
}

TEST(ServerStream, IgnoresMalformedPayloads)
{
    GameServer server(QuietOptions());
    RawPeer speaker(server.GetPort());
    RawPeer listener(server.GetPort());
    LogonAndPlay(speaker, "speaker", "Speaker");
    LogonAndPlay(listener, "listener", "Listener");

    const Bytes tooShort = Header(CS_CHAT, 4);
    Bytes tooLong = Request(CS_CHAT, "hello", 1);
    const Bytes overlong = Request(CS_CHAT, std::string(201, 'x'));
    CNTPacket claims = MessageOf(CS_CHAT, static_cast<unsigned short>(100), short{0});
    const Bytes nan = Request(CS_AVATAR_MOVE, std::numeric_limits<float>::quiet_NaN(), 0.0F, 0.0F, 0.0F,
                              static_cast<unsigned short>(1), 1UL);
    const Bytes unknown = Request(static_cast<MessageNumber>(2001));
    for (const Bytes& bytes : {tooShort, tooLong, overlong, BytesOf(claims), unknown})
        speaker.Send(bytes);
    speaker.Send(nan);
    speaker.Send(Request(CS_CHAT, "the only line"));
    EXPECT_TRUE(server.WaitFor([](const ServerCounters& c) { return c.Ignored == 5; }));
    // The listener hears the valid line and none of the others, and sees no movement.
    Bytes packet = listener.ReadPacket();
    ASSERT_EQ(NumberOf(packet), SC_CHAT);
    CNTPacket chat = PayloadOf(packet);
    short who = 0;
    std::string line;
    chat >> who >> line;
    EXPECT_EQ(line, "the only line");
}

TEST(ServerStream, WithstandsRandomRequests)
{
    GameServer server(QuietOptions());
    server.AddAccount("master", "secret", true);
    RawPeer peer(server.GetPort());
    LogonAndPlay(peer, "master", "Master");
    std::mt19937 random(20240229);
    unsigned sent = 0;
    for (unsigned short number = CS_LOGON; number <= CS_GM_STEAL_ITEM; ++number) {
        if (FindRequest(number) == nullptr || number == CS_GM_PURGE_AVATAR)
            continue;
        for (int i = 0; i < 60; ++i) {
            CNTPacket packet = MessageOf(static_cast<MessageNumber>(number));
            // Small numbers meet real sessions, items and avatars more often than wild ones.
            const std::size_t length = random() % 40;
            for (std::size_t at = 0; at < length; ++at) {
                const auto octet = random() % 4 == 0 ? random() : random() % 3;
                packet << static_cast<unsigned char>(octet & 0xFF);
            }
            ASSERT_TRUE(peer.Send(BytesOf(packet)));
            ++sent;
        }
        ASSERT_TRUE(server.WaitFor([=](const ServerCounters& c) { return c.PacketsReceived >= sent; }));
    }
    ExpectServing(server);
}

TEST(ServerStream, SendsTheListOfGameServersUnscrambled)
{
    GameServer server(QuietOptions());
    RawPeer peer(server.GetPort());
    peer.Send(LogonRequest());
    const Bytes list = ReadUntil(peer, SC_GS_LIST);
    const Bytes expected{0xFC, 0x01, 10, 0, 1, 0, 1, 0, 0, 0};
    EXPECT_EQ(list, expected);
}

TEST(ServerStream, FaultsDoWhatTheySay)
{
    GameServer server(QuietOptions());
    const Bytes request = Request(CS_DELETE_AVATAR, Serial, short{0});
    constexpr std::size_t replySize = 18;

    Faults faults;
    faults.SplitAt = {1, 4, 5};
    server.SetFaults(faults);
    RawPeer split(server.GetPort());
    split.Send(request);
    EXPECT_EQ(split.ReadPacket().size(), replySize);

    for (std::size_t limit = 0; limit <= replySize; ++limit) {
        faults.CloseAfterBytes = limit;
        server.SetFaults(faults);
        RawPeer closed(server.GetPort());
        closed.Send(request);
        EXPECT_EQ(closed.ReadToEnd().size(), limit);
    }

    faults = {};
    faults.Replies = ReplyFault::Held;
    server.SetFaults(faults);
    RawPeer held(server.GetPort());
    const unsigned before = server.GetCounters().ReceivedOf(CS_DELETE_AVATAR);
    held.Send(request);
    ASSERT_TRUE(server.WaitForReceived(CS_DELETE_AVATAR, before + 1));
    server.SendHeader(Everyone, SC_EVENT29002, 4);
    EXPECT_EQ(held.ReadPacket(), Header(SC_EVENT29002, 4)) << "a pushed message overtakes a held reply";
    server.ReleaseReplies();
    EXPECT_EQ(held.ReadPacket().size(), replySize);

    faults.Replies = ReplyFault::WrongSerial;
    server.SetFaults(faults);
    held.Send(request);
    CNTPacket wrong = PayloadOf(held.ReadPacket());
    unsigned short serial = Serial;
    wrong >> serial;
    EXPECT_NE(serial, Serial);
}
