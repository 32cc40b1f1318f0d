// Two whole clients in one session of the reference server.

#include "PlayingClient.h"

#include "server/messages/ResultCodes.h"
#include "server/peer/RequestTable.h"

#include <gtest/gtest.h>

#include <algorithm>
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
    void SC_Event16010(short& code) override { Refusals.push_back(code); }
    void SC_Barter50003(long& asker) override { Asker = static_cast<unsigned long>(asker); }
    void SC_Barter50002(long&, short& answer) override { Agreed = answer == 1; }
    void SC_Dealing(unsigned long&, std::vector<TItem>& items, std::vector<TSkill>&, long&) override
    {
        Offered = items;
    }
    void SC_ObjectMove(unsigned long&, CDRVector& movement, short&, long&) override
    {
        Places.push_back(movement.GetPos()[0]);
    }

    std::map<std::string, unsigned long> Avatars;
    std::vector<std::string> Lines;
    std::vector<float> Places;
    std::vector<short> Refusals;
    std::vector<TItem> Offered;
    unsigned long Asker = 0;
    bool Agreed = false;
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

/// What a client says of an item counts only as far as the server knows the same of it.
TEST(Play, NobodyBartersAForgedItem)
{
    GameServer server;
    Player anna(server);
    Player bora(server);
    ASSERT_NO_FATAL_FAILURE(anna.Enter("anna"));
    ASSERT_NO_FATAL_FAILURE(bora.Enter("bora"));
    anna.PlayUntil([&] { return anna.Stub.Avatars.count("bora") > 0; });
    const unsigned long partner = anna.Stub.Avatars["bora"];
    anna.Requests.CS_RequestBarter(partner);
    bora.PlayUntil([&] { return bora.Stub.Asker != 0; });
    bora.Requests.CS_ResponseBarter(bora.Stub.Asker, 1);
    anna.PlayUntil([&] { return anna.Stub.Agreed; });

    const auto isInBag = [](const TItem& item) { return item.GetItemSlotIndex() > 0; };
    const auto ware = std::find_if(anna.Items.begin(), anna.Items.end(), isInBag);
    ASSERT_NE(ware, anna.Items.end());
    std::vector<TItem> items(1, *ware);
    std::vector<TSkill> skills;
    const short option = items[0].GetItemOptionID();
    items[0].SetItemOptionID(32767);
    anna.Requests.CS_Dealing(partner, items, skills, 0);
    anna.PlayUntil([&] { return !anna.Stub.Refusals.empty(); });
    EXPECT_EQ(anna.Stub.Refusals, (std::vector<short>{static_cast<short>(Result::NoSuchItem)}));

    items[0].SetItemOptionID(option);
    anna.Requests.CS_Dealing(partner, items, skills, 0);
    bora.PlayUntil([&] { return !bora.Stub.Offered.empty(); });
    EXPECT_EQ(bora.Stub.Offered[0].GetItemOptionID(), option);
}

TEST(Play, EveryTextHasItsAnswerAndARefusedLogonLeavesNothing)
{
    GameServer server;
    Player anna(server);
    Player bora(server);
    ASSERT_NO_FATAL_FAILURE(anna.Enter("anna"));
    unsigned short value = 0;
    unsigned long result = 0;
    std::vector<TAvatar> avatars;
    std::vector<TPrivData> privData;
    CString name("bora");
    CString theirs("stolen");
    ASSERT_EQ(anna.Requests.CS_Logon(name, theirs, value, avatars, privData, result), GS_OK);
    EXPECT_EQ(result, static_cast<unsigned long>(Result::AccountInUse));
    ASSERT_NO_FATAL_FAILURE(bora.Enter("bora")) << "with a password of her own";

    CString longName(std::string(4000, 'x').c_str());
    ASSERT_EQ(bora.Requests.CS_CreateAvatar(1, longName, 1, result), GS_OK);
    EXPECT_EQ(result, static_cast<unsigned long>(Result::BadName));
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
