#include "KesraNTC/net/CNTBase.h"

CNTBase::~CNTBase() = default;

CNTClient* CNTBase::GetClientFromMachineID(unsigned short)
{
    return nullptr;
}

void CNTBase::Disconnect() {}

unsigned long CNTBase::SendToServer(CNTPacket&)
{
    return 0;
}
