#pragma once

#include "server/messages/Writers.h"

#include "KesraNTC/base/COLEDateTime.h"

#include <tuple>

namespace Kesra
{

/// The answer to a waiting request: its number, and the types of what stands between serial and result code.
template <MessageNumber ReplyNumber, class... Fields> struct ReplyForm {
    static constexpr MessageNumber Number = ReplyNumber;
    using Values = std::tuple<Fields...>;
};

template <MessageNumber Request> struct ReplyOf;
template <>
struct ReplyOf<CS_LOGON>
    : ReplyForm<GS_REPLY_10002, unsigned short, std::vector<TAvatar>, std::vector<TPrivData>> {
};
template <> struct ReplyOf<CS_CREATE_AVATAR> : ReplyForm<GS_REPLY_10003> {
};
template <> struct ReplyOf<CS_DELETE_AVATAR> : ReplyForm<GS_REPLY_10004, COLEDateTime> {
};
template <> struct ReplyOf<CS_CANCEL_DELETE_AVATAR> : ReplyForm<GS_REPLY_10006> {
};
template <>
struct ReplyOf<CS_TRY_ON_SESSION> : ReplyForm<GS_REPLY_10007, std::vector<TItem>, std::vector<TSkill>> {
};
template <> struct ReplyOf<CS_WARP_SESSION_IN> : ReplyForm<GS_REPLY_10007, CNTVector> {
};
template <> struct ReplyOf<CS_CHANGE_AVATAR_NICK_NAME> : ReplyForm<GS_REPLY_10008> {
};
template <> struct ReplyOf<CS_REQUEST_ITEM_UPGRADE> : ReplyForm<GS_REPLY_16024, long> {
};
template <> struct ReplyOf<CS_GM_MOVE_TO_AVATAR> : ReplyForm<GS_REPLY_21001, short, CNTVector> {
};
template <> struct ReplyOf<CS_GM_MOVE_TO_POSITION> : ReplyForm<GS_REPLY_21002> {
};
template <> struct ReplyOf<CS_GM_GET_AVATAR_INFORMATION> : ReplyForm<GS_REPLY_21005, TAvatar, TPrivData> {
};
template <> struct ReplyOf<CS_GM_STEAL_ITEM> : ReplyForm<GS_REPLY_21011, TItem> {
};

/// Builds the answer to a request.
template <MessageNumber Request>
CNTPacket ReplyTo(unsigned short serial, const typename ReplyOf<Request>::Values& fields, Result result)
{
    return std::apply(
        [&](const auto&... field) { return MessageOf(ReplyOf<Request>::Number, serial, field..., result); },
        fields);
}

} // namespace Kesra
