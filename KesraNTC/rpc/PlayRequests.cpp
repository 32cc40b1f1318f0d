#include "KesraNTC/rpc/private/Requests.h"

using namespace Kesra;

namespace
{

/// When an attack is made: the tick count and the second and millisecond of the clock.
struct AttackTime {
    AttackTime() { GetSystemTime(&Clock); }

    DWORD Tick = GetTickCount();
    SYSTEMTIME Clock;
};

} // namespace

GS_RESULT CNTProxy_CLToGS::CS_Chat(CFixCharString<200>& text)
{
    return SendOnly(CS_CHAT, text);
}

GS_RESULT CNTProxy_CLToGS::CS_Wisper_Chat(unsigned long objectID, CFixCharString<200>& text)
{
    return SendOnly(CS_WISPER_CHAT, objectID, text);
}

GS_RESULT CNTProxy_CLToGS::CS_Wisper_Chat_Wide(CFixCharString<20>& nickname, CFixCharString<200>& text)
{
    return SendOnly(CS_WISPER_CHAT_WIDE, nickname, text);
}

GS_RESULT CNTProxy_CLToGS::CS_AvatarMove(CDRVector& movement, unsigned short second, unsigned long third)
{
    return SendOnly(CS_AVATAR_MOVE, movement, second, third);
}

GS_RESULT CNTProxy_CLToGS::CS_PutonItem(short slot, short item)
{
    return SendOnly(CS_PUTON_ITEM, slot, item);
}

GS_RESULT CNTProxy_CLToGS::CS_TakeoffItem(short slot, short item)
{
    return SendOnly(CS_TAKEOFF_ITEM, slot, item);
}

GS_RESULT CNTProxy_CLToGS::CS_ChooseWeapon(short weapon)
{
    return SendOnly(CS_CHOOSE_WEAPON, weapon);
}

GS_RESULT CNTProxy_CLToGS::CS_BuyItems(long item, short count)
{
    return SendOnly(CS_BUY_ITEMS, item, count);
}

GS_RESULT CNTProxy_CLToGS::CS_BuyItem(long item, short second, short third)
{
    return SendOnly(CS_BUY_ITEM, item, second, third);
}

GS_RESULT CNTProxy_CLToGS::CS_SellItem(short item)
{
    return SendOnly(CS_SELL_ITEM, item);
}

GS_RESULT CNTProxy_CLToGS::CS_PickupItem(unsigned long objectID)
{
    return SendOnly(CS_PICKUP_ITEM, objectID);
}

GS_RESULT CNTProxy_CLToGS::CS_DropItem(short item)
{
    return SendOnly(CS_DROP_ITEM, item);
}

GS_RESULT CNTProxy_CLToGS::CS_ReLocateItemInInventory(short from, short to)
{
    return SendOnly(CS_RE_LOCATE_ITEM_IN_INVENTORY, from, to);
}

GS_RESULT CNTProxy_CLToGS::CS_Use_Item(short item)
{
    return SendOnly(CS_USE_ITEM, item);
}

GS_RESULT CNTProxy_CLToGS::CS_UpdateJewelryCollection(short value)
{
    return SendOnly(CS_UPDATE_JEWELRY_COLLECTION, value);
}

GS_RESULT CNTProxy_CLToGS::CS_Request_ItemUpgrade(short first, long second, std::vector<short>& materials,
                                                  short fourth, short fifth, long& upgraded,
                                                  unsigned long& result)
{
    return AskAndWait(CS_REQUEST_ITEM_UPGRADE, Sends(first, second, materials, fourth, fifth),
                      Fills(upgraded), result);
}

GS_RESULT CNTProxy_CLToGS::CS_RepairItem(short item)
{
    return SendOnly(CS_REPAIR_ITEM, item);
}

GS_RESULT CNTProxy_CLToGS::CS_ExchangeItemInInventory(short first, short second)
{
    return SendOnly(CS_EXCHANGE_ITEM_IN_INVENTORY, first, second);
}

GS_RESULT CNTProxy_CLToGS::CS_Avatar_AttackMonster(unsigned long objectID)
{
    const AttackTime now;
    return SendOnly(CS_AVATAR_ATTACK_MONSTER, objectID, now.Tick, now.Clock.wSecond, now.Clock.wMilliseconds);
}

GS_RESULT CNTProxy_CLToGS::CS_Avatar_SkillAttackMonster(unsigned long objectID)
{
    const AttackTime now;
    return SendOnly(CS_AVATAR_SKILL_ATTACK_MONSTER, objectID, now.Tick, now.Clock.wSecond,
                    now.Clock.wMilliseconds);
}

GS_RESULT CNTProxy_CLToGS::CS_Avatar_AttackArea(CNTVector& point)
{
    return SendOnly(CS_AVATAR_ATTACK_AREA, point);
}

GS_RESULT CNTProxy_CLToGS::CS_UI_ResetKiSystem(short first, short second, short third)
{
    return SendOnly(CS_UI_RESET_KI_SYSTEM, first, second, third);
}

GS_RESULT CNTProxy_CLToGS::CS_IncParameter(short parameter)
{
    return SendOnly(CS_INC_PARAMETER, parameter);
}

GS_RESULT CNTProxy_CLToGS::CS_RequestBarter(unsigned long objectID)
{
    return SendOnly(CS_REQUEST_BARTER, objectID);
}

GS_RESULT CNTProxy_CLToGS::CS_ResponseBarter(unsigned long objectID, short answer)
{
    return SendOnly(CS_RESPONSE_BARTER, objectID, answer);
}

GS_RESULT CNTProxy_CLToGS::CS_CancelBarter(unsigned long objectID)
{
    return SendOnly(CS_CANCEL_BARTER, objectID);
}

GS_RESULT CNTProxy_CLToGS::CS_Dealing(unsigned long objectID, std::vector<TItem>& items,
                                      std::vector<TSkill>& skills, long last)
{
    return SendOnly(CS_DEALING, objectID, items, skills, last);
}

GS_RESULT CNTProxy_CLToGS::CS_DealSign(unsigned long objectID)
{
    return SendOnly(CS_DEAL_SIGN, objectID);
}

GS_RESULT CNTProxy_CLToGS::CS_Request_Make_Party(unsigned long objectID)
{
    return SendOnly(CS_REQUEST_MAKE_PARTY, objectID);
}

GS_RESULT CNTProxy_CLToGS::CS_Response_Make_Party(unsigned long objectID, bool accept)
{
    return SendOnly(CS_RESPONSE_MAKE_PARTY, objectID, accept);
}

GS_RESULT CNTProxy_CLToGS::CS_Breakwith_Party()
{
    return SendOnly(CS_BREAKWITH_PARTY);
}

GS_RESULT CNTProxy_CLToGS::CS_Boss_Force_PartyMember_To_Breakwith_Party(CString nickname)
{
    return SendOnly(CS_BOSS_FORCE_PARTY_MEMBER_TO_BREAKWITH_PARTY, nickname);
}

GS_RESULT CNTProxy_CLToGS::CS_Boss_Entrust_PartyMember(CString nickname)
{
    return SendOnly(CS_BOSS_ENTRUST_PARTY_MEMBER, nickname);
}

GS_RESULT CNTProxy_CLToGS::CS_ReLocateSkill(short& from, short& to)
{
    return SendOnly(CS_RE_LOCATE_SKILL, from, to);
}

GS_RESULT CNTProxy_CLToGS::CS_ChooseSkill(short& skill)
{
    return SendOnly(CS_CHOOSE_SKILL, skill);
}

GS_RESULT CNTProxy_CLToGS::CS_BuySkill(long& skill, short& second, short& third)
{
    return SendOnly(CS_BUY_SKILL, skill, second, third);
}

GS_RESULT CNTProxy_CLToGS::CS_SellSkill(short& skill)
{
    return SendOnly(CS_SELL_SKILL, skill);
}

GS_RESULT CNTProxy_CLToGS::CS_PickupSkill(unsigned long& objectID)
{
    return SendOnly(CS_PICKUP_SKILL, objectID);
}

GS_RESULT CNTProxy_CLToGS::CS_DropSkill(short& skill)
{
    return SendOnly(CS_DROP_SKILL, skill);
}
