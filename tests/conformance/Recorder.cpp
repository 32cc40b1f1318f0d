// Plays a whole session of a real client against the embedded game server, through a relay that keeps the
// bytes of both directions, and writes the session's directory:
//
//     conformance-recorder DIRECTORY
//
// The session first plays as a game would, answered by the server; then every request, reply and pushed
// message travels with the values of each round of Variety.

#include "tests/conformance/OwnPackets.h"
#include "tests/conformance/RecordingClient.h"
#include "tests/conformance/Relay.h"
#include "tests/conformance/Variety.h"
#include "tests/conformance/WatchingStub.h"

#include "server/GameServer.h"
#include "server/messages/Notifications.h"
#include "server/messages/Writers.h"

#include <cstdio>
#include <filesystem>
#include <future>
#include <stdexcept>
#include <tuple>
#include <type_traits>
#include <utility>

namespace Kesra
{
namespace
{

constexpr unsigned PatienceSeconds = 60;
constexpr PeerID FirstPeer = 1;

void Require(bool holds, const char* what)
{
    if (!holds)
        throw std::runtime_error(what);
}

template <std::size_t Begin, class Tuple, std::size_t... Index>
auto ReferencesTo(Tuple& values, std::index_sequence<Index...>)
{
    return std::tie(std::get<Begin + Index>(values)...);
}

template <std::size_t Begin, std::size_t Count, class Tuple> auto Slice(Tuple& values)
{
    return ReferencesTo<Begin>(values, std::make_index_sequence<Count>{});
}

class Session
{
public:
    Session();

    void PlayAsGame();
    void SendEverything(unsigned round);
    void AskEverything(unsigned round);
    void PushEverything(unsigned round);
    void PushExtremes();
    void TellTheTime();
    void End(const std::filesystem::path& directory);

    /// The server stops answering; the script does.
    void TakeOverReplies();

private:
    /// Makes a request that does not wait.
    template <class... Parameters>
    void Tell(GS_RESULT (CNTProxy_CLToGS::*request)(Parameters...),
              std::type_identity_t<std::decay_t<Parameters>>... arguments)
    {
        Client.Announce(Fields(arguments...));
        (Proxy.*request)(arguments...);
    }

    template <class... Parameters> void TellVaried(GS_RESULT (CNTProxy_CLToGS::*request)(Parameters...))
    {
        auto values = Values.Make<std::decay_t<Parameters>...>();
        std::apply([&](auto&... value) { Tell(request, value...); }, values);
    }

    /// An attack, whose request adds readings of the clock to the monster's ID.
    void Attack(GS_RESULT (CNTProxy_CLToGS::*request)(unsigned long), unsigned long monster);

    /// Makes a waiting request whose first Given parameters are sent and whose others the reply fills.
    template <std::size_t Given, class... Parameters>
    void Ask(MessageNumber number, GS_RESULT (CNTProxy_CLToGS::*request)(Parameters...),
             std::tuple<std::decay_t<Parameters>...> values)
    {
        const short serial = Proxy.NextSerial;
        auto given = Slice<0, Given>(values);
        auto filled = Slice<Given, sizeof...(Parameters) - Given>(values);
        std::apply(
            [&](auto&... value) {
                constexpr unsigned char one = 1; // stands in front of this one request's serial
                if (number == CS_CHANGE_AVATAR_NICK_NAME)
                    Client.Announce(Fields(one, serial, value...));
                else
                    Client.Announce(Fields(serial, value...));
            },
            given);
        Require(std::apply([&](auto&... value) { return (Proxy.*request)(value...); }, values) == GS_OK,
                "a waiting request got no reply");
        std::apply([&](auto&... value) { Record.Replied(number, Fields(serial, value...)); }, filled);
    }

    /// The same with varied arguments, answered with varied fields.
    template <std::size_t Given, class... Parameters>
    void AskVaried(MessageNumber number, GS_RESULT (CNTProxy_CLToGS::*request)(Parameters...))
    {
        auto answers = Values.Make<std::decay_t<Parameters>...>();
        const auto serial = static_cast<unsigned short>(Proxy.NextSerial);
        auto fields = Slice<Given, sizeof...(Parameters) - Given>(answers);
        const CNTPacket reply = std::apply(
            [&](auto&... value) { return MessageOf(NextReplyNumber(), serial, value...); }, fields);
        const unsigned before = Server.GetCounters().ReceivedOf(number);
        std::future<void> answer = std::async(std::launch::async, [&] {
            Require(
                Server.WaitFor([&](const ServerCounters& seen) { return seen.ReceivedOf(number) > before; },
                               std::chrono::seconds(PatienceSeconds)),
                "a request did not arrive");
            Push(reply);
        });
        Ask<Given>(number, request, Values.Make<std::decay_t<Parameters>...>());
        answer.get();
    }

    MessageNumber NextReplyNumber();
    void Push(const CNTPacket& packet) { Server.Push(FirstPeer, packet); }

    template <class Row> void PushVaried(const Row&)
    {
        auto values = MakeAll(static_cast<PayloadOfRow<Row>*>(nullptr));
        Push(std::apply([](auto&... value) { return Notification<Row::Number>(value...); }, values));
    }

    template <class... Each> std::tuple<Each...> MakeAll(std::tuple<Each...>*)
    {
        return Values.Make<Each...>();
    }

    GameServer Server;
    Relay Between;
    Recording Record;
    WatchingStub<Recording> Stub;
    CNTProxy_CLToGS Proxy;
    RecordingClient Client;
    Variety Values;
    unsigned RepliesMade = 0;
    unsigned TimesTold = 0;
};

/// The clock stands still, so that every run of the script sends the same packets.
ServerOptions Settings()
{
    ServerOptions options;
    options.ClockInterval = std::chrono::milliseconds(0);
    return options;
}

constexpr MessageNumber ReplyNumbers[] = {GS_REPLY_10002, GS_REPLY_10003, GS_REPLY_10004, GS_REPLY_10006,
                                          GS_REPLY_10007, GS_REPLY_10008, GS_REPLY_12010, GS_REPLY_16024,
                                          GS_REPLY_21001, GS_REPLY_21002, GS_REPLY_21005, GS_REPLY_21011};

Session::Session() : Server(Settings()), Between(Server.GetPort()), Stub(Record), Client(Record), Values(0)
{
    Server.AddAccount("recorder", "secret", true);
    Client.Attach(static_cast<CNTStub*>(&Stub));
    Client.Attach(&Proxy);
    Client.SetServerAddr("127.0.0.1");
    Client.SetServerPort(Between.Port());
    Require(Client.Startup() && Client.ConnectToServer(), "the client could not connect");
}

void Session::PlayAsGame()
{
    Ask<2>(CS_LOGON, &CNTProxy_CLToGS::CS_Logon, {"recorder", "secret", 0, {}, {}, 0});
    Ask<3>(CS_CREATE_AVATAR, &CNTProxy_CLToGS::CS_CreateAvatar, {0, "Recorder", 1, 0});
    Ask<2>(CS_LOGON, &CNTProxy_CLToGS::CS_Logon, {"recorder", "", 0, {}, {}, 0});
    Ask<2>(CS_TRY_ON_SESSION, &CNTProxy_CLToGS::CS_TryOnSession, {0, 1, {}, {}, 0});
    Tell(&CNTProxy_CLToGS::CS_EnterSession);
    Tell(&CNTProxy_CLToGS::CS_Chat, "이상한 서버"_949);

    CDRVector movement;
    CNTVector position(3.5F, 100.0F, -7.25F);
    movement.SetPos(position);
    movement.SetSpeed(5.0F);
    movement.SetAY(-90.0F);
    Tell(&CNTProxy_CLToGS::CS_AvatarMove, movement, 1, 123456);
    Ask<4>(CS_WARP_SESSION_IN, &CNTProxy_CLToGS::CS_Warp_SessionIn, {1, 2, 3, 4, {}, 0});
    Ask<1>(CS_GM_GET_AVATAR_INFORMATION, &CNTProxy_CLToGS::CS_GM_Get_Avatar_Information,
           {"Recorder", {}, {}, 0});
    Ask<1>(CS_GM_MOVE_TO_AVATAR, &CNTProxy_CLToGS::CS_GM_Move_To_Avatar, {"Recorder", 0, {}, 0});
    Ask<2>(CS_GM_STEAL_ITEM, &CNTProxy_CLToGS::CS_GM_Steal_Item, {"Recorder", 1, {}, 0});
}

void Session::SendEverything(unsigned round)
{
    Values = Variety(round);
    TellVaried(&CNTProxy_CLToGS::CS_EnterSession);
    TellVaried(&CNTProxy_CLToGS::CS_LeaveSession);
    TellVaried(&CNTProxy_CLToGS::CS_BearAgain);
    TellVaried(&CNTProxy_CLToGS::CS_BearAndEnterSession);
    TellVaried(&CNTProxy_CLToGS::CS_Warp_SessionIn_Free);
    TellVaried(&CNTProxy_CLToGS::CS_Warp_SessionOut);
    TellVaried(&CNTProxy_CLToGS::CS_Error);
    TellVaried(&CNTProxy_CLToGS::CS_Avatar_Reload);
    TellVaried(&CNTProxy_CLToGS::CS_Chat);
    TellVaried(&CNTProxy_CLToGS::CS_Wisper_Chat);
    TellVaried(&CNTProxy_CLToGS::CS_Wisper_Chat_Wide);
    TellVaried(&CNTProxy_CLToGS::CS_AvatarMove);
    TellVaried(&CNTProxy_CLToGS::CS_PutonItem);
    TellVaried(&CNTProxy_CLToGS::CS_TakeoffItem);
    TellVaried(&CNTProxy_CLToGS::CS_ChooseWeapon);
    TellVaried(&CNTProxy_CLToGS::CS_BuyItems);
    TellVaried(&CNTProxy_CLToGS::CS_BuyItem);
    TellVaried(&CNTProxy_CLToGS::CS_SellItem);
    TellVaried(&CNTProxy_CLToGS::CS_PickupItem);
    TellVaried(&CNTProxy_CLToGS::CS_DropItem);
    TellVaried(&CNTProxy_CLToGS::CS_ReLocateItemInInventory);
    TellVaried(&CNTProxy_CLToGS::CS_Use_Item);
    TellVaried(&CNTProxy_CLToGS::CS_UpdateJewelryCollection);
    TellVaried(&CNTProxy_CLToGS::CS_RepairItem);
    TellVaried(&CNTProxy_CLToGS::CS_ExchangeItemInInventory);
    Attack(&CNTProxy_CLToGS::CS_Avatar_AttackMonster, 77U * round);
    Attack(&CNTProxy_CLToGS::CS_Avatar_SkillAttackMonster, 0xFFFFFFFFU - round);
    TellVaried(&CNTProxy_CLToGS::CS_Avatar_AttackArea);
    TellVaried(&CNTProxy_CLToGS::CS_UI_ResetKiSystem);
    TellVaried(&CNTProxy_CLToGS::CS_IncParameter);
    TellVaried(&CNTProxy_CLToGS::CS_RequestBarter);
    TellVaried(&CNTProxy_CLToGS::CS_ResponseBarter);
    TellVaried(&CNTProxy_CLToGS::CS_CancelBarter);
    TellVaried(&CNTProxy_CLToGS::CS_Dealing);
    TellVaried(&CNTProxy_CLToGS::CS_DealSign);
    TellVaried(&CNTProxy_CLToGS::CS_Request_Make_Party);
    TellVaried(&CNTProxy_CLToGS::CS_Response_Make_Party);
    TellVaried(&CNTProxy_CLToGS::CS_Breakwith_Party);
    TellVaried(&CNTProxy_CLToGS::CS_Boss_Force_PartyMember_To_Breakwith_Party);
    TellVaried(&CNTProxy_CLToGS::CS_Boss_Entrust_PartyMember);
    TellVaried(&CNTProxy_CLToGS::CS_ReLocateSkill);
    TellVaried(&CNTProxy_CLToGS::CS_ChooseSkill);
    TellVaried(&CNTProxy_CLToGS::CS_BuySkill);
    TellVaried(&CNTProxy_CLToGS::CS_SellSkill);
    TellVaried(&CNTProxy_CLToGS::CS_PickupSkill);
    TellVaried(&CNTProxy_CLToGS::CS_DropSkill);
    TellVaried(&CNTProxy_CLToGS::CS_GM_Call_Avatar);
    TellVaried(&CNTProxy_CLToGS::CS_GM_Transparent);
    TellVaried(&CNTProxy_CLToGS::CS_GM_Prohibit_Avatar_Chatting);
    TellVaried(&CNTProxy_CLToGS::CS_GM_Purge_Avatar);
    TellVaried(&CNTProxy_CLToGS::CS_GM_Change_Level);
    TellVaried(&CNTProxy_CLToGS::CS_GM_Give_Skill);
    TellVaried(&CNTProxy_CLToGS::CS_GM_Give_Item);
}

void Session::Attack(GS_RESULT (CNTProxy_CLToGS::*request)(unsigned long), unsigned long monster)
{
    Client.Announce(
        Fields(monster, Fields::Reading(GetTickCount()), Fields::Limits{0, 59}, Fields::Limits{0, 999}));
    (Proxy.*request)(monster);
}

void Session::AskEverything(unsigned round)
{
    Values = Variety(round);
    AskVaried<2>(CS_LOGON, &CNTProxy_CLToGS::CS_Logon);
    AskVaried<3>(CS_CREATE_AVATAR, &CNTProxy_CLToGS::CS_CreateAvatar);
    AskVaried<1>(CS_DELETE_AVATAR, &CNTProxy_CLToGS::CS_DeleteAvatar);
    AskVaried<1>(CS_CANCEL_DELETE_AVATAR, &CNTProxy_CLToGS::CS_CancelDeleteAvatar);
    AskVaried<2>(CS_TRY_ON_SESSION, &CNTProxy_CLToGS::CS_TryOnSession);
    AskVaried<4>(CS_WARP_SESSION_IN, &CNTProxy_CLToGS::CS_Warp_SessionIn);
    AskVaried<1>(CS_CHANGE_AVATAR_NICK_NAME, &CNTProxy_CLToGS::CS_Change_AvatarNickName);
    AskVaried<5>(CS_REQUEST_ITEM_UPGRADE, &CNTProxy_CLToGS::CS_Request_ItemUpgrade);
    AskVaried<1>(CS_GM_MOVE_TO_AVATAR, &CNTProxy_CLToGS::CS_GM_Move_To_Avatar);
    AskVaried<2>(CS_GM_MOVE_TO_POSITION, &CNTProxy_CLToGS::CS_GM_Move_To_Position);
    AskVaried<1>(CS_GM_GET_AVATAR_INFORMATION, &CNTProxy_CLToGS::CS_GM_Get_Avatar_Information);
    AskVaried<2>(CS_GM_STEAL_ITEM, &CNTProxy_CLToGS::CS_GM_Steal_Item);
}

void Session::PushEverything(unsigned round)
{
    Values = Variety(round);
    std::apply([this](const auto&... row) { (PushVaried(row), ...); }, Notifications);
}

void Session::PushExtremes()
{
    // Texts beyond what their receivers hold, and packets filled to the last byte.
    Push(MessageOf(SC_CHAT, short{1}, std::string(250, 'x')));
    Push(MessageOf(SC_WISPER_CHAT_WIDE, 7U, std::string(25, 'n'), std::string(4059, 'm')));
    Push(MessageOf(SC_EVENT18001, char{-1}, std::string(4089, 't')));
    Push(MessageOf(SC_NPC_LIST, std::numeric_limits<short>::max()));
    Push(MessageOf(SC_AVATAR_LIST, short{-1}));
}

void Session::TellTheTime()
{
    for (unsigned serverTime : {5000U, 0xFFFFFFFFU, 0U}) {
        Push(MessageOf(SC_SET_NET_TIME, serverTime, 40U));
        ++TimesTold;
    }
}

void Session::TakeOverReplies()
{
    Faults silent;
    silent.Replies = ReplyFault::Never;
    Server.SetFaults(FirstPeer, silent);
}

MessageNumber Session::NextReplyNumber()
{
    return ReplyNumbers[RepliesMade++ % std::size(ReplyNumbers)];
}

void Session::End(const std::filesystem::path& directory)
{
    // Behind its reply nothing of the client is under way any more, and behind the clock nothing of the
    // server.
    AskVaried<1>(CS_DELETE_AVATAR, &CNTProxy_CLToGS::CS_DeleteAvatar);
    TellTheTime();
    Require(Record.WaitForPushed(SC_SET_NET_TIME, TimesTold, PatienceSeconds),
            "the last message did not arrive");
    Server.Close(FirstPeer);
    Require(Client.WaitForReceiveThread(PatienceSeconds * 1000), "the connection did not end");
    Client.Disconnect();
    std::filesystem::create_directories(directory);
    Between.Write(directory);
    OwnPackets own(Record);
    own.WriteAll();
    own.Save(directory);
    Record.Write(directory / "values.jsonl");
}

void Play(const std::filesystem::path& directory)
{
    Session session;
    session.PlayAsGame();
    session.TakeOverReplies();
    for (unsigned round = 0; round < Variety::Rounds; ++round) {
        session.TellTheTime();
        session.SendEverything(round);
        session.AskEverything(round);
        session.PushEverything(round);
    }
    session.PushExtremes();
    session.End(directory);
}

} // namespace
} // namespace Kesra

int main(int count, char** arguments)
{
    if (count != 2) {
        std::fprintf(stderr, "usage: %s DIRECTORY\n", arguments[0]);
        return 2;
    }
    try {
        Kesra::Play(arguments[1]);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return 1;
    }
    return 0;
}
