#include "KesraNTC/world/TNPC.h"

TNPC::TNPC() : TObject(TypeNPC) {}

TNPC::TNPC(const TNPC& other) : TObject(TypeNPC)
{
    *this = other;
}

TNPC& TNPC::operator=(const TNPC& other)
{
    DR = other.DR;
    ID = other.ID;
    return *this;
}

TNPC::~TNPC() = default;

void TNPC::Init()
{
    TObject::Init();
    Type = TypeNPC;
}

CNTPacket& operator>>(CNTPacket& packet, TNPC&)
{
    return packet;
}
