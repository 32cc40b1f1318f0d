#include "KesraNTC/rpc/CNTMainClient.h"

#include "KesraNTC/base/Trace.h"
#include "KesraNTC/rpc/private/MessageTable.h"

CNTMainClient::~CNTMainClient()
{
    StopReceiving();
}

unsigned long CNTMainClient::ProcessPacketFromServer(CNTPacket& packet)
{
    unsigned short number = 0;
    unsigned short size = 0;
    packet >> number >> size;
    if (const Kesra::MessageAction take = Kesra::ActionFor(number))
        take(*this, packet);
    else
        TRACE("Warnning!!! Strange Message Type %d\n", number);
    return 0;
}
