#pragma once

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"

/// One result of an attack; what the fields mean is up to the message that carries them.
struct sAttackResult {
    int Value1 = 0;
    short Value2 = 0;
    unsigned char Value3 = 0;
};

/// The wire form, 7 bytes.
KESRANTC_API CNTPacket& operator<<(CNTPacket& packet, const sAttackResult& result);
KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, sAttackResult& result);
