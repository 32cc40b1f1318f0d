#include "KesraNTC/rpc/private/Requests.h"

using namespace Kesra;

GS_RESULT CNTProxy_CLToGS::CS_GM_Move_To_Avatar(CString nickname, short& value, CNTVector& position,
                                                unsigned long& result)
{
    return AskAndWait(CS_GM_MOVE_TO_AVATAR, Sends(nickname), Fills(value, position), result);
}

GS_RESULT CNTProxy_CLToGS::CS_GM_Move_To_Position(short first, CNTVector position, unsigned long& result)
{
    return AskAndWait(CS_GM_MOVE_TO_POSITION, Sends(first, position), Fills(), result);
}

GS_RESULT CNTProxy_CLToGS::CS_GM_Call_Avatar(CString nickname)
{
    return SendOnly(CS_GM_CALL_AVATAR, nickname);
}

GS_RESULT CNTProxy_CLToGS::CS_GM_Transparent(bool invisible)
{
    return SendOnly(CS_GM_TRANSPARENT, invisible);
}

GS_RESULT CNTProxy_CLToGS::CS_GM_Prohibit_Avatar_Chatting(CString nickname, int time)
{
    return SendOnly(CS_GM_PROHIBIT_AVATAR_CHATTING, nickname, time);
}

GS_RESULT CNTProxy_CLToGS::CS_GM_Get_Avatar_Information(CString nickname, TAvatar& avatar,
                                                        TPrivData& privData, unsigned long& result)
{
    return AskAndWait(CS_GM_GET_AVATAR_INFORMATION, Sends(nickname), Fills(avatar, privData), result);
}

GS_RESULT CNTProxy_CLToGS::CS_GM_Purge_Avatar(CString nickname)
{
    return SendOnly(CS_GM_PURGE_AVATAR, nickname);
}

GS_RESULT CNTProxy_CLToGS::CS_GM_Change_Level(CString nickname, short level)
{
    return SendOnly(CS_GM_CHANGE_LEVEL, nickname, level);
}

GS_RESULT CNTProxy_CLToGS::CS_GM_Give_Skill(CString nickname, int second, int third)
{
    return SendOnly(CS_GM_GIVE_SKILL, nickname, second, third);
}

GS_RESULT CNTProxy_CLToGS::CS_GM_Give_Item(CString nickname, int second, short third)
{
    return SendOnly(CS_GM_GIVE_ITEM, nickname, second, third);
}

GS_RESULT CNTProxy_CLToGS::CS_GM_Steal_Item(CString nickname, short second, TItem& item,
                                            unsigned long& result)
{
    return AskAndWait(CS_GM_STEAL_ITEM, Sends(nickname, second), Fills(item), result);
}
