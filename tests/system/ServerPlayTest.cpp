// What the server answers, request by request: logons, refusals and the news of the player's own avatar.
#include "ServerTalk.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <utility>

using namespace Kesra;
using namespace ServerTalk;

namespace
{

constexpr unsigned long Done = static_cast<unsigned long>(Result::Done);

unsigned long LogOn(RawPeer& peer, const std::string& account, const char* password = "secret")
{
    return Ask(peer, LogonRequest(account, password), GS_REPLY_10002);
}

unsigned long CodeOf(Result result)
{
    return static_cast<unsigned long>(result);
}

struct Refused {
    const char* Request;
    Bytes Packet;
    Result Why;
};

/// Zone and place of the next SC_EVENT60001.
std::array<float, 3> ReadPlace(RawPeer& peer)
{
    CNTPacket packet = PayloadOf(ReadUntil(peer, SC_EVENT60001));
    short zone = 0;
    CNTVector place(-1, 0, -1);
    packet >> zone >> place;
    return {static_cast<float>(zone), place[0], place[2]};
}

Bytes MoveTo(float x, float z)
{
    return Request(CS_AVATAR_MOVE, x, z, 0.0F, 0.0F, static_cast<unsigned short>(0), 0UL);
}

Bytes Attack(unsigned long monster)
{
    return Request(CS_AVATAR_ATTACK_MONSTER, monster, 0UL, static_cast<unsigned short>(0),
                   static_cast<unsigned short>(0));
}

/// Fights one monster after the other until the avatar is dead.
void Die(RawPeer& peer)
{
    unsigned long monster = 100'003; // the strongest of a session
    for (int blows = 0; blows < 1000; ++blows) {
        peer.Send(Attack(monster));
        Bytes packet = peer.ReadPacket();
        while (NumberOf(packet) != SC_EVENT12008 && NumberOf(packet) != SC_PRIV13005 &&
               NumberOf(packet) != SC_PRIV13004 && !packet.empty())
            packet = peer.ReadPacket();
        // The news of death comes behind the points; the answer to a further blow tells.
        peer.Send(Request(CS_AVATAR_ATTACK_AREA, std::numeric_limits<float>::infinity(), 0.0F));
        if (RefusalOf(peer) == static_cast<short>(Result::Dead))
            return;
        if (NumberOf(packet) == SC_PRIV13004) {
            CNTPacket next = PayloadOf(ReadUntil(peer, SC_MONSTER));
            next >> monster;
        }
    }
    FAIL() << "the avatar does not die";
}

} // namespace

TEST(ServerPlay, ARebornPlayerLearnsWhereItStands)
{
    GameServer server(QuietOptions());
    RawPeer peer(server.GetPort());
    ASSERT_NO_FATAL_FAILURE(LogonAndPlay(peer, "mina", "Mina"));
    peer.Send(Request(CS_WARP_SESSION_IN_FREE, short{3}, 500.0F, 600.0F));
    EXPECT_EQ(ReadPlace(peer), (std::array<float, 3>{3, 500, 600}));

    ASSERT_NO_FATAL_FAILURE(Die(peer));
    peer.Send(Request(CS_BEAR_AGAIN, short{5}));
    CNTPacket born = PayloadOf(ReadUntil(peer, SC_EVENT60002));
    short kind = 0;
    born >> kind;
    EXPECT_EQ(kind, 5);
    EXPECT_EQ(ReadPlace(peer), (std::array<float, 3>{3, 0, 0}));

    peer.Send(MoveTo(7, 8));
    peer.Send(Request(CS_LEAVE_SESSION));
    peer.Send(Request(CS_BEAR_AND_ENTER_SESSION));
    ASSERT_FALSE(ReadUntil(peer, SC_EVENT29001).empty());
    EXPECT_EQ(ReadPlace(peer), (std::array<float, 3>{3, 0, 0}));
}

/// Nobody who comes back at once may be refused because the server has not noticed the end of the connection
/// before.
TEST(ServerPlay, ALogonTakesTheAccountOver)
{
    GameServer server(QuietOptions());
    RawPeer witness(server.GetPort());
    ASSERT_NO_FATAL_FAILURE(LogonAndPlay(witness, "witness", "Witness"));
    auto before = std::make_unique<RawPeer>(server.GetPort());
    ASSERT_NO_FATAL_FAILURE(LogonAndPlay(*before, "mina", "Mina"));
    CNTPacket seen = PayloadOf(ReadUntil(witness, SC_AVATAR));
    TAvatar avatar;
    seen >> avatar;

    RawPeer stranger(server.GetPort());
    EXPECT_EQ(LogOn(stranger, "mina", "guessed"), CodeOf(Result::WrongPassword));
    ExpectServed(*before);

    for (int round = 0; round < 200; ++round) {
        auto next = std::make_unique<RawPeer>(server.GetPort());
        ASSERT_EQ(LogOn(*next, "mina"), Done) << round;
        next->Send(Request(CS_TRY_ON_SESSION, Serial, short{0}, short{1}));
        next->Send(Request(CS_ENTER_SESSION));
        CNTPacket left = PayloadOf(ReadUntil(witness, SC_WORLD14011));
        unsigned long gone = 0;
        left >> gone;
        ASSERT_EQ(gone, avatar.GetID()) << round;
        ASSERT_EQ(NumberOf(witness.ReadPacket()), SC_AVATAR) << round;
        // Every other one is still there when its successor comes.
        if (round % 2 == 0)
            before->ReadToEnd();
        before = std::move(next);
    }
    EXPECT_EQ(LogOn(*before, "mina"), CodeOf(Result::AccountInUse)) << "one account per connection";
}

TEST(ServerPlay, AMalformedRequestThatWaitsIsToldSo)
{
    struct Waiting {
        MessageNumber Number;
        MessageNumber Reply;
        std::size_t ReplySize; ///< with empty lists and texts
    };
    constexpr Waiting waiting[] = {
        {CS_LOGON, GS_REPLY_10002, 16},
        {CS_CREATE_AVATAR, GS_REPLY_10003, 10},
        {CS_DELETE_AVATAR, GS_REPLY_10004, 18},
        {CS_CANCEL_DELETE_AVATAR, GS_REPLY_10006, 10},
        {CS_TRY_ON_SESSION, GS_REPLY_10007, 14},
        {CS_WARP_SESSION_IN, GS_REPLY_10007, 18},
        {CS_CHANGE_AVATAR_NICK_NAME, GS_REPLY_10008, 10},
        {CS_REQUEST_ITEM_UPGRADE, GS_REPLY_16024, 14},
        {CS_GM_MOVE_TO_AVATAR, GS_REPLY_21001, 20},
        {CS_GM_MOVE_TO_POSITION, GS_REPLY_21002, 10},
        {CS_GM_GET_AVATAR_INFORMATION, GS_REPLY_21005, 119},
        {CS_GM_STEAL_ITEM, GS_REPLY_21011, 26},
    };
    GameServer server(QuietOptions());
    RawPeer peer(server.GetPort());
    unsigned ignored = 0;
    for (const Waiting& each : waiting) {
        const bool constantFirst = each.Number == CS_CHANGE_AVATAR_NICK_NAME;
        const Bytes serialAlone =
            constantFirst ? Request(each.Number, char{1}, Serial) : Request(each.Number, Serial);
        peer.Send(Request(each.Number)); // no serial, no answer
        peer.Send(serialAlone);
        const Bytes reply = peer.ReadPacket();
        EXPECT_EQ(NumberOf(reply), each.Reply) << each.Number;
        EXPECT_EQ(reply.size(), each.ReplySize) << each.Number;
        EXPECT_EQ(ResultOf(reply), CodeOf(Result::BadArgument)) << each.Number;
        ignored += 2;
    }
    peer.Send(Request(CS_DELETE_AVATAR, Serial, short{0}, short{0})); // more than its fields
    EXPECT_EQ(ResultOf(peer.ReadPacket()), CodeOf(Result::BadArgument));
    EXPECT_TRUE(server.WaitFor([=](const ServerCounters& c) { return c.Ignored == ignored + 1; }));
    ExpectServed(peer);
}

TEST(ServerPlay, ALogonIsRefusedWithItsReason)
{
    GameServer server(QuietOptions());
    RawPeer peer(server.GetPort());
    EXPECT_EQ(LogOn(peer, ""), CodeOf(Result::BadName));
    EXPECT_EQ(LogOn(peer, std::string(65, 'a')), CodeOf(Result::BadName));
    EXPECT_EQ(LogOn(peer, std::string(64, 'a')), Done);

    ServerOptions closed = QuietOptions();
    closed.OpenAccounts = false;
    GameServer closedServer(closed);
    closedServer.AddAccount("mina", "secret", false);
    RawPeer guest(closedServer.GetPort());
    EXPECT_EQ(LogOn(guest, "nobody"), CodeOf(Result::WrongPassword)) << "does not tell which names exist";
    EXPECT_EQ(LogOn(guest, "mina"), Done);
}

TEST(ServerPlay, ARefusalSaysWhy)
{
    GameServer server(QuietOptions());
    RawPeer peer(server.GetPort());
    ASSERT_NO_FATAL_FAILURE(LogonAndPlay(peer, "mina", "Mina"));
    // The new avatar's sword, potions and skill are at 1000, 1001 and 100; 1002 gets a second sword.
    peer.Send(Request(CS_PUTON_ITEM, short{11}, short{1000}));
    peer.Send(Request(CS_BUY_ITEM, 110001, short{1002}, short{1}));
    ASSERT_FALSE(ReadUntil(peer, SC_EVENT16007).empty());
    const Refused refused[] = {
        {"puts on where something is worn", Request(CS_PUTON_ITEM, short{11}, short{1002}),
         Result::PlaceTaken},
        {"puts on nothing", Request(CS_PUTON_ITEM, short{11}, short{1005}), Result::NoSuchItem},
        {"puts a sword on the head", Request(CS_PUTON_ITEM, short{1}, short{1002}), Result::BadArgument},
        {"takes off into something", Request(CS_TAKEOFF_ITEM, short{11}, short{1001}), Result::PlaceTaken},
        {"takes off into no bag", Request(CS_TAKEOFF_ITEM, short{11}, short{12}), Result::BadArgument},
        {"moves into something", Request(CS_RE_LOCATE_ITEM_IN_INVENTORY, short{1002}, short{1001}),
         Result::PlaceTaken},
        {"buys into something", Request(CS_BUY_ITEM, 70002, short{1001}, short{1}), Result::PlaceTaken},
        {"buys into no bag", Request(CS_BUY_ITEM, 70002, short{30}, short{1}), Result::BadArgument},
        {"learns at a bad index", Request(CS_BUY_SKILL, 102, short{99}, short{1}), Result::BadArgument},
        {"learns beyond the last index", Request(CS_BUY_SKILL, 102, short{1001}, short{1}),
         Result::BadArgument},
        {"learns where a skill is", Request(CS_BUY_SKILL, 102, short{100}, short{1}), Result::PlaceTaken},
        {"moves a skill nowhere", Request(CS_RE_LOCATE_SKILL, short{100}, short{0}), Result::BadArgument},
        {"moves a skill onto itself", Request(CS_RE_LOCATE_SKILL, short{100}, short{100}),
         Result::PlaceTaken},
    };
    for (const Refused& each : refused) {
        peer.Send(each.Packet);
        EXPECT_EQ(RefusalOf(peer), static_cast<short>(each.Why)) << each.Request;
    }
    peer.Send(Request(CS_BUY_SKILL, 102, short{1000}, short{1}));
    EXPECT_FALSE(ReadUntil(peer, SC_EVENT16017).empty()) << "the last index";
}

TEST(ServerPlay, AGiftIsRefusedWithItsReason)
{
    GameServer server(QuietOptions());
    server.AddAccount("master", "secret", true);
    RawPeer master(server.GetPort());
    ASSERT_NO_FATAL_FAILURE(LogonAndPlay(master, "master", "Master"));
    const auto refusal = [&](const Bytes& request) {
        master.Send(request);
        return static_cast<Result>(RefusalOf(master));
    };
    EXPECT_EQ(refusal(Request(CS_GM_GIVE_ITEM, "Master", 1, short{1})), Result::NoSuchItem);
    EXPECT_EQ(refusal(Request(CS_GM_GIVE_ITEM, "Master", 110001, short{0})), Result::BadArgument);
    EXPECT_EQ(refusal(Request(CS_GM_GIVE_SKILL, "Master", 1, 0)), Result::NoSuchSkill);
    EXPECT_EQ(refusal(Request(CS_GM_GIVE_SKILL, "Master", 101, -1)), Result::BadArgument);
    // One bag of 24 places, two of which a new avatar's things take.
    for (int i = 0; i < 22; ++i)
        master.Send(Request(CS_GM_GIVE_ITEM, "Master", 110001, short{1}));
    EXPECT_EQ(refusal(Request(CS_GM_GIVE_ITEM, "Master", 110001, short{1})), Result::Full);
    for (int i = 0; i < 59; ++i)
        master.Send(Request(CS_GM_GIVE_SKILL, "Master", 101, 0));
    EXPECT_EQ(refusal(Request(CS_GM_GIVE_SKILL, "Master", 101, 0)), Result::Full);
}

TEST(ServerPlay, SilenceCoversWhispers)
{
    GameServer server(QuietOptions());
    server.AddAccount("master", "secret", true);
    RawPeer master(server.GetPort());
    RawPeer silenced(server.GetPort());
    ASSERT_NO_FATAL_FAILURE(LogonAndPlay(master, "master", "Master"));
    ASSERT_NO_FATAL_FAILURE(LogonAndPlay(silenced, "mina", "Mina"));
    const Bytes spoken[] = {Request(CS_CHAT, "hello"), Request(CS_WISPER_CHAT, 1UL, "hello"),
                            Request(CS_WISPER_CHAT_WIDE, "Master", "hello")};
    for (const Bytes& each : spoken)
        silenced.Send(each);
    for (const unsigned short heard : {SC_CHAT, SC_WISPER_CHAT, SC_WISPER_CHAT_WIDE})
        EXPECT_EQ(NumberOf(ReadUntil(master, heard)), heard);

    master.Send(Request(CS_GM_PROHIBIT_AVATAR_CHATTING, "Mina", 3600));
    ASSERT_FALSE(ReadUntil(silenced, SC_GM21007).empty());
    for (const Bytes& each : spoken) {
        silenced.Send(each);
        EXPECT_EQ(RefusalOf(silenced), static_cast<short>(Result::Silenced)) << NumberOf(each);
    }
    server.PushAll(MessageOf(SC_EVENT29002));
    EXPECT_EQ(NumberOf(master.ReadPacket()), SC_EVENT29002) << "nothing came through";
}

/// Of a text that is bounded, the first bytes count and the rest is skipped.
TEST(ServerPlay, ABoundedTextIsCut)
{
    GameServer server(QuietOptions());
    RawPeer speaker(server.GetPort());
    RawPeer listener(server.GetPort());
    const std::string name(20, 'n');
    ASSERT_NO_FATAL_FAILURE(LogonAndPlay(speaker, "speaker", "Speaker"));
    ASSERT_NO_FATAL_FAILURE(LogonAndPlay(listener, "listener", name.c_str()));
    const std::string line = std::string(200, 'x');
    const std::string tooMuch = line + "yz";
    const auto textOf = [](CNTPacket packet, unsigned short before) {
        packet.SetBufPoint(static_cast<unsigned short>(CNTPacket::HeaderSize + before));
        std::string text;
        packet >> text;
        return text;
    };
    speaker.Send(Request(CS_CHAT, tooMuch));
    EXPECT_EQ(textOf(PayloadOf(ReadUntil(listener, SC_CHAT)), 2), line);
    speaker.Send(Request(CS_WISPER_CHAT_WIDE, name + "tail", tooMuch));
    EXPECT_EQ(textOf(PayloadOf(ReadUntil(listener, SC_WISPER_CHAT_WIDE)), 4 + 2 + 7), line);

    const std::string other(20, 'm');
    EXPECT_EQ(
        Ask(speaker, Request(CS_CHANGE_AVATAR_NICK_NAME, char{1}, Serial, other + "tail"), GS_REPLY_10008),
        Done);
    CNTPacket renamed = PayloadOf(ReadUntil(listener, SC_EVENT16020));
    TAvatar avatar;
    renamed >> avatar;
    EXPECT_EQ(std::string(avatar.GetNickname()), other);
}
