#include "KesraNTC/KesraNTC.h"
#include "KesraNTC/rpc/CNTStub_Quiet.h"
#include "KesraNTC/rpc/private/MessageTable.h"
#include "tests/conformance/WatchingStub.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

using namespace Kesra;

namespace
{

class Client : public CNTMainClient
{
public:
    void ProcessDisconnection() override {}
    unsigned long SendToServer(CNTPacket& packet) override
    {
        Sent.push_back(packet);
        return 0;
    }
    std::vector<CNTPacket> Sent;
};

/// Keeps what the handlers under test were called with.
class Stub : public CNTStub_Quiet
{
public:
    void SC_Chat(short& value, CFixCharString<200>& text) override { Note("chat", value, std::string(text)); }
    void SC_Wisper_Chat_Wide(unsigned long& value, CFixCharString<20>& name,
                             CFixCharString<200>& text) override
    {
        Note("wide", static_cast<long>(value), std::string(name) + "|" + std::string(text));
    }
    void SC_Event18001(char& value, CString& text) override
    {
        Note("text", value, static_cast<const char*>(text));
    }
    void SC_AvatarMove(short& value, CDRVector& movement, unsigned short& second,
                       unsigned long& third) override
    {
        Note("move", value, std::to_string(second) + " " + std::to_string(third));
        Movement = movement;
    }
    void SC_Event16013(CNTVector& place) override { Place = place; }
    void SC_WorldObjectLists(std::vector<TWorldItem>& items, std::vector<TMonster>& monsters,
                             std::vector<TNPC>& npcs) override
    {
        Note("lists", static_cast<long>(items.size()),
             std::to_string(monsters.size()) + " " + std::to_string(npcs.size()));
        LastNpcType = npcs.empty() ? 0 : npcs.back().GetType();
    }
    void SC_AvatarList(std::vector<TAvatar>& avatars) override
    {
        Note("avatars", static_cast<long>(avatars.size()), "");
    }
    void SC_GSList(std::vector<sGS>& servers) override
    {
        for (const sGS& server : servers)
            Note("server", server.Value1, std::to_string(server.Value2));
    }
    void SC_Priv13005(long& first, long& second, long& third) override
    {
        Note("priv", first, std::to_string(second) + " " + std::to_string(third));
    }
    void SC_GM_Transparent(long& value, bool& on) override { Note("transparent", value, on ? "on" : "off"); }
    void SC_Event29002() override { Note("nothing", 0, ""); }
    void SC_Event12012(std::vector<long>& a, std::vector<short>& b, std::vector<char>& c) override
    {
        Note("results", static_cast<long>(a.size()),
             std::to_string(b.size()) + " " + std::to_string(c.size()));
    }

    std::vector<std::string> Calls;
    CDRVector Movement;
    CNTVector Place;
    unsigned long LastNpcType = 0;

private:
    void Note(const char* what, long value, const std::string& text)
    {
        Calls.push_back(std::string(what) + " " + std::to_string(value) + " " + text);
    }
};

CNTPacket Begun(unsigned short number)
{
    CNTPacket packet;
    packet << number << static_cast<unsigned short>(0);
    return packet;
}

class Dispatch : public testing::Test
{
protected:
    Dispatch()
    {
        Game.Attach(&Handlers);
        Game.Attach(&Proxy);
    }

    /// Dispatches a copy of the packet as the queue would hold it.
    void Take(const CNTPacket& packet)
    {
        CNTPacket received = packet;
        received.SetBufPoint(0);
        EXPECT_EQ(Game.ProcessPacketFromServer(received), 0U);
    }
    using Texts = std::vector<std::string>;

    Client Game;
    CNTProxy_CLToGS Proxy;
    Stub Handlers;
};

TEST_F(Dispatch, HandlersGetTheirPayloadInOrder)
{
    CDRVector movement;
    CNTVector position(3.0F, 99.0F, -4.0F);
    movement.SetPos(position);
    movement.SetAY(45.0F);
    movement.SetSpeed(1.5F);
    Take(Begun(SC_AVATAR_MOVE) << static_cast<short>(7) << movement << static_cast<unsigned short>(3)
                               << static_cast<unsigned long>(1000));
    Take(Begun(SC_PRIV13005) << 1 << -2 << 3);
    Take(Begun(SC_GM_TRANSPARENT) << 5 << true);
    Take(Begun(SC_EVENT29002));
    EXPECT_EQ(Handlers.Calls, (Texts{"move 7 3 1000", "priv 1 -2 3", "transparent 5 on", "nothing 0 "}));
    EXPECT_EQ(Handlers.Movement.GetPos()[0], 3.0F);
    EXPECT_EQ(Handlers.Movement.GetPos()[1], 0.0F);
    EXPECT_EQ(Handlers.Movement.GetPos()[2], -4.0F);
    EXPECT_EQ(Handlers.Movement.GetAY(), 45.0F);
    EXPECT_EQ(Handlers.Movement.GetSpeed(), 1.5F);

    Take(Begun(SC_EVENT16013) << 1.5F << 2.5F);
    EXPECT_EQ(Handlers.Place[0], 1.5F);
    EXPECT_EQ(Handlers.Place[1], 0.0F);
    EXPECT_EQ(Handlers.Place[2], 2.5F);
}

TEST_F(Dispatch, BoundedTextsAreCutAndTheRestIsSkipped)
{
    const std::string longText(250, 'x');
    Take(Begun(SC_CHAT) << static_cast<short>(1) << "");
    Take(Begun(SC_CHAT) << static_cast<short>(2) << longText.c_str());
    Take(Begun(SC_WISPER_CHAT_WIDE) << 3 << "abcdefghijklmnopqrstuvwxy"
                                    << "hello");
    Take(Begun(SC_EVENT18001) << 'A' << longText.c_str());
    EXPECT_EQ(Handlers.Calls, (Texts{"chat 1 ", "chat 2 " + longText.substr(0, 200),
                                     "wide 3 abcdefghijklmnopqrst|hello", "text 65 " + longText}));
}

TEST_F(Dispatch, ListsOfEveryCount)
{
    CNTPacket lists = Begun(SC_WORLD_OBJECT_LISTS);
    lists << static_cast<short>(2);
    for (int byte = 0; byte < 2 * 32 / 4; ++byte)
        lists << byte;
    lists << static_cast<short>(-5) << static_cast<short>(3);
    Take(lists);
    EXPECT_EQ(Handlers.LastNpcType, TNPC().GetType());
    Take(Begun(SC_AVATAR_LIST) << static_cast<short>(0));
    Take(Begun(SC_AVATAR_LIST) << static_cast<short>(-1));
    Take(Begun(SC_AVATAR_LIST) << static_cast<short>(32767));
    Take(Begun(SC_EVENT12012) << static_cast<short>(1) << 9 << static_cast<short>(2) << static_cast<short>(1)
                              << static_cast<short>(2) << static_cast<short>(1) << 'x');
    EXPECT_EQ(Handlers.Calls,
              (Texts{"lists 2 0 3", "avatars 0 ", "avatars 0 ", "avatars 32767 ", "results 1 2 1"}));
}

TEST_F(Dispatch, TheServerListIsReadPlain)
{
    CNTPacket packet = Begun(SC_GS_LIST);
    const unsigned char payload[] = {2, 0, 1, 0, 2, 0, 3, 0, 0xFF, 0xFF};
    for (unsigned i = 0; i < sizeof payload; ++i)
        packet.GetBuf()[4 + i] = payload[i];
    packet.SetBufSize(4 + sizeof payload);
    Take(packet);
    EXPECT_EQ(Handlers.Calls, (Texts{"server 1 2", "server 3 -1"}));
}

TEST_F(Dispatch, TrailingBytesAndALyingSizeFieldDoNotMatter)
{
    CNTPacket packet = Begun(SC_PRIV13005);
    packet << 1 << 2 << 3 << "trailing";
    packet.GetBuf()[2] = 200;
    Take(packet);
    EXPECT_EQ(Handlers.Calls, (Texts{"priv 1 2 3"}));
}

TEST_F(Dispatch, MissingScalarsAreZeroAndMissingTextsEmpty)
{
    CNTPacket packet = Begun(SC_PRIV13005);
    packet << 1;
    Take(packet);
    Take(Begun(SC_CHAT));
    CNTPacket text = Begun(SC_CHAT);
    text << static_cast<short>(4) << static_cast<unsigned short>(50) << 'h';
    Take(text);
    Take(Begun(SC_EVENT18001) << 'A' << static_cast<unsigned short>(9));
    EXPECT_EQ(Handlers.Calls, (Texts{"priv 1 0 0", "chat 0 ", "chat 4 h", "text 65 "}));
}

TEST_F(Dispatch, UnknownNumbersReachNobody)
{
    Texts traced;
    CDebug::SetTraceHook([](void* texts, const char* text) { static_cast<Texts*>(texts)->push_back(text); },
                         &traced);
    for (const unsigned short number :
         std::initializer_list<unsigned short>{0, 507, 509, 1002, 9999, 10001, 10009, 12001, 12011, 13009,
                                               16011, 16012, 21012, 29000, 60003, 65535})
        Take(Begun(number) << static_cast<short>(1) << 2);
    CDebug::SetTraceHook(nullptr, nullptr);
    ASSERT_EQ(traced.size(), 16U);
    EXPECT_EQ(traced[1], "Warnning!!! Strange Message Type 507\n");
    CNTPacket empty;
    Take(empty);
    EXPECT_TRUE(Handlers.Calls.empty());
    EXPECT_TRUE(Game.Sent.empty());
}

TEST_F(Dispatch, TheClockIsAnsweredFromTheSecondMessageOn)
{
    Take(Begun(SC_SET_NET_TIME) << 5000U << 40U);
    EXPECT_EQ(Game.GetLatency(), 40U);
    EXPECT_TRUE(Game.Sent.empty());
    const unsigned long before = GetTickCount();
    Game.SetNetTime(before - 250);
    Take(Begun(SC_SET_NET_TIME) << 9000U << 50U);
    const unsigned long after = GetTickCount();
    ASSERT_EQ(Game.Sent.size(), 1U);
    CNTPacket& answer = Game.Sent[0];
    EXPECT_EQ(answer.GetBufSize(), 8);
    answer.SetBufPoint(0);
    unsigned short number = 0;
    unsigned short size = 0;
    unsigned long estimate = 0;
    answer >> number >> size >> estimate;
    EXPECT_EQ(number, CS_RESPONSE_NET_TIME);
    EXPECT_GE(estimate, 5250U);
    EXPECT_LE(estimate, 5250U + (after - before));
    EXPECT_EQ(Game.GetLatency(), 50U);
}

TEST_F(Dispatch, TheClockWrapsAt32Bits)
{
    Game.ServerTime = 0xFFFFFFF0U;
    Game.SetNetTime(GetTickCount() - 100);
    Take(Begun(SC_SET_NET_TIME) << 1U << 1U);
    ASSERT_EQ(Game.Sent.size(), 1U);
    Game.Sent[0].SetBufPoint(4);
    unsigned long estimate = 0;
    Game.Sent[0] >> estimate;
    EXPECT_GE(estimate, 100U - 16U);
    EXPECT_LT(estimate, 1000000U);
}

TEST_F(Dispatch, RepliesFindTheirRequestBySerialAlone)
{
    CNestedReply* record = Proxy.PreNestedRequestReply();
    ASSERT_EQ(record->Serial, 1);
    Take(Begun(GS_REPLY_21011) << static_cast<short>(2) << 5);
    Take(Begun(GS_REPLY_21011) << 'x');
    EXPECT_EQ(Proxy.GetPendingCount(), 1);
    const CNTPacket reply = Begun(GS_REPLY_16024) << static_cast<short>(1) << 77;
    Take(reply);
    EXPECT_EQ(record->Reply.GetBufSize(), reply.GetBufSize());
    EXPECT_EQ(record->Reply.GetBufPoint(), 6);
    int result = 0;
    record->Reply >> result;
    EXPECT_EQ(result, 77);
    EXPECT_TRUE(Proxy.WaitForNestedRequestReply(record));
    EXPECT_EQ(Proxy.GetPendingCount(), 0);
    delete record;
    Take(reply);
    EXPECT_TRUE(Handlers.Calls.empty());
}

TEST_F(Dispatch, NothingAttachedMeansNothingHappens)
{
    Client alone;
    CNTPacket chat = Begun(SC_CHAT);
    chat.SetBufPoint(0);
    EXPECT_EQ(alone.ProcessPacketFromServer(chat), 0U);
    CNTPacket reply = Begun(GS_REPLY_10002) << static_cast<short>(1);
    reply.SetBufPoint(0);
    EXPECT_EQ(alone.ProcessPacketFromServer(reply), 0U);
}

/// Keeps the numbers of the messages that handlers were called for.
struct CallNumbers {
    template <class... Values> void Got(MessageNumber number, Values&...) { Numbers.push_back(number); }

    std::vector<unsigned short> Numbers;
};

/// Every message cut at every byte: whoever has a handler gets one call, of its own, however little is left.
TEST_F(Dispatch, EveryMessageCutAtEveryByte)
{
    CallNumbers calls;
    WatchingStub<CallNumbers> watching(calls);
    Game.Attach(&watching);
    int known = 0;
    int handled = 0;
    for (unsigned value = 0; value <= 65535; ++value) {
        const auto number = static_cast<unsigned short>(value);
        if (ActionFor(number) == nullptr)
            continue;
        ++known;
        CNTPacket packet = Begun(number);
        for (int i = 0; i < 40; ++i)
            packet << static_cast<short>(i % 5);
        Take(packet);
        const std::vector<unsigned short> own = std::exchange(calls.Numbers, {});
        EXPECT_TRUE(own.empty() || own == std::vector<unsigned short>{number}) << number;
        handled += own.empty() ? 0 : 1;
        for (unsigned short size = 0; size < packet.GetBufSize(); ++size) {
            CNTPacket cut = packet;
            cut.SetBufSize(size);
            Take(cut);
            EXPECT_EQ(std::exchange(calls.Numbers, {}), size < 2 ? std::vector<unsigned short>{} : own)
                << number << " cut to " << size;
        }
    }
    EXPECT_EQ(known, 72 + 12 + 1);
    EXPECT_EQ(handled, 72);
}

} // namespace
