#include "server/peer/RequestTable.h"

#include "server/peer/Peer.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <type_traits>

namespace Kesra
{
namespace
{

/// Reads one value per parameter of the method and calls it; false, and nothing called, when the payload is
/// not exactly those values. A request that waits is then answered, as soon as its serial could be read.
template <MessageNumber Number, class... Parameters>
bool DecodeAndCall(Peer& peer, CNTPacket& packet, void (Peer::*method)(Parameters...))
{
    std::tuple<std::decay_t<Parameters>...> values;
    RequestReader reader(packet);
    std::apply([&](auto&... value) { (reader.Take(value), ...); }, values);
    if (!reader.Finish()) {
        if constexpr ((std::is_same_v<Parameters, Serial> || ...))
            if (reader.HasSerial())
                peer.Decline<Number>(std::get<Serial>(values), Result::BadArgument);
        return false;
    }
    std::apply([&](auto&... value) { (peer.*method)(value...); }, values);
    return true;
}

template <MessageNumber Number, auto Method> bool Carry(Peer& peer, CNTPacket& packet)
{
    return DecodeAndCall<Number>(peer, packet, Method);
}

template <MessageNumber Number, auto Method> constexpr RequestRow Row(const char* name)
{
    return {Number, name, &Carry<Number, Method>};
}

/// Every request, in the order of the numbers.
constexpr std::array Requests{
    Row<CS_LOGON, &Peer::Logon>("CS_Logon"),
    Row<CS_CREATE_AVATAR, &Peer::CreateAvatar>("CS_CreateAvatar"),
    Row<CS_DELETE_AVATAR, &Peer::DeleteAvatar>("CS_DeleteAvatar"),
    Row<CS_CANCEL_DELETE_AVATAR, &Peer::CancelDeleteAvatar>("CS_CancelDeleteAvatar"),
    Row<CS_TRY_ON_SESSION, &Peer::TryOnSession>("CS_TryOnSession"),
    Row<CS_ENTER_SESSION, &Peer::EnterSession>("CS_EnterSession"),
    Row<CS_LEAVE_SESSION, &Peer::LeaveSession>("CS_LeaveSession"),
    Row<CS_BEAR_AGAIN, &Peer::BearAgain>("CS_BearAgain"),
    Row<CS_RESPONSE_NET_TIME, &Peer::ResponseNetTime>("CS_ResponseNetTime"),
    Row<CS_BEAR_AND_ENTER_SESSION, &Peer::BearAndEnterSession>("CS_BearAndEnterSession"),
    Row<CS_WARP_SESSION_IN, &Peer::WarpSessionIn>("CS_Warp_SessionIn"),
    Row<CS_WARP_SESSION_IN_FREE, &Peer::WarpSessionInFree>("CS_Warp_SessionIn_Free"),
    Row<CS_WARP_SESSION_OUT, &Peer::WarpSessionOut>("CS_Warp_SessionOut"),
    Row<CS_CHANGE_AVATAR_NICK_NAME, &Peer::ChangeAvatarNickName>("CS_Change_AvatarNickName"),
    Row<CS_ERROR, &Peer::Error>("CS_Error"),
    Row<CS_CHAT, &Peer::Chat>("CS_Chat"),
    Row<CS_AVATAR_MOVE, &Peer::AvatarMove>("CS_AvatarMove"),
    Row<CS_PUTON_ITEM, &Peer::PutonItem>("CS_PutonItem"),
    Row<CS_TAKEOFF_ITEM, &Peer::TakeoffItem>("CS_TakeoffItem"),
    Row<CS_CHOOSE_WEAPON, &Peer::ChooseWeapon>("CS_ChooseWeapon"),
    Row<CS_BUY_ITEMS, &Peer::BuyItems>("CS_BuyItems"),
    Row<CS_BUY_ITEM, &Peer::BuyItem>("CS_BuyItem"),
    Row<CS_SELL_ITEM, &Peer::SellItem>("CS_SellItem"),
    Row<CS_PICKUP_ITEM, &Peer::PickupItem>("CS_PickupItem"),
    Row<CS_DROP_ITEM, &Peer::DropItem>("CS_DropItem"),
    Row<CS_AVATAR_ATTACK_MONSTER, &Peer::AttackMonster>("CS_Avatar_AttackMonster"),
    Row<CS_RE_LOCATE_ITEM_IN_INVENTORY, &Peer::ReLocateItemInInventory>("CS_ReLocateItemInInventory"),
    Row<CS_USE_ITEM, &Peer::UseItem>("CS_Use_Item"),
    Row<CS_WISPER_CHAT, &Peer::WisperChat>("CS_Wisper_Chat"),
    Row<CS_WISPER_CHAT_WIDE, &Peer::WisperChatWide>("CS_Wisper_Chat_Wide"),
    Row<CS_AVATAR_ATTACK_AREA, &Peer::AttackArea>("CS_Avatar_AttackArea"),
    Row<CS_AVATAR_SKILL_ATTACK_MONSTER, &Peer::SkillAttackMonster>("CS_Avatar_SkillAttackMonster"),
    Row<CS_AVATAR_RELOAD, &Peer::AvatarReload>("CS_Avatar_Reload"),
    Row<CS_UPDATE_JEWELRY_COLLECTION, &Peer::UpdateJewelryCollection>("CS_UpdateJewelryCollection"),
    Row<CS_REQUEST_ITEM_UPGRADE, &Peer::RequestItemUpgrade>("CS_Request_ItemUpgrade"),
    Row<CS_REPAIR_ITEM, &Peer::RepairItem>("CS_RepairItem"),
    Row<CS_EXCHANGE_ITEM_IN_INVENTORY, &Peer::ExchangeItemInInventory>("CS_ExchangeItemInInventory"),
    Row<CS_UI_RESET_KI_SYSTEM, &Peer::ResetKiSystem>("CS_UI_ResetKiSystem"),
    Row<CS_INC_PARAMETER, &Peer::IncParameter>("CS_IncParameter"),
    Row<CS_REQUEST_BARTER, &Peer::RequestBarter>("CS_RequestBarter"),
    Row<CS_RESPONSE_BARTER, &Peer::ResponseBarter>("CS_ResponseBarter"),
    Row<CS_CANCEL_BARTER, &Peer::CancelBarter>("CS_CancelBarter"),
    Row<CS_DEALING, &Peer::Dealing>("CS_Dealing"),
    Row<CS_DEAL_SIGN, &Peer::DealSign>("CS_DealSign"),
    Row<CS_REQUEST_MAKE_PARTY, &Peer::RequestMakeParty>("CS_Request_Make_Party"),
    Row<CS_RESPONSE_MAKE_PARTY, &Peer::ResponseMakeParty>("CS_Response_Make_Party"),
    Row<CS_BREAKWITH_PARTY, &Peer::BreakwithParty>("CS_Breakwith_Party"),
    Row<CS_BOSS_FORCE_PARTY_MEMBER_TO_BREAKWITH_PARTY, &Peer::ForcePartyMemberToBreakwithParty>(
        "CS_Boss_Force_PartyMember_To_Breakwith_Party"),
    Row<CS_BOSS_ENTRUST_PARTY_MEMBER, &Peer::EntrustPartyMember>("CS_Boss_Entrust_PartyMember"),
    Row<CS_RE_LOCATE_SKILL, &Peer::ReLocateSkill>("CS_ReLocateSkill"),
    Row<CS_CHOOSE_SKILL, &Peer::ChooseSkill>("CS_ChooseSkill"),
    Row<CS_BUY_SKILL, &Peer::BuySkill>("CS_BuySkill"),
    Row<CS_SELL_SKILL, &Peer::SellSkill>("CS_SellSkill"),
    Row<CS_PICKUP_SKILL, &Peer::PickupSkill>("CS_PickupSkill"),
    Row<CS_DROP_SKILL, &Peer::DropSkill>("CS_DropSkill"),
    Row<CS_GM_MOVE_TO_AVATAR, &Peer::MoveToAvatar>("CS_GM_Move_To_Avatar"),
    Row<CS_GM_MOVE_TO_POSITION, &Peer::MoveToPosition>("CS_GM_Move_To_Position"),
    Row<CS_GM_CALL_AVATAR, &Peer::CallAvatar>("CS_GM_Call_Avatar"),
    Row<CS_GM_TRANSPARENT, &Peer::Transparent>("CS_GM_Transparent"),
    Row<CS_GM_PROHIBIT_AVATAR_CHATTING, &Peer::ProhibitChatting>("CS_GM_Prohibit_Avatar_Chatting"),
    Row<CS_GM_GET_AVATAR_INFORMATION, &Peer::GetAvatarInformation>("CS_GM_Get_Avatar_Information"),
    Row<CS_GM_PURGE_AVATAR, &Peer::PurgeAvatar>("CS_GM_Purge_Avatar"),
    Row<CS_GM_CHANGE_LEVEL, &Peer::ChangeLevel>("CS_GM_Change_Level"),
    Row<CS_GM_GIVE_SKILL, &Peer::GiveSkill>("CS_GM_Give_Skill"),
    Row<CS_GM_GIVE_ITEM, &Peer::GiveItem>("CS_GM_Give_Item"),
    Row<CS_GM_STEAL_ITEM, &Peer::StealItem>("CS_GM_Steal_Item"),
    Row<GAME_PROPERTIES, &Peer::EchoProperties>("a property collection"),
};

} // namespace

const RequestRow* FindRequest(unsigned short number)
{
    const auto found =
        std::lower_bound(Requests.begin(), Requests.end(), number,
                         [](const RequestRow& row, unsigned short wanted) { return row.Number < wanted; });
    return found != Requests.end() && found->Number == number ? &*found : nullptr;
}

} // namespace Kesra
