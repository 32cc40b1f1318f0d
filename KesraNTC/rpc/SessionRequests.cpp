#include "KesraNTC/net/DateEncoding.h"
#include "KesraNTC/rpc/private/Requests.h"

using namespace Kesra;

GS_RESULT CNTProxy_CLToGS::CS_Logon(CString& account, CString& password, unsigned short& value,
                                    std::vector<TAvatar>& avatars, std::vector<TPrivData>& privData,
                                    unsigned long& result)
{
    return AskAndWait(CS_LOGON, Sends(account, password), Fills(value, avatars, privData), result);
}

GS_RESULT CNTProxy_CLToGS::CS_CreateAvatar(short avatarIndex, CString& nickname, short avatarTemplateID,
                                           unsigned long& result)
{
    return AskAndWait(CS_CREATE_AVATAR, Sends(avatarIndex, nickname, avatarTemplateID), Fills(), result);
}

GS_RESULT CNTProxy_CLToGS::CS_DeleteAvatar(short avatarIndex, COLEDateTime& when, unsigned long& result)
{
    return AskAndWait(CS_DELETE_AVATAR, Sends(avatarIndex), Fills(when), result);
}

GS_RESULT CNTProxy_CLToGS::CS_CancelDeleteAvatar(short avatarIndex, unsigned long& result)
{
    return AskAndWait(CS_CANCEL_DELETE_AVATAR, Sends(avatarIndex), Fills(), result);
}

GS_RESULT CNTProxy_CLToGS::CS_TryOnSession(short first, short second, std::vector<TItem>& items,
                                           std::vector<TSkill>& skills, unsigned long& result)
{
    return AskAndWait(CS_TRY_ON_SESSION, Sends(first, second), Fills(items, skills), result);
}

GS_RESULT CNTProxy_CLToGS::CS_EnterSession()
{
    return SendOnly(CS_ENTER_SESSION);
}

GS_RESULT CNTProxy_CLToGS::CS_LeaveSession()
{
    return SendOnly(CS_LEAVE_SESSION);
}

GS_RESULT CNTProxy_CLToGS::CS_BearAgain(short value)
{
    return SendOnly(CS_BEAR_AGAIN, value);
}

GS_RESULT CNTProxy_CLToGS::CS_BearAndEnterSession()
{
    return SendOnly(CS_BEAR_AND_ENTER_SESSION);
}

GS_RESULT CNTProxy_CLToGS::CS_Warp_SessionIn(short& first, short& second, short& third, short& fourth,
                                             CNTVector& position, unsigned long& result)
{
    return AskAndWait(CS_WARP_SESSION_IN, Sends(first, second, third, fourth), Fills(position), result);
}

GS_RESULT CNTProxy_CLToGS::CS_Warp_SessionIn_Free(short value, CNTVector& position)
{
    return SendOnly(CS_WARP_SESSION_IN_FREE, value, position);
}

GS_RESULT CNTProxy_CLToGS::CS_Warp_SessionOut()
{
    return SendOnly(CS_WARP_SESSION_OUT);
}

GS_RESULT CNTProxy_CLToGS::CS_Change_AvatarNickName(CFixCharString<20>& nickname, unsigned long& result)
{
    // The one request with a byte, always 1, in front of its serial.
    return AskAndWait(CS_CHANGE_AVATAR_NICK_NAME, Sends(nickname), Fills(), result,
                      static_cast<unsigned char>(1));
}

GS_RESULT CNTProxy_CLToGS::CS_Error(CString& text)
{
    return SendOnly(CS_ERROR, text);
}

GS_RESULT CNTProxy_CLToGS::CS_Avatar_Reload()
{
    return SendOnly(CS_AVATAR_RELOAD);
}
