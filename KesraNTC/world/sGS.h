#pragma once

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"

/// One entry of the list of game servers (message 508); what the fields mean is for the server to say.
struct sGS {
    short Value1 = 0;
    short Value2 = 0;
};

/// The wire form, 4 bytes.
KESRANTC_API CNTPacket& operator<<(CNTPacket& packet, const sGS& entry);
KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, sGS& entry);
