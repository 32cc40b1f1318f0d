#include "KesraNTC/rpc/CNTProxy_CLToGS.h"

#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/net/CNetIO.h"
#include "KesraNTC/net/private/ClientState.h"
#include "KesraNTC/net/private/DisconnectScope.h"

CNTProxy_CLToGS::CNTProxy_CLToGS() = default;

CNTProxy_CLToGS::~CNTProxy_CLToGS() = default;

bool CNTProxy_CLToGS::Send(CNTPacket& packet)
{
    if (Client == nullptr) {
        CDebug::AppendDebugMsg("Send Error!!!");
        return false;
    }
    // What a failed send disconnects is what it failed on, and no connection that is being made meanwhile.
    const Kesra::ConnectionKey key = GetConnectionKey();
    const Kesra::DisconnectScope* outer =
        Kesra::DisconnectScope::Find(key.Io, Kesra::DisconnectScope::Request);
    const Kesra::DisconnectScope scope(key.Io, outer != nullptr ? outer->GetGeneration() : key.Generation,
                                       Kesra::DisconnectScope::Request);
    if (Client->SendToServer(packet) == CNetIO::SendFailed) {
        CDebug::AppendDebugMsg("Send Error!!!");
        ProcessProxyError();
        return false;
    }
    return true;
}

void CNTProxy_CLToGS::ProcessProxyError()
{
    if (Client != nullptr)
        Client->Disconnect();
}
