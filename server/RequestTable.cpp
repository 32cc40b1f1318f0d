#include "server/RequestTable.h"

#include "server/Peer.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <type_traits>

namespace Kesra
{
namespace
{

/// Reads one value per parameter of the method and calls it; false, and nothing called, when the payload is
/// not exactly those values.
template <class... Parameters>
bool DecodeAndCall(Peer& peer, CNTPacket& packet, void (Peer::*method)(Parameters...))
{
    std::tuple<std::decay_t<Parameters>...> values;
    RequestReader reader(packet);
    std::apply([&](auto&... value) { (reader.Take(value), ...); }, values);
    if (!reader.Finish())
        return false;
    std::apply([&](auto&... value) { (peer.*method)(value...); }, values);
    return true;
}

template <auto Method> bool Carry(Peer& peer, CNTPacket& packet)
{
    return DecodeAndCall(peer, packet, Method);
}

/// Every request, in the order of the numbers.
constexpr std::array Requests{
    RequestRow{CS_LOGON, &Carry<&Peer::Logon>},
    RequestRow{CS_CREATE_AVATAR, &Carry<&Peer::CreateAvatar>},
    RequestRow{CS_DELETE_AVATAR, &Carry<&Peer::DeleteAvatar>},
    RequestRow{CS_CANCEL_DELETE_AVATAR, &Carry<&Peer::CancelDeleteAvatar>},
    RequestRow{CS_TRY_ON_SESSION, &Carry<&Peer::TryOnSession>},
    RequestRow{CS_ENTER_SESSION, &Carry<&Peer::EnterSession>},
    RequestRow{CS_LEAVE_SESSION, &Carry<&Peer::LeaveSession>},
    RequestRow{CS_BEAR_AGAIN, &Carry<&Peer::BearAgain>},
    RequestRow{CS_RESPONSE_NET_TIME, &Carry<&Peer::ResponseNetTime>},
    RequestRow{CS_BEAR_AND_ENTER_SESSION, &Carry<&Peer::BearAndEnterSession>},
    RequestRow{CS_WARP_SESSION_IN, &Carry<&Peer::WarpSessionIn>},
    RequestRow{CS_WARP_SESSION_IN_FREE, &Carry<&Peer::WarpSessionInFree>},
    RequestRow{CS_WARP_SESSION_OUT, &Carry<&Peer::WarpSessionOut>},
    RequestRow{CS_CHANGE_AVATAR_NICK_NAME, &Carry<&Peer::ChangeAvatarNickName>},
    RequestRow{CS_ERROR, &Carry<&Peer::Error>},
    RequestRow{CS_CHAT, &Carry<&Peer::Chat>},
    RequestRow{CS_AVATAR_MOVE, &Carry<&Peer::AvatarMove>},
    RequestRow{CS_PUTON_ITEM, &Carry<&Peer::PutonItem>},
    RequestRow{CS_TAKEOFF_ITEM, &Carry<&Peer::TakeoffItem>},
    RequestRow{CS_CHOOSE_WEAPON, &Carry<&Peer::ChooseWeapon>},
    RequestRow{CS_BUY_ITEMS, &Carry<&Peer::BuyItems>},
    RequestRow{CS_BUY_ITEM, &Carry<&Peer::BuyItem>},
    RequestRow{CS_SELL_ITEM, &Carry<&Peer::SellItem>},
    RequestRow{CS_PICKUP_ITEM, &Carry<&Peer::PickupItem>},
    RequestRow{CS_DROP_ITEM, &Carry<&Peer::DropItem>},
    RequestRow{CS_AVATAR_ATTACK_MONSTER, &Carry<&Peer::AttackMonster>},
    RequestRow{CS_RE_LOCATE_ITEM_IN_INVENTORY, &Carry<&Peer::ReLocateItemInInventory>},
    RequestRow{CS_USE_ITEM, &Carry<&Peer::UseItem>},
    RequestRow{CS_WISPER_CHAT, &Carry<&Peer::WisperChat>},
    RequestRow{CS_WISPER_CHAT_WIDE, &Carry<&Peer::WisperChatWide>},
    RequestRow{CS_AVATAR_ATTACK_AREA, &Carry<&Peer::AttackArea>},
    RequestRow{CS_AVATAR_SKILL_ATTACK_MONSTER, &Carry<&Peer::SkillAttackMonster>},
    RequestRow{CS_AVATAR_RELOAD, &Carry<&Peer::AvatarReload>},
    RequestRow{CS_UPDATE_JEWELRY_COLLECTION, &Carry<&Peer::UpdateJewelryCollection>},
    RequestRow{CS_REQUEST_ITEM_UPGRADE, &Carry<&Peer::RequestItemUpgrade>},
    RequestRow{CS_REPAIR_ITEM, &Carry<&Peer::RepairItem>},
    RequestRow{CS_EXCHANGE_ITEM_IN_INVENTORY, &Carry<&Peer::ExchangeItemInInventory>},
    RequestRow{CS_UI_RESET_KI_SYSTEM, &Carry<&Peer::ResetKiSystem>},
    RequestRow{CS_INC_PARAMETER, &Carry<&Peer::IncParameter>},
    RequestRow{CS_REQUEST_BARTER, &Carry<&Peer::RequestBarter>},
    RequestRow{CS_RESPONSE_BARTER, &Carry<&Peer::ResponseBarter>},
    RequestRow{CS_CANCEL_BARTER, &Carry<&Peer::CancelBarter>},
    RequestRow{CS_DEALING, &Carry<&Peer::Dealing>},
    RequestRow{CS_DEAL_SIGN, &Carry<&Peer::DealSign>},
    RequestRow{CS_REQUEST_MAKE_PARTY, &Carry<&Peer::RequestMakeParty>},
    RequestRow{CS_RESPONSE_MAKE_PARTY, &Carry<&Peer::ResponseMakeParty>},
    RequestRow{CS_BREAKWITH_PARTY, &Carry<&Peer::BreakwithParty>},
    RequestRow{CS_BOSS_FORCE_PARTY_MEMBER_TO_BREAKWITH_PARTY,
               &Carry<&Peer::ForcePartyMemberToBreakwithParty>},
    RequestRow{CS_BOSS_ENTRUST_PARTY_MEMBER, &Carry<&Peer::EntrustPartyMember>},
    RequestRow{CS_RE_LOCATE_SKILL, &Carry<&Peer::ReLocateSkill>},
    RequestRow{CS_CHOOSE_SKILL, &Carry<&Peer::ChooseSkill>},
    RequestRow{CS_BUY_SKILL, &Carry<&Peer::BuySkill>},
    RequestRow{CS_SELL_SKILL, &Carry<&Peer::SellSkill>},
    RequestRow{CS_PICKUP_SKILL, &Carry<&Peer::PickupSkill>},
    RequestRow{CS_DROP_SKILL, &Carry<&Peer::DropSkill>},
    RequestRow{CS_GM_MOVE_TO_AVATAR, &Carry<&Peer::MoveToAvatar>},
    RequestRow{CS_GM_MOVE_TO_POSITION, &Carry<&Peer::MoveToPosition>},
    RequestRow{CS_GM_CALL_AVATAR, &Carry<&Peer::CallAvatar>},
    RequestRow{CS_GM_TRANSPARENT, &Carry<&Peer::Transparent>},
    RequestRow{CS_GM_PROHIBIT_AVATAR_CHATTING, &Carry<&Peer::ProhibitChatting>},
    RequestRow{CS_GM_GET_AVATAR_INFORMATION, &Carry<&Peer::GetAvatarInformation>},
    RequestRow{CS_GM_PURGE_AVATAR, &Carry<&Peer::PurgeAvatar>},
    RequestRow{CS_GM_CHANGE_LEVEL, &Carry<&Peer::ChangeLevel>},
    RequestRow{CS_GM_GIVE_SKILL, &Carry<&Peer::GiveSkill>},
    RequestRow{CS_GM_GIVE_ITEM, &Carry<&Peer::GiveItem>},
    RequestRow{CS_GM_STEAL_ITEM, &Carry<&Peer::StealItem>},
    RequestRow{GAME_PROPERTIES, &Carry<&Peer::EchoProperties>},
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
