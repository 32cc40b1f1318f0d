#include "fuzz/StreamClient.h"

#include <iterator>
#include <tuple>
#include <type_traits>
#include <utility>

namespace Kesra
{
namespace
{

/// A request with default arguments; a reply must have come, whatever its fields.
template <auto Request> struct Asker;

template <class... Parameters, GS_RESULT (CNTProxy_CLToGS::*Request)(Parameters...)> struct Asker<Request> {
    static void Ask(AnsweringProxy& proxy)
    {
        std::tuple<std::decay_t<Parameters>...> values{};
        const GS_RESULT result =
            std::apply([&](auto&... value) { return (proxy.*Request)(value...); }, values);
        HandlerHash::Check(result == GS_OK);
        FlatValues<HashSink> seen;
        std::apply([&](auto&... value) { (seen.Add(value), ...); }, values);
    }
};

/// The one request with a byte in front of its serial.
void AskNickname(AnsweringProxy& proxy)
{
    proxy.SerialOffset = CNTPacket::HeaderSize + 1;
    Asker<&CNTProxy_CLToGS::CS_Change_AvatarNickName>::Ask(proxy);
}

constexpr void (*Askers[])(AnsweringProxy&) = {
    Asker<&CNTProxy_CLToGS::CS_Logon>::Ask,
    Asker<&CNTProxy_CLToGS::CS_CreateAvatar>::Ask,
    Asker<&CNTProxy_CLToGS::CS_DeleteAvatar>::Ask,
    Asker<&CNTProxy_CLToGS::CS_CancelDeleteAvatar>::Ask,
    Asker<&CNTProxy_CLToGS::CS_TryOnSession>::Ask,
    Asker<&CNTProxy_CLToGS::CS_Warp_SessionIn>::Ask,
    AskNickname,
    Asker<&CNTProxy_CLToGS::CS_Request_ItemUpgrade>::Ask,
    Asker<&CNTProxy_CLToGS::CS_GM_Move_To_Avatar>::Ask,
    Asker<&CNTProxy_CLToGS::CS_GM_Move_To_Position>::Ask,
    Asker<&CNTProxy_CLToGS::CS_GM_Get_Avatar_Information>::Ask,
    Asker<&CNTProxy_CLToGS::CS_GM_Steal_Item>::Ask,
};

} // namespace

void AskSomething(CNTMainClient& client, unsigned choice, std::span<const std::uint8_t> fields)
{
    AnsweringProxy proxy(client, fields);
    Askers[choice % std::size(Askers)](proxy);
}

} // namespace Kesra
