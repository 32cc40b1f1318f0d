// What only bare sockets can show of the server: malformed, fragmented and broken streams.
#include "ServerTalk.h"

#include "server/peer/RequestTable.h"

#include <gtest/gtest.h>

#include <atomic>
#include <list>
#include <random>
#include <thread>

using namespace Kesra;
using namespace ServerTalk;

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
    CNTPacket claims = MessageOf(CS_CHAT, static_cast<unsigned short>(100), short{0});
    const Bytes nan = Request(CS_AVATAR_MOVE, std::numeric_limits<float>::quiet_NaN(), 0.0F, 0.0F, 0.0F,
                              static_cast<unsigned short>(1), 1UL);
    const Bytes unknown = Request(static_cast<MessageNumber>(2001));
    for (const Bytes& bytes : {tooShort, tooLong, BytesOf(claims), unknown})
        speaker.Send(bytes);
    speaker.Send(nan);
    speaker.Send(Request(CS_CHAT, "the only line"));
    EXPECT_TRUE(server.WaitFor([](const ServerCounters& c) { return c.Ignored == 4; }));
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

/// Whoever asks and never reads is dropped, and nobody else waits for it.
TEST(ServerStream, DropsWhoeverNeverReads)
{
    GameServer server(QuietOptions());
    RawPeer bystander(server.GetPort());
    ExpectServed(bystander);
    RawPeer greedy(server.GetPort());
    ASSERT_NO_FATAL_FAILURE(LogonAndPlay(greedy, "greedy", "Greedy"));
    Bytes questions;
    for (int i = 0; i < 1000; ++i) {
        const Bytes one = Request(CS_AVATAR_RELOAD);
        questions.insert(questions.end(), one.begin(), one.end());
    }
    // At least eight megabytes of answers have to pile up behind what the system's buffers take.
    for (int i = 0; i < 10'000 && server.GetCounters().Ended == 0; ++i) {
        if (!greedy.Send(questions))
            break;
        ExpectServed(bystander);
    }
    EXPECT_TRUE(server.WaitFor([](const ServerCounters& c) { return c.Ended == 1; }));
    EXPECT_TRUE(Logged(server, "connection 2 (127.0.0.1:" + std::to_string(greedy.Port()) +
                                   "): the peer does not read"));
    ExpectServed(bystander);
}

TEST(ServerStream, HalfAPacketOfManyKeepsNobodyWaiting)
{
    GameServer server(QuietOptions());
    std::list<RawPeer> peers;
    for (int i = 0; i < 200; ++i) {
        const Bytes logon = LogonRequest("peer" + std::to_string(i));
        peers.emplace_back(server.GetPort()).Send(logon.data(), logon.size() / 2);
    }
    ExpectServing(server);
    // The other halves, one byte of each peer after the other.
    std::vector<Bytes> rest;
    for (int i = 0; i < 200; ++i) {
        const Bytes logon = LogonRequest("peer" + std::to_string(i));
        rest.emplace_back(logon.begin() + static_cast<std::ptrdiff_t>(logon.size() / 2), logon.end());
    }
    for (std::size_t at = 0; at < 20; ++at) {
        auto half = rest.begin();
        for (RawPeer& peer : peers) {
            if (at < half->size())
                peer.Send(half->data() + at, 1);
            ++half;
        }
    }
    for (RawPeer& peer : peers)
        EXPECT_EQ(ResultOf(ReadUntil(peer, GS_REPLY_10002)), static_cast<unsigned long>(Result::Done));
    EXPECT_EQ(server.GetCounters().Ended, 1U);
}

/// Peers that break off with answers and others' chatter on their way to them.
TEST(ServerStream, ResetsInTheMiddleOfEverythingHurtNobody)
{
    GameServer server(QuietOptions());
    RawPeer stays(server.GetPort());
    ASSERT_NO_FATAL_FAILURE(LogonAndPlay(stays, "stays", "Stays"));
    constexpr unsigned rounds = 200;
    for (unsigned round = 0; round < rounds; ++round) {
        RawPeer breaks(server.GetPort());
        // Some systems forget a connection that is reset before it has been accepted.
        ASSERT_TRUE(server.WaitFor([&](const ServerCounters& c) { return c.Accepted == round + 2; }));
        const std::string name = "breaks" + std::to_string(round);
        breaks.Send(LogonRequest(name));
        breaks.Send(Request(CS_CREATE_AVATAR, Serial, short{0}, name, short{1}));
        breaks.Send(Request(CS_TRY_ON_SESSION, Serial, short{0}, short{1}));
        breaks.Send(Request(CS_ENTER_SESSION));
        for (int i = 0; i < 20; ++i)
            breaks.Send(Request(CS_AVATAR_RELOAD));
        stays.Send(Request(CS_CHAT, "to whom it may concern"));
        round % 2 == 0 ? breaks.Reset() : breaks.Close();
    }
    ASSERT_TRUE(server.WaitFor([](const ServerCounters& c) { return c.Ended == rounds; }));
    ExpectServed(stays);
    // Nobody is left behind in the session.
    RawPeer late(server.GetPort());
    late.Send(LogonRequest("late"));
    late.Send(Request(CS_CREATE_AVATAR, Serial, short{0}, "Late", short{1}));
    late.Send(Request(CS_TRY_ON_SESSION, Serial, short{0}, short{1}));
    late.Send(Request(CS_ENTER_SESSION));
    CNTPacket list = PayloadOf(ReadUntil(late, SC_AVATAR_LIST));
    short avatars = 0;
    list >> avatars;
    EXPECT_EQ(avatars, 1);
}

TEST(ServerStream, AFloodDoesNotStarveTheOthers)
{
    GameServer server(QuietOptions());
    RawPeer bystander(server.GetPort());
    ASSERT_NO_FATAL_FAILURE(LogonAndPlay(bystander, "bystander", "Bystander"));
    std::atomic<bool> enough{false};
    std::vector<std::thread> floods;
    for (int i = 0; i < 3; ++i) {
        floods.emplace_back([&server, &enough] {
            RawPeer peer(server.GetPort());
            Bytes junk;
            for (int packet = 0; packet < 2000; ++packet) {
                const Bytes one = Request(static_cast<MessageNumber>(2001), packet);
                junk.insert(junk.end(), one.begin(), one.end());
            }
            while (!enough && peer.Send(junk)) {
            }
        });
    }
    EXPECT_TRUE(server.WaitFor([](const ServerCounters& c) { return c.Ignored > 10'000; }));
    for (int i = 0; i < 20; ++i)
        ExpectServed(bystander);
    enough = true;
    for (std::thread& flood : floods)
        flood.join();
    EXPECT_LE(server.GetLog().size(), 1000U);
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
