// Two whole clients in one session of the reference server.

#include "PlayingClient.h"

#include "server/RequestTable.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

using namespace Kesra;

namespace
{

/// Keeps what a player sees of the others.
class SightStub : public CNTStub_Quiet
{
public:
    void SC_AvatarList(std::vector<TAvatar>& avatars) override
    {
        for (TAvatar& avatar : avatars)
            SC_Avatar(avatar);
    }
    void SC_Avatar(TAvatar& avatar) override { Avatars[std::string(avatar.GetNickname())] = avatar.GetID(); }
    void SC_Chat(short&, CFixCharString<200>& text) override { Lines.emplace_back(text); }
    void SC_AvatarMove(short&, CDRVector& movement, unsigned short&, unsigned long&) override
    {
        Places.push_back(movement.GetPos()[0]);
    }
    void SC_ObjectMove(unsigned long&, CDRVector& movement, short&, long&) override
    {
        Places.push_back(movement.GetPos()[0]);
    }

    std::map<std::string, unsigned long> Avatars;
    std::vector<std::string> Lines;
    std::vector<float> Places;
};

class Player : public PlayingClient
{
public:
    explicit Player(const GameServer& server) : PlayingClient(server) { Attach(&Stub); }
    ~Player() override { StopReceiving(); }

    unsigned long ProcessPacketFromServer(CNTPacket& packet) override
    {
        CNTPacket own = packet;
        unsigned short number = 0;
        unsigned short size = 0;
        own >> number >> size;
        if (number != GAME_PROPERTIES)
            return CNTMainClient::ProcessPacketFromServer(packet);
        own >> Echoed;
        HasEcho = own.IsAtEnd();
        return 0;
    }

    SightStub Stub;
    CPropCollection Echoed;
    bool HasEcho = false;
};

TEST(Play, TwoClientsMeetChatAndMove)
{
    GameServer server;
    Player anna(server);
    Player bora(server);
    ASSERT_NO_FATAL_FAILURE(anna.Enter("anna"));
    ASSERT_NO_FATAL_FAILURE(bora.Enter("bora"));
    anna.PlayUntil([&] { return anna.Stub.Avatars.count("bora") > 0; });
    bora.PlayUntil([&] { return bora.Stub.Avatars.count("anna") > 0; });
    EXPECT_NE(anna.Stub.Avatars["bora"], bora.Stub.Avatars["anna"]);

    const std::string korean = "\xBE\xC8\xB3\xE7"; // a greeting in code page 949
    CFixCharString<200> line(korean.c_str());
    anna.Requests.CS_Chat(line);
    bora.PlayUntil([&] { return !bora.Stub.Lines.empty(); });
    EXPECT_EQ(bora.Stub.Lines.front(), korean);

    CDRVector movement;
    CNTVector place(123.5F, 0.0F, 7.0F);
    movement.SetPos(place);
    bora.Requests.CS_AvatarMove(movement, 1, 2);
    anna.PlayUntil([&] { return !anna.Stub.Places.empty(); });
    EXPECT_EQ(anna.Stub.Places.front(), 123.5F);
    EXPECT_EQ(server.GetCounters().Ignored, 0U);
}

TEST(Play, APropertyCollectionComesBackUnchanged)
{
    GameServer server;
    Player player(server);
    ASSERT_NO_FATAL_FAILURE(player.Enter("carol"));
    CPropCollection properties;
    properties.SetProperty("hp", _variant_t(7L));
    properties.SetProperty("Name", _variant_t(2.5));
    properties.SetProperty("open", _variant_t(true));
    CNTPacket packet;
    packet << static_cast<unsigned short>(GAME_PROPERTIES) << static_cast<unsigned short>(0) << properties;
    ASSERT_EQ(player.SendToServer(packet), 0U);
    player.PlayUntil([&] { return player.HasEcho; });
    const std::vector<unsigned char> sent = properties;
    const std::vector<unsigned char> received = player.Echoed;
    EXPECT_EQ(received, sent);
    const _variant_t name = player.Echoed.GetProperty("NAME");
    EXPECT_EQ(name.vt, VT_R8);
    EXPECT_EQ(name.dblVal, 2.5);
}

} // namespace
