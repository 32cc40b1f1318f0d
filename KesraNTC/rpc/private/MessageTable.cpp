#include "KesraNTC/rpc/private/MessageTable.h"

#include "KesraNTC/net/CNTBaseClient.h"
#include "KesraNTC/net/private/OutOfMemory.h"
#include "KesraNTC/rpc/CNTProxy.h"
#include "KesraNTC/rpc/CNTStub_GSToCL.h"
#include "KesraNTC/rpc/MessageNumbers.h"
#include "KesraNTC/rpc/private/FieldReading.h"

#include <array>
#include <cstdint>
#include <iterator>
#include <tuple>
#include <type_traits>

namespace Kesra
{

namespace
{

struct MessageRow {
    MessageNumber Number;
    MessageAction Action;
};

/// Memory that runs out here is not the handler's failure.
template <class... Fields> void Decode(CNTPacket& packet, std::tuple<Fields...>& fields)
try {
    std::apply([&](auto&... field) { ReadMessage(packet, field...); }, fields);
} catch (const std::bad_alloc&) {
    throw OutOfMemory();
}

/// Decodes a message into one temporary per parameter of its handler, in order, and calls the handler.
template <auto Handler, class... Parameters>
void Deliver(CNTStub_GSToCL& stub, CNTPacket& packet, void (CNTStub_GSToCL::*)(Parameters...))
{
    std::tuple<std::remove_reference_t<Parameters>...> fields{};
    Decode(packet, fields);
    std::apply([&](auto&... field) { (stub.*Handler)(field...); }, fields);
}

template <auto Handler> void TakeNotification(CNTBaseClient& client, CNTPacket& packet)
{
    if (client.Stub != nullptr)
        Deliver<Handler>(static_cast<CNTStub_GSToCL&>(*client.Stub), packet, Handler);
}

template <auto Handler> constexpr MessageRow Notification(MessageNumber number)
{
    return {number, TakeNotification<Handler>};
}

void TakeClock(CNTBaseClient& client, CNTPacket& packet)
{
    unsigned long serverTime = 0;
    unsigned long latency = 0;
    packet >> serverTime >> latency;
    client.SC_SetNetTime(serverTime, latency);
}

void TakeReply(CNTBaseClient& client, CNTPacket& packet)
{
    short serial = 0; // no request has this one
    if (packet.Read(&serial, sizeof serial) == sizeof serial && client.Proxy != nullptr)
        client.Proxy->DeliverReply(serial, packet);
}

constexpr MessageRow MessageRows[] = {
    {SC_SET_NET_TIME, TakeClock},

    {GS_REPLY_10002, TakeReply},
    {GS_REPLY_10003, TakeReply},
    {GS_REPLY_10004, TakeReply},
    {GS_REPLY_10006, TakeReply},
    {GS_REPLY_10007, TakeReply},
    {GS_REPLY_10008, TakeReply},
    {GS_REPLY_12010, TakeReply},
    {GS_REPLY_16024, TakeReply},
    {GS_REPLY_21001, TakeReply},
    {GS_REPLY_21002, TakeReply},
    {GS_REPLY_21005, TakeReply},
    {GS_REPLY_21011, TakeReply},

    Notification<&CNTStub_GSToCL::SC_GSList>(SC_GS_LIST),
    Notification<&CNTStub_GSToCL::SC_Chat>(SC_CHAT),
    Notification<&CNTStub_GSToCL::SC_AvatarMove>(SC_AVATAR_MOVE),
    Notification<&CNTStub_GSToCL::SC_PutonItem>(SC_PUTON_ITEM),
    Notification<&CNTStub_GSToCL::SC_TakeoffItem>(SC_TAKEOFF_ITEM),
    Notification<&CNTStub_GSToCL::SC_Event12006>(SC_EVENT12006),
    Notification<&CNTStub_GSToCL::SC_Event12007>(SC_EVENT12007),
    Notification<&CNTStub_GSToCL::SC_Event12008>(SC_EVENT12008),
    Notification<&CNTStub_GSToCL::SC_Event12009>(SC_EVENT12009),
    Notification<&CNTStub_GSToCL::SC_Event12012>(SC_EVENT12012),
    Notification<&CNTStub_GSToCL::SC_PrivData>(SC_PRIV_DATA),
    Notification<&CNTStub_GSToCL::SC_IncParameter>(SC_INC_PARAMETER),
    Notification<&CNTStub_GSToCL::SC_Priv13004>(SC_PRIV13004),
    Notification<&CNTStub_GSToCL::SC_Priv13005>(SC_PRIV13005),
    Notification<&CNTStub_GSToCL::SC_Priv13006>(SC_PRIV13006),
    Notification<&CNTStub_GSToCL::SC_Priv13007>(SC_PRIV13007),
    Notification<&CNTStub_GSToCL::SC_Priv13008>(SC_PRIV13008),
    Notification<&CNTStub_GSToCL::SC_Priv13010>(SC_PRIV13010),
    Notification<&CNTStub_GSToCL::SC_AvatarList>(SC_AVATAR_LIST),
    Notification<&CNTStub_GSToCL::SC_WorldObjectLists>(SC_WORLD_OBJECT_LISTS),
    Notification<&CNTStub_GSToCL::SC_WorldItemList>(SC_WORLD_ITEM_LIST),
    Notification<&CNTStub_GSToCL::SC_MonsterList>(SC_MONSTER_LIST),
    Notification<&CNTStub_GSToCL::SC_NpcList>(SC_NPC_LIST),
    Notification<&CNTStub_GSToCL::SC_Avatar>(SC_AVATAR),
    Notification<&CNTStub_GSToCL::SC_WorldItem>(SC_WORLD_ITEM),
    Notification<&CNTStub_GSToCL::SC_Monster>(SC_MONSTER),
    Notification<&CNTStub_GSToCL::SC_Npc>(SC_NPC),
    Notification<&CNTStub_GSToCL::SC_World14011>(SC_WORLD14011),
    Notification<&CNTStub_GSToCL::SC_World14012>(SC_WORLD14012),
    Notification<&CNTStub_GSToCL::SC_World14013>(SC_WORLD14013),
    Notification<&CNTStub_GSToCL::SC_ObjectMove>(SC_OBJECT_MOVE),
    Notification<&CNTStub_GSToCL::SC_Event15003>(SC_EVENT15003),
    Notification<&CNTStub_GSToCL::SC_Event16006>(SC_EVENT16006),
    Notification<&CNTStub_GSToCL::SC_Event16007>(SC_EVENT16007),
    Notification<&CNTStub_GSToCL::SC_Event16008>(SC_EVENT16008),
    Notification<&CNTStub_GSToCL::SC_Event16009>(SC_EVENT16009),
    Notification<&CNTStub_GSToCL::SC_Event16010>(SC_EVENT16010),
    Notification<&CNTStub_GSToCL::SC_Event16013>(SC_EVENT16013),
    Notification<&CNTStub_GSToCL::SC_Event16014>(SC_EVENT16014),
    Notification<&CNTStub_GSToCL::SC_Wisper_Chat>(SC_WISPER_CHAT),
    Notification<&CNTStub_GSToCL::SC_Wisper_Chat_Wide>(SC_WISPER_CHAT_WIDE),
    Notification<&CNTStub_GSToCL::SC_Event16017>(SC_EVENT16017),
    Notification<&CNTStub_GSToCL::SC_Event16018>(SC_EVENT16018),
    Notification<&CNTStub_GSToCL::SC_Event16019>(SC_EVENT16019),
    Notification<&CNTStub_GSToCL::SC_Event16020>(SC_EVENT16020),
    Notification<&CNTStub_GSToCL::SC_Event16021>(SC_EVENT16021),
    Notification<&CNTStub_GSToCL::SC_Event16022>(SC_EVENT16022),
    Notification<&CNTStub_GSToCL::SC_Event16023>(SC_EVENT16023),
    Notification<&CNTStub_GSToCL::SC_Event16025>(SC_EVENT16025),
    Notification<&CNTStub_GSToCL::SC_Event16026>(SC_EVENT16026),
    Notification<&CNTStub_GSToCL::SC_Event17002>(SC_EVENT17002),
    Notification<&CNTStub_GSToCL::SC_Event17003>(SC_EVENT17003),
    Notification<&CNTStub_GSToCL::SC_Event18001>(SC_EVENT18001),
    Notification<&CNTStub_GSToCL::SC_Event19001>(SC_EVENT19001),
    Notification<&CNTStub_GSToCL::SC_Event20001>(SC_EVENT20001),
    Notification<&CNTStub_GSToCL::SC_GM_Call_Avatar>(SC_GM_CALL_AVATAR),
    Notification<&CNTStub_GSToCL::SC_GM_Transparent>(SC_GM_TRANSPARENT),
    Notification<&CNTStub_GSToCL::SC_GM21006>(SC_GM21006),
    Notification<&CNTStub_GSToCL::SC_GM21007>(SC_GM21007),
    Notification<&CNTStub_GSToCL::SC_GM_Change_Level>(SC_GM_CHANGE_LEVEL),
    Notification<&CNTStub_GSToCL::SC_GM_Give_Skill>(SC_GM_GIVE_SKILL),
    Notification<&CNTStub_GSToCL::SC_GM_Give_Item>(SC_GM_GIVE_ITEM),
    Notification<&CNTStub_GSToCL::SC_Event29001>(SC_EVENT29001),
    Notification<&CNTStub_GSToCL::SC_Event29002>(SC_EVENT29002),
    Notification<&CNTStub_GSToCL::SC_Event29003>(SC_EVENT29003),
    Notification<&CNTStub_GSToCL::SC_Dealing>(SC_DEALING),
    Notification<&CNTStub_GSToCL::SC_Barter50002>(SC_BARTER50002),
    Notification<&CNTStub_GSToCL::SC_Barter50003>(SC_BARTER50003),
    Notification<&CNTStub_GSToCL::SC_Barter50004>(SC_BARTER50004),
    Notification<&CNTStub_GSToCL::SC_Barter50005>(SC_BARTER50005),
    Notification<&CNTStub_GSToCL::SC_Event60001>(SC_EVENT60001),
    Notification<&CNTStub_GSToCL::SC_Event60002>(SC_EVENT60002),
};

constexpr std::uint8_t NoRow = 255;
static_assert(std::size(MessageRows) < NoRow);

/// The smallest divisor by which all message numbers leave different remainders.
constexpr unsigned FindDivisor()
{
    for (unsigned divisor = std::size(MessageRows);; ++divisor) {
        std::array<bool, 4096> taken{};
        bool distinct = true;
        for (const MessageRow& row : MessageRows) {
            distinct = distinct && !taken[row.Number % divisor];
            taken[row.Number % divisor] = true;
        }
        if (distinct)
            return divisor;
    }
}

constexpr unsigned Divisor = FindDivisor();

constexpr std::array<std::uint8_t, Divisor> RowsByRemainder = [] {
    std::array<std::uint8_t, Divisor> rows{};
    rows.fill(NoRow);
    for (std::size_t i = 0; i < std::size(MessageRows); ++i)
        rows[MessageRows[i].Number % Divisor] = static_cast<std::uint8_t>(i);
    return rows;
}();

} // namespace

MessageAction ActionFor(unsigned short number)
{
    const std::uint8_t row = RowsByRemainder[number % Divisor];
    return row != NoRow && MessageRows[row].Number == number ? MessageRows[row].Action : nullptr;
}

} // namespace Kesra
