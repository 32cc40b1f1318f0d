#pragma once

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"

/// One result of an attack, in the shape of message 12006. No message of the library carries it as such; a
/// game puts it into packets of its own and gives the fields their meaning.
struct sAttackResult {
    int Value1 = 0;
    short Value2 = 0;
    unsigned char Value3 = 0;
};

/// The wire form, 7 bytes.
KESRANTC_API CNTPacket& operator<<(CNTPacket& packet, const sAttackResult& result);
KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, sAttackResult& result);
