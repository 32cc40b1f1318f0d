#include "KesraNTC/net/DateEncoding.h"

CNTPacket& operator<<(CNTPacket& packet, const COLEDateTime& date)
{
    return packet << static_cast<double>(date);
}

CNTPacket& operator>>(CNTPacket& packet, COLEDateTime& date)
{
    double value = date;
    packet >> value;
    date = value;
    return packet;
}
