#pragma once

#include "server/messages/Writers.h"

#include "KesraNTC/rpc/CNTStub_GSToCL.h"
#include "KesraNTC/rpc/MessageNumbers.h"

#include <tuple>
#include <type_traits>
#include <utility>

namespace Kesra
{

/// One message that the server pushes: its number and the handler whose parameter list is its payload.
template <MessageNumber MessageOf, auto HandlerOf> struct NotificationRow {
    static constexpr MessageNumber Number = MessageOf;
    static constexpr auto Handler = HandlerOf;
    const char* Name = nullptr;
};

/// Every pushed message but the clock, which no handler receives.
inline constexpr std::tuple Notifications{
    NotificationRow<SC_GS_LIST, &CNTStub_GSToCL::SC_GSList>{"SC_GSList"},
    NotificationRow<SC_CHAT, &CNTStub_GSToCL::SC_Chat>{"SC_Chat"},
    NotificationRow<SC_AVATAR_MOVE, &CNTStub_GSToCL::SC_AvatarMove>{"SC_AvatarMove"},
    NotificationRow<SC_PUTON_ITEM, &CNTStub_GSToCL::SC_PutonItem>{"SC_PutonItem"},
    NotificationRow<SC_TAKEOFF_ITEM, &CNTStub_GSToCL::SC_TakeoffItem>{"SC_TakeoffItem"},
    NotificationRow<SC_EVENT12006, &CNTStub_GSToCL::SC_Event12006>{"SC_Event12006"},
    NotificationRow<SC_EVENT12007, &CNTStub_GSToCL::SC_Event12007>{"SC_Event12007"},
    NotificationRow<SC_EVENT12008, &CNTStub_GSToCL::SC_Event12008>{"SC_Event12008"},
    NotificationRow<SC_EVENT12009, &CNTStub_GSToCL::SC_Event12009>{"SC_Event12009"},
    NotificationRow<SC_EVENT12012, &CNTStub_GSToCL::SC_Event12012>{"SC_Event12012"},
    NotificationRow<SC_PRIV_DATA, &CNTStub_GSToCL::SC_PrivData>{"SC_PrivData"},
    NotificationRow<SC_INC_PARAMETER, &CNTStub_GSToCL::SC_IncParameter>{"SC_IncParameter"},
    NotificationRow<SC_PRIV13004, &CNTStub_GSToCL::SC_Priv13004>{"SC_Priv13004"},
    NotificationRow<SC_PRIV13005, &CNTStub_GSToCL::SC_Priv13005>{"SC_Priv13005"},
    NotificationRow<SC_PRIV13006, &CNTStub_GSToCL::SC_Priv13006>{"SC_Priv13006"},
    NotificationRow<SC_PRIV13007, &CNTStub_GSToCL::SC_Priv13007>{"SC_Priv13007"},
    NotificationRow<SC_PRIV13008, &CNTStub_GSToCL::SC_Priv13008>{"SC_Priv13008"},
    NotificationRow<SC_PRIV13010, &CNTStub_GSToCL::SC_Priv13010>{"SC_Priv13010"},
    NotificationRow<SC_AVATAR_LIST, &CNTStub_GSToCL::SC_AvatarList>{"SC_AvatarList"},
    NotificationRow<SC_WORLD_OBJECT_LISTS, &CNTStub_GSToCL::SC_WorldObjectLists>{"SC_WorldObjectLists"},
    NotificationRow<SC_WORLD_ITEM_LIST, &CNTStub_GSToCL::SC_WorldItemList>{"SC_WorldItemList"},
    NotificationRow<SC_MONSTER_LIST, &CNTStub_GSToCL::SC_MonsterList>{"SC_MonsterList"},
    NotificationRow<SC_NPC_LIST, &CNTStub_GSToCL::SC_NpcList>{"SC_NpcList"},
    NotificationRow<SC_AVATAR, &CNTStub_GSToCL::SC_Avatar>{"SC_Avatar"},
    NotificationRow<SC_WORLD_ITEM, &CNTStub_GSToCL::SC_WorldItem>{"SC_WorldItem"},
    NotificationRow<SC_MONSTER, &CNTStub_GSToCL::SC_Monster>{"SC_Monster"},
    NotificationRow<SC_NPC, &CNTStub_GSToCL::SC_Npc>{"SC_Npc"},
    NotificationRow<SC_WORLD14011, &CNTStub_GSToCL::SC_World14011>{"SC_World14011"},
    NotificationRow<SC_WORLD14012, &CNTStub_GSToCL::SC_World14012>{"SC_World14012"},
    NotificationRow<SC_WORLD14013, &CNTStub_GSToCL::SC_World14013>{"SC_World14013"},
    NotificationRow<SC_OBJECT_MOVE, &CNTStub_GSToCL::SC_ObjectMove>{"SC_ObjectMove"},
    NotificationRow<SC_EVENT15003, &CNTStub_GSToCL::SC_Event15003>{"SC_Event15003"},
    NotificationRow<SC_EVENT16006, &CNTStub_GSToCL::SC_Event16006>{"SC_Event16006"},
    NotificationRow<SC_EVENT16007, &CNTStub_GSToCL::SC_Event16007>{"SC_Event16007"},
    NotificationRow<SC_EVENT16008, &CNTStub_GSToCL::SC_Event16008>{"SC_Event16008"},
    NotificationRow<SC_EVENT16009, &CNTStub_GSToCL::SC_Event16009>{"SC_Event16009"},
    NotificationRow<SC_EVENT16010, &CNTStub_GSToCL::SC_Event16010>{"SC_Event16010"},
    NotificationRow<SC_EVENT16013, &CNTStub_GSToCL::SC_Event16013>{"SC_Event16013"},
    NotificationRow<SC_EVENT16014, &CNTStub_GSToCL::SC_Event16014>{"SC_Event16014"},
    NotificationRow<SC_WISPER_CHAT, &CNTStub_GSToCL::SC_Wisper_Chat>{"SC_Wisper_Chat"},
    NotificationRow<SC_WISPER_CHAT_WIDE, &CNTStub_GSToCL::SC_Wisper_Chat_Wide>{"SC_Wisper_Chat_Wide"},
    NotificationRow<SC_EVENT16017, &CNTStub_GSToCL::SC_Event16017>{"SC_Event16017"},
    NotificationRow<SC_EVENT16018, &CNTStub_GSToCL::SC_Event16018>{"SC_Event16018"},
    NotificationRow<SC_EVENT16019, &CNTStub_GSToCL::SC_Event16019>{"SC_Event16019"},
    NotificationRow<SC_EVENT16020, &CNTStub_GSToCL::SC_Event16020>{"SC_Event16020"},
    NotificationRow<SC_EVENT16021, &CNTStub_GSToCL::SC_Event16021>{"SC_Event16021"},
    NotificationRow<SC_EVENT16022, &CNTStub_GSToCL::SC_Event16022>{"SC_Event16022"},
    NotificationRow<SC_EVENT16023, &CNTStub_GSToCL::SC_Event16023>{"SC_Event16023"},
    NotificationRow<SC_EVENT16025, &CNTStub_GSToCL::SC_Event16025>{"SC_Event16025"},
    NotificationRow<SC_EVENT16026, &CNTStub_GSToCL::SC_Event16026>{"SC_Event16026"},
    NotificationRow<SC_EVENT17002, &CNTStub_GSToCL::SC_Event17002>{"SC_Event17002"},
    NotificationRow<SC_EVENT17003, &CNTStub_GSToCL::SC_Event17003>{"SC_Event17003"},
    NotificationRow<SC_EVENT18001, &CNTStub_GSToCL::SC_Event18001>{"SC_Event18001"},
    NotificationRow<SC_EVENT19001, &CNTStub_GSToCL::SC_Event19001>{"SC_Event19001"},
    NotificationRow<SC_EVENT20001, &CNTStub_GSToCL::SC_Event20001>{"SC_Event20001"},
    NotificationRow<SC_GM_CALL_AVATAR, &CNTStub_GSToCL::SC_GM_Call_Avatar>{"SC_GM_Call_Avatar"},
    NotificationRow<SC_GM_TRANSPARENT, &CNTStub_GSToCL::SC_GM_Transparent>{"SC_GM_Transparent"},
    NotificationRow<SC_GM21006, &CNTStub_GSToCL::SC_GM21006>{"SC_GM21006"},
    NotificationRow<SC_GM21007, &CNTStub_GSToCL::SC_GM21007>{"SC_GM21007"},
    NotificationRow<SC_GM_CHANGE_LEVEL, &CNTStub_GSToCL::SC_GM_Change_Level>{"SC_GM_Change_Level"},
    NotificationRow<SC_GM_GIVE_SKILL, &CNTStub_GSToCL::SC_GM_Give_Skill>{"SC_GM_Give_Skill"},
    NotificationRow<SC_GM_GIVE_ITEM, &CNTStub_GSToCL::SC_GM_Give_Item>{"SC_GM_Give_Item"},
    NotificationRow<SC_EVENT29001, &CNTStub_GSToCL::SC_Event29001>{"SC_Event29001"},
    NotificationRow<SC_EVENT29002, &CNTStub_GSToCL::SC_Event29002>{"SC_Event29002"},
    NotificationRow<SC_EVENT29003, &CNTStub_GSToCL::SC_Event29003>{"SC_Event29003"},
    NotificationRow<SC_DEALING, &CNTStub_GSToCL::SC_Dealing>{"SC_Dealing"},
    NotificationRow<SC_BARTER50002, &CNTStub_GSToCL::SC_Barter50002>{"SC_Barter50002"},
    NotificationRow<SC_BARTER50003, &CNTStub_GSToCL::SC_Barter50003>{"SC_Barter50003"},
    NotificationRow<SC_BARTER50004, &CNTStub_GSToCL::SC_Barter50004>{"SC_Barter50004"},
    NotificationRow<SC_BARTER50005, &CNTStub_GSToCL::SC_Barter50005>{"SC_Barter50005"},
    NotificationRow<SC_EVENT60001, &CNTStub_GSToCL::SC_Event60001>{"SC_Event60001"},
    NotificationRow<SC_EVENT60002, &CNTStub_GSToCL::SC_Event60002>{"SC_Event60002"},
};

template <class Handler> struct PayloadOf;

/// The values that a handler's parameters stand for, in order.
template <class... Parameters> struct PayloadOf<void (CNTStub_GSToCL::*)(Parameters...)> {
    using Values = std::tuple<std::decay_t<Parameters>...>;
};

template <class Row>
using PayloadOfRow = typename PayloadOf<std::remove_const_t<decltype(Row::Handler)>>::Values;

/// The row of a number, found when the program is compiled.
template <MessageNumber Wanted, class Row, class... Rest>
constexpr auto RowOf(const std::tuple<Row, Rest...>*)
{
    if constexpr (Row::Number == Wanted)
        return Row{};
    else
        return RowOf<Wanted>(static_cast<const std::tuple<Rest...>*>(nullptr));
}

template <class To, class From> To FieldFrom(const From& value)
{
    if constexpr (std::is_same_v<From, std::string>)
        return To(value.c_str());
    else
        return static_cast<To>(value);
}

template <class... Fields, class... Arguments>
void PutFields(CNTPacket& packet, const std::tuple<Fields...>*, const Arguments&... arguments)
{
    static_assert(sizeof...(Fields) == sizeof...(Arguments), "one argument per field of the payload");
    (Put(packet, FieldFrom<Fields>(arguments)), ...);
}

/// Builds a pushed message. The arguments become the types of the handler's parameters before they are
/// written, so that every field travels in its own width: `Notification<SC_CHAT>(speaker, "hello")`.
template <MessageNumber Number, class... Arguments> CNTPacket Notification(const Arguments&... arguments)
{
    using Row = decltype(RowOf<Number>(static_cast<const decltype(Notifications)*>(nullptr)));
    CNTPacket packet = BeginMessage(Number);
    PutFields(packet, static_cast<const PayloadOfRow<Row>*>(nullptr), arguments...);
    FinishMessage(packet, Number);
    return packet;
}

} // namespace Kesra
