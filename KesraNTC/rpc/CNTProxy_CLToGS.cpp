#include "KesraNTC/rpc/CNTProxy_CLToGS.h"

#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/net/CNetIO.h"

CNTProxy_CLToGS::CNTProxy_CLToGS() = default;

CNTProxy_CLToGS::~CNTProxy_CLToGS() = default;

bool CNTProxy_CLToGS::Send(CNTPacket& packet)
{
    if (Client == nullptr) {
        CDebug::AppendDebugMsg("Send Error!!!");
        return false;
    }
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
