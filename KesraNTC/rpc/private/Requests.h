#pragma once

#include "KesraNTC/net/private/ClientState.h"
#include "KesraNTC/net/private/DisconnectScope.h"
#include "KesraNTC/rpc/CNTProxy_CLToGS.h"
#include "KesraNTC/rpc/MessageNumbers.h"
#include "KesraNTC/rpc/private/FieldReading.h"
#include "KesraNTC/rpc/private/RequestFields.h"

#include <memory>
#include <new>
#include <tuple>

// The two shapes of a request, for the sources that define the CS_ methods.

namespace Kesra
{

/// What a waiting request sends: its fields in wire order.
template <class... Fields> std::tuple<const Fields&...> Sends(const Fields&... fields)
{
    return {fields...};
}

/// What its reply fills, in wire order; the result code comes last by itself.
template <class... Targets> std::tuple<Targets&...> Fills(Targets&... targets)
{
    return {targets...};
}

} // namespace Kesra

template <class... Fields> GS_RESULT CNTProxy_CLToGS::SendOnly(unsigned short number, const Fields&... fields)
{
    CNTPacket packet{CNTPacket::Unzeroed{}};
    Kesra::BuildRequest(packet, number, fields...);
    Send(packet);
    return GS_OK;
}

template <class... Fields, class... Targets, class... BeforeSerial>
GS_RESULT CNTProxy_CLToGS::AskAndWait(unsigned short number, const std::tuple<const Fields&...>& sent,
                                      const std::tuple<Targets&...>& filled, unsigned long& result,
                                      BeforeSerial... beforeSerial)
{
    const std::unique_ptr<CNestedReply> record(PreNestedRequestReply());
    if (record == nullptr)
        return GS_REPLY_ERROR;
    CNTPacket packet{CNTPacket::Unzeroed{}};
    std::apply(
        [&](const Fields&... fields) {
            Kesra::BuildRequest(packet, number, beforeSerial..., record->Serial, fields...);
        },
        sent);
    {
        // On the connection for which it was registered, or not at all.
        const Kesra::DisconnectScope scope(GetConnectionKey().Io, record->Generation,
                                           Kesra::DisconnectScope::Request);
        Send(packet);
    }
    if (!WaitForNestedRequestReply(record.get())) {
        result = GS_REPLY_ERROR;
        return GS_REPLY_ERROR;
    }
    try {
        std::apply([&](Targets&... targets) { (Kesra::ReadField(record->Reply, targets), ...); }, filled);
    } catch (const std::bad_alloc&) {
        result = GS_REPLY_ERROR;
        return GS_REPLY_ERROR;
    }
    record->Reply >> result;
    return GS_OK;
}
